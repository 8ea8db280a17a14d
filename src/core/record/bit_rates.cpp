#include "bit_rates.h"

#include <cstdlib>

#include "../base/vb_error.h"
#include "../base/vb_number.h"

namespace velaro::record {

void fillBitRates(ui::ListBox& list) {
    for (int kbps = 320; kbps >= 8; kbps -= 8) list.addItem(kbps == 192 ? "192 " : std::to_string(kbps));
}

int32_t bitRateOfRow(const std::string& text) {
    // Val: the leading number, blanks around it ignored, nothing read gives 0.
    const double kbps = std::strtod(text.c_str(), nullptr);
    return clng(kbps * 1000);
}

int32_t wholeNumberOf(const std::string& text) {
    const char* begin = text.c_str();
    char* end = nullptr;
    const double v = std::strtod(begin, &end);
    while (end && (*end == ' ' || *end == '\t')) ++end;
    if (end == begin || !end || *end != '\0' || text.find_first_not_of(" \t") == std::string::npos)
        throw VbError(VbErr::TypeMismatch, "Type mismatch");
    return clng(v);
}

}  // namespace velaro::record
