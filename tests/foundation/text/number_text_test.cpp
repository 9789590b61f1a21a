// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <tuple>

#include "foundation/text/mstring.h"

TEST(NumberText, IntegersPadInFrontOfTheirDigits) {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::tuple<std::int64_t, int, int, char16_t, const char*> kCases[] = {
        {0, 10, 0, u' ', "0"},         {-5, 10, 4, u'0', "-0005"},
        {-5, 10, 4, u' ', "-   5"},    {35, 36, 0, u' ', "Z"},
        {12345, 10, 2, u'0', "12345"}, {kLowest, 10, 0, u' ', "-9223372036854775808"},
        {-1, 2, 3, u'.', "-..1"}};
    for (const auto& [value, radix, width, padding, expected] : kCases) {
        EXPECT_EQ(MString::FromInt(value, radix, width, padding), expected);
        EXPECT_EQ(MString::ToInt64(MString::FromInt(value, radix), radix), value);
    }
    EXPECT_EQ(MString::ToInt64(MString::FromInt(kLowest, 2), 2), kLowest) << "64 digits";
    EXPECT_EQ(MString::FromUnsigned(~std::uint64_t{0}), "18446744073709551615");
}

TEST(NumberText, IntegersEndAtWhatIsNoDigit) {
    constexpr std::tuple<const char*, int, int, int> kCases[] = {
        {"", 10, 0, 0},   {"-", 10, 0, 1},   {"-12dB", 10, -12, 3},    {" 1", 10, 0, 0},
        {"+1", 10, 0, 0}, {"1a", 10, 1, 1},  {"1aG", 16, 26, 2},       {"zZ", 36, 1295, 2},
        {"8", 8, 0, 0},   {"007", 10, 7, 3}, {"4294967297", 10, 1, 10}};
    for (const auto& [text, radix, expected, expectedConsumed] : kCases) {
        std::int32_t consumed = -1;
        EXPECT_EQ(MString::ToInt(text, radix, &consumed), expected) << text;
        EXPECT_EQ(consumed, expectedConsumed) << text;
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

// Few machines have a locale with a comma, so the test makes one.
TEST(NumberText, DoublesKeepTheirPointUnderALocaleWithAComma) {
    const std::string folder = testing::TempDir() + "locale." + std::to_string(getpid());
    const std::string make =
        "mkdir " + folder + " && localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8 2>&1";
    setenv("LOCPATH", folder.c_str(), 1);
    if (std::system(make.c_str()) != 0 || !std::setlocale(LC_ALL, "de_DE.UTF-8"))
        GTEST_SKIP() << "the package locales is missing";
    EXPECT_EQ(MString::Printf("%.2f", 1.5), "1,50");
    EXPECT_EQ(MString::FromDouble(1.5, 2), "1.50");
    EXPECT_EQ(MString::FromDouble(1234567.5, 12), "1234567.5");
    std::setlocale(LC_ALL, "C");
    std::filesystem::remove_all(folder);
}
