// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "foundation/text/mstring.h"

TEST(NumberText, IntegersPadInFrontOfTheirDigits) {
    struct Case {
        std::int64_t value;
        int radix, width;
        char16_t padding;
        const char* expected;
    };
    constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
    constexpr Case kCases[] = {
        {0, 10, 0, u' ', "0"},
        {-5, 10, 4, u'0', "-0005"},
        {-5, 10, 4, u' ', "-   5"},
        {255, 16, 2, u'0', "FF"},
        {35, 36, 0, u' ', "Z"},
        {12345, 10, 2, u'0', "12345"},
        {kLowest, 10, 0, u' ', "-9223372036854775808"},
        {-1, 2, 70, u'.',
         "-.....................................................................1"},
        {kLowest, 2, 0, u' ', "-1000000000000000000000000000000000000000000000000000000000000000"},
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(MString::FromInt(c.value, c.radix, c.width, c.padding), c.expected);
        EXPECT_EQ(MString::ToInt64(MString::FromInt(c.value, c.radix), c.radix), c.value);
    }
    EXPECT_EQ(MString::FromUnsigned(~std::uint64_t{0}), "18446744073709551615");
}

TEST(NumberText, IntegersEndAtWhatIsNoDigit) {
    struct Case {
        const char* text;
        int radix;
        std::int32_t expected, consumed;
    };
    constexpr Case kCases[] = {
        {"", 10, 0, 0},   {"-", 10, 0, 1},   {"-12dB", 10, -12, 3},     {" 1", 10, 0, 0},
        {"+1", 10, 0, 0}, {"1a", 10, 1, 1},  {"1aG", 16, 26, 2},        {"zZ", 36, 1295, 2},
        {"8", 8, 0, 0},   {"007", 10, 7, 3}, {"4294967297", 10, 1, 10},  // 2^32 + 1 wraps around
    };
    for (const Case& c : kCases) {
        std::int32_t consumed = -1;
        EXPECT_EQ(MString::ToInt(c.text, c.radix, &consumed), c.expected) << c.text;
        EXPECT_EQ(consumed, c.consumed) << c.text;
    }
}

// The C library under the "C" locale is the second opinion.
TEST(NumberText, DoublesAreWrittenAsTheCFormatsSay) {
    for (const double value : {-0.0, 0.5, -2.0 / 3, 1e-7, 123456789.123, 1e22, 2.5, 1e308, 5e-324,
                               static_cast<double>(INFINITY)}) {
        for (const int precision : {0, 1, 4, 9, 10, 12, 17, 99}) {
            EXPECT_EQ(MString::FromDouble(value, precision),
                      MString::Printf(precision < 10 ? "%.*f" : "%.*g", precision, value));
        }
    }
    EXPECT_EQ(MString::FromDouble(1.75, -3), "2");
    EXPECT_EQ(MString::Printf("%s-%03d", "caf\xc3\xa9", 7), u"caf\u00e9-007");
    EXPECT_EQ(MString::Printf("%9000d", 1).Length(), 8191);
}

TEST(NumberText, DoublesKeepTheirPointUnderALocaleWithAComma) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    bool isSet = false;
    for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "cs_CZ.UTF-8", "de_DE"})
        isSet = isSet || std::setlocale(LC_ALL, name) != nullptr;
    const MString text = MString::FromDouble(1.5, 2);
    std::setlocale(LC_ALL, before.c_str());
    if (!isSet) GTEST_SKIP() << "no such locale is installed";
    EXPECT_EQ(text, "1.50");
}
