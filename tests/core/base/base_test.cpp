#include <gtest/gtest.h>

#include <cmath>

#include "core/base/byte_text.h"
#include "core/base/cp1252.h"
#include "core/base/paths.h"
#include "core/base/vb_error.h"
#include "core/base/vb_number.h"

using namespace velaro;

TEST(ByteText, FindIsOneBasedAndStopsAtTheEnd) {
    const std::string s = "abcabc";
    EXPECT_EQ(FIND(1, s, "abc"), 1);
    EXPECT_EQ(FIND(2, s, "abc"), 4);
    EXPECT_EQ(FIND(5, s, "abc"), 0);
    EXPECT_EQ(FIND(7, s, "a"), 0);    // start past the end
    EXPECT_EQ(FIND(4, s, "a"), 4);    // a hit at the start itself
    EXPECT_EQ(FIND(1, "", "a"), 0);
    EXPECT_EQ(FIND(1, std::string("x\0\xFF", 3), std::string("\0\xFF", 2)), 2);
    EXPECT_THROW(FIND(0, s, "a"), VbError);
}

TEST(ByteText, ReadsPastTheEndAreErrorsButMidIsLenient) {
    EXPECT_EQ(byteAt("\x05\xFF", 2), 0xFF);
    EXPECT_THROW(byteAt("ab", 3), VbError);
    EXPECT_THROW(byteAt("ab", 0), VbError);
    EXPECT_EQ(mid("hello", 2, 3), "ell");
    EXPECT_EQ(mid("hello", 4, 99), "lo");
    EXPECT_EQ(mid("hello", 9, 2), "");
    EXPECT_THROW(mid("hello", 0, 2), VbError);
    EXPECT_THROW(mid("hello", 1, -1), VbError);
    EXPECT_EQ(trim("  a b  "), "a b");
    EXPECT_EQ(right("song.MID", 3), "MID");
    EXPECT_EQ(right("id", 3), "id");
}

TEST(ByteText, HexTextsReadAsTheRuntimeReadThem) {
    EXPECT_EQ(hexByte(0x0A), "A");
    EXPECT_EQ(hexByte(0), "0");
    EXPECT_EQ(hexByte2(0x0A), "0A");
    EXPECT_EQ(hexValue(hexByte(0x01) + hexByte(0x02)), 0x12);  // unpadded: not 258
    EXPECT_EQ(hexValue(hexByte(0x00) + hexByte(0x10)), 16);
    EXPECT_EQ(hexValue("FFFF"), -1);          // four digits are a 16-bit integer
    EXPECT_EQ(hexValue("8000"), -32768);
    EXPECT_EQ(hexValue("00008000"), 0x8000);  // eight digits a 32-bit one
    EXPECT_EQ(hexValue("FFFFFFFF"), -1);
    EXPECT_THROW(hexValue(""), VbError);
}

TEST(Numbers, RoundingAndOverflow) {
    EXPECT_EQ(roundHalfEven(2.5), 2);
    EXPECT_EQ(roundHalfEven(3.5), 4);
    EXPECT_EQ(roundHalfEven(-2.5), -2);
    EXPECT_EQ(vbInt(-1.5), -2);
    EXPECT_EQ(vbFix(-1.5), -1);
    EXPECT_EQ(cint(32767.4), 32767);
    EXPECT_THROW(cint(32767.5), VbError);  // rounds to 32768
    EXPECT_THROW(cint(std::nan("")), VbError);
    EXPECT_EQ(clng(-2147483648.0), INT32_MIN);
    EXPECT_THROW(add16(32767, 1), VbError);
    EXPECT_EQ(add16(-32767, -1), -32768);
    EXPECT_THROW(vbDivide(1, 0), VbError);
    EXPECT_THROW(vbDivide(0, 0), VbError);
}

TEST(Numbers, FormatPatterns) {
    EXPECT_EQ(vbFormat(5, "00"), "05");
    EXPECT_EQ(vbFormat(123, "00"), "123");
    EXPECT_EQ(vbFormat(60000000.0 / 450000, "0.00"), "133.33");
    EXPECT_EQ(vbFormat(120, "0.00"), "120.00");
    EXPECT_EQ(vbFormat(2.675, "0.00"), "2.68");  // halves away from zero on the decimal form
    EXPECT_EQ(vbFormat(0.5, "00"), "01");
    EXPECT_EQ(vbFormat(1234567, "###,##0"), "1,234,567");
    EXPECT_EQ(vbFormat(0, "###,##0"), "0");
    EXPECT_EQ(vbFormat(999.6, "###,##0"), "1,000");
    EXPECT_EQ(vbFormat(5, "###.#"), "5.");  // the point stays
    EXPECT_EQ(vbFormat(0.25, "###.#"), ".3");
    EXPECT_EQ(vbFormat(12.34, "###.#"), "12.3");
    EXPECT_EQ(vbFormat(-3.456, "0.00"), "-3.46");
    EXPECT_EQ(vbFormat(-0.001, "0.00"), "0.00");
}

TEST(Numbers, ShortestExactText) {
    EXPECT_EQ(numberText(120.0), "120");
    EXPECT_EQ(numberText(500000.0), "500000");
    EXPECT_EQ(numberText(-0.0), "0");
    EXPECT_EQ(numberText(1e20), "1e+20");
    EXPECT_EQ(numberText(500000.0 / 120 / 4000), "1.0416666666666667");
    EXPECT_EQ(numberText(133.33f), "133.33");
}

TEST(Text, Windows1252RoundTrip) {
    std::string all;
    for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
    EXPECT_EQ(utf8ToCp1252(cp1252ToUtf8(all)), all);
    EXPECT_EQ(cp1252ToUtf8("\x80"), "\xE2\x82\xAC");    // euro sign
    EXPECT_EQ(cp1252ToUtf8("\xE8"), "\xC3\xA8");        // è
    EXPECT_EQ(utf8ToCp1252("\xE2\x80\x9C" "a"), "\x93" "a");
    EXPECT_EQ(utf8ToCp1252("\xE4\xB8\xAD"), "?");       // no byte for it
    EXPECT_EQ(utf8ToCp1252("\xC3"), "?");               // cut short
}

TEST(Paths, TrailingSeparatorAndFolders) {
    EXPECT_EQ(RPP("/tmp"), "/tmp/");
    EXPECT_EQ(RPP("/tmp/"), "/tmp/");
    EXPECT_EQ(RPP(""), "/");
    setenv("VELARO_HOME", (tempFolder() + "/velaro-home-test").c_str(), 1);
    EXPECT_TRUE(fileExists(applicationFolder()));
    unsetenv("VELARO_HOME");
    EXPECT_FALSE(programFolder().empty());
    EXPECT_THROW(readWholeFile("/nonexistent/file"), VbError);
    EXPECT_THROW(deleteFile("/nonexistent/file"), VbError);
}
