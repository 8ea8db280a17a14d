#pragma once
// The "BitRate" list of the main form and of "Wav to Mp3", and the reading of
// a row as a bit rate.

#include <cstdint>
#include <string>

#include "../ui/control.h"

namespace velaro::record {

// Forty rows, "320" down to "8" in steps of 8; the row for 192 reads "192 ".
void fillBitRates(ui::ListBox& list);
// The row's text as a number of kilobits, times 1000: "192 " gives 192000.
int32_t bitRateOfRow(const std::string& text);
// A text's whole-number value as the runtime converted it: rounded halves to
// even; a text that is no number is the runtime's type mismatch.
int32_t wholeNumberOf(const std::string& text);

}  // namespace velaro::record
