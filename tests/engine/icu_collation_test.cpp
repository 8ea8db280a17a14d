// The playlist's text comparison over ICU: case does not count, accents do,
// and the sort keys order exactly as the comparison does.

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/icu_collation.h"

using velaro::engine::IcuCollation;

TEST(IcuCollation, CaseIgnoredAccentsKeptKeysAgree) {
    IcuCollation c;
    ASSERT_TRUE(c.ok());
    EXPECT_EQ(c.compare("Beatles", "BEATLES"), 0);
    EXPECT_LT(c.compare("ete", "\xE9t\xE9"), 0);       // été after ete
    EXPECT_EQ(c.compare("\xC9T\xC9", "\xE9t\xE9"), 0);  // ÉTÉ and été are one word
    EXPECT_LT(c.compare("\xE9t\xE9", "f"), 0);         // accented letters sort with their base letter
    EXPECT_LT(c.compare("", "a"), 0);
    EXPECT_LT(c.compare("a", "B"), 0);
    EXPECT_LT(c.compare("\x8A" "a", "Sb"), 0);  // Š (Windows-1252 0x8A) sorts with S

    const std::vector<std::string> words = {"abc", "ABC", "\xE9t\xE9", "ete", "\xC9T\xC9", "zed", "", "b", "B",
                                            "\x9C" "uvre", "oeuvre", "Zoe", "zo\xEB"};
    for (const auto& a : words) {
        for (const auto& b : words) {
            const int byCompare = c.compare(a, b);
            const std::string ka = c.sortKey(a), kb = c.sortKey(b);
            const int byKey = ka < kb ? -1 : (kb < ka ? 1 : 0);
            EXPECT_EQ(byCompare < 0 ? -1 : (byCompare > 0 ? 1 : 0), byKey) << a << " / " << b;
        }
    }
}
