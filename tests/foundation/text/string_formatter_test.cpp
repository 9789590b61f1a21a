// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_formatter.h"

#include <gtest/gtest.h>

#include "foundation/text/exception.h"

namespace {

template <typename... Arguments>
MString Format(const MString& format, Arguments... arguments) {
    return (MStringFormatter(format) << ... << arguments);
}

template <typename T>
struct Case {
    const char* format;
    T value;
    const char* expected;
};

template <typename T, std::size_t kCount>
void CheckEach(const Case<T> (&cases)[kCount]) {
    for (const auto& c : cases) EXPECT_EQ(Format(c.format, c.value), c.expected) << c.format;
}

}  // namespace

TEST(StringFormatter, OptionsShapeNumbers) {
    constexpr Case<std::int64_t> kIntegers[] = {
        {"{0:04}", 7, "0007"},  {"{0:04}", -7, "-0007"}, {"{0x;02}", 255, "FF"},
        {"{0x;02}", 10, "0A"},  {"{0x}", -255, "-FF"},   {"{2+}{1}{0+}", 3, "+3"},
        {"{0+}", 0, "0"},       {"{0+}", -1, "-1"},      {"{0 5+}", 42, "+   42"},
        {"{0;x;+}", 31, "+1F"}, {"{0;~zX}", 12, "12"},   {"{0 }5", 3, "35"},
        {"{0;0-3}", 3, "3"},    {"{-0}", 4, "4"},        {"{}", 9, "9"},
    };
    CheckEach(kIntegers);
    constexpr Case<double> kDoubles[] = {
        {"{0}", 2.0, "2.0000"},      {"{+0.2}", 0.0, "0.00"},    {"{+0.2}", 1.5, "+1.50"},
        {"{+0.2}", -1.5, "-1.50"},   {"{+0.2}", -0.0, "0.00"},   {"{0.2}", -0.0, "-0.00"},
        {"{0;+.02}", 0.25, "+0.25"}, {"{0+}", 1e-21, "0.0000"},  {"{0.02}", 1.0, "1.00"},
        {"{0;.12}", 0.5, "0.5"},     {"{0;.10}", 1e22, "1e+22"}, {"{0;09.1}", 1.0, "1.0"},
    };
    CheckEach(kDoubles);
    EXPECT_EQ(Format("{0+} {1+} {2x}", 0u, 1u, ~std::uint64_t{0}), "0 +1 FFFFFFFFFFFFFFFF");
    EXPECT_EQ(Format("{0;.2}{2.1}", 1.0, 2.0, 3.0), "1.003.0");
    EXPECT_EQ(Format("{0;099}", 1).Length(), 99);
    EXPECT_EQ(Format("<{0 5}>", static_cast<const char*>(nullptr)), "<>");
}

TEST(StringFormatter, BracesOutsidePlaceholders) {
    constexpr Case<const char*> kTexts[] = {
        {"{{0}}", "a", "{0}"}, {"{{{0}}}", "a", "{a}"}, {"}x", "a", "x"},
        {"}}", "a", "}"},      {"b}", "a", "b"},        {"}{0}", "a", "{0"},
        {"{{", "a", "{"},      {"", "a", ""},           {"{0}}}b{{", "a", "a}b{"},
    };
    CheckEach(kTexts);
    for (const char* const format : {"{", "a{0", "{0;.2", "{0 ", "{-", "{0}{"})
        EXPECT_THROW(Format(format, 1), MException) << format;
}

TEST(StringFormatter, ArgumentsFindTheirPlacesInPushOrder) {
    const std::pair<const char*, const char*> cases[] = {
        {"{0}{1}{2}", "abbccc"}, {"{2}{1}{0}", "cccbba"},
        {"<{1}|{0}>", "<bb|a>"}, {"{1}", "bb"},
        {"{0}{2}", "accc"},      {"{0}-{0}", "-a"},
        {"{1}{0}{1}", "abb"},    {"{0}{1}{0}{2}", "bbaccc"},
        {"{0}{3}{1}", "abb"},    {"{32}{-1}{999}{0}", "a"},
        {"none", "none"},        {"{ 1}", "a"},
    };
    for (const auto& [format, expected] : cases)
        EXPECT_EQ(Format(format, "a", MString("bb"), "ccc"), expected) << format;

    MString numbered, reversed;
    for (int i = 31; i >= 0; --i) {
        numbered.Append("{").Append(MString::FromInt(i)).Append("}");
        reversed.Append(MString::FromInt(i));
    }
    const MStringFormatter all(numbered);
    for (int i = 0; i < 40; ++i) all << i;
    EXPECT_EQ(MString(all), reversed);
}

// The text is longer than the block in which the parser collects it.
TEST(StringFormatter, PlacesHoldInLongTexts) {
    const MString filler = MString::FromInt(7, 10, 300, u'\u00e9');
    const MString format = MString("{1}").Append(filler).Append("{0}").Append(filler).Append("{2}");
    const MString expected = MString("1").Append(filler).Append("0").Append(filler).Append("2");
    EXPECT_EQ(Format(format, 0, 1, 2), expected);
}
