#include "icu_collation.h"

#include <unicode/ucol.h>

#include <vector>

namespace velaro::engine {

namespace {

// Windows-1252 bytes as UTF-16; the five unassigned bytes keep their C1 code.
std::u16string utf16(std::string_view bytes) {
    static const char16_t high[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    std::u16string out;
    out.reserve(bytes.size());
    for (char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        out.push_back(u >= 0x80 && u < 0xA0 ? high[u - 0x80] : static_cast<char16_t>(u));
    }
    return out;
}

}  // namespace

IcuCollation::IcuCollation() {
    UErrorCode status = U_ZERO_ERROR;
    collator_ = ucol_open("", &status);  // the root collation
    if (U_FAILURE(status)) {
        if (collator_) ucol_close(collator_);
        collator_ = nullptr;
        return;
    }
    ucol_setStrength(collator_, UCOL_SECONDARY);
}

IcuCollation::~IcuCollation() {
    if (collator_) ucol_close(collator_);
}

int IcuCollation::compare(std::string_view a, std::string_view b) const {
    if (!collator_) return plain_.compare(a, b);
    const std::u16string ua = utf16(a), ub = utf16(b);
    return static_cast<int>(ucol_strcoll(collator_, reinterpret_cast<const UChar*>(ua.data()),
                                         static_cast<int32_t>(ua.size()),
                                         reinterpret_cast<const UChar*>(ub.data()),
                                         static_cast<int32_t>(ub.size())));
}

std::string IcuCollation::sortKey(std::string_view a) const {
    if (!collator_) return plain_.sortKey(a);
    const std::u16string ua = utf16(a);
    std::vector<uint8_t> key(ua.size() * 4 + 16);
    for (;;) {
        const int32_t n = ucol_getSortKey(collator_, reinterpret_cast<const UChar*>(ua.data()),
                                          static_cast<int32_t>(ua.size()), key.data(),
                                          static_cast<int32_t>(key.size()));
        if (n <= static_cast<int32_t>(key.size())) {
            // The key ends with a zero byte, which byte order does not need.
            return std::string(reinterpret_cast<const char*>(key.data()), n > 0 ? n - 1 : 0);
        }
        key.resize(n);
    }
}

}  // namespace velaro::engine
