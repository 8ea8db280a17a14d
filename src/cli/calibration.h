#pragma once
// Where the measured round trip of the sound card is kept.

#include <string>

namespace velaro::cli {

std::string calibrationPath();
// The stored figure in ms, or -1 when there is none.
int storedLatencyMs();

}  // namespace velaro::cli
