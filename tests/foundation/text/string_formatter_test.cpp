// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_formatter.h"

#include <gtest/gtest.h>

#include <tuple>

#include "foundation/text/raised_by.h"

namespace {

template <typename... Arguments>
MString Format(const MString& format, Arguments... arguments) {
    return (MStringFormatter(format) << ... << arguments);
}

template <typename T>
using Case = std::tuple<const char*, T, const char*>;

template <typename T, std::size_t kCount>
void CheckEach(const Case<T> (&cases)[kCount]) {
    for (const auto& [format, value, expected] : cases)
        EXPECT_EQ(Format(format, value), expected) << format;
}

}  // namespace

TEST(StringFormatter, OptionsShapeNumbers) {
    constexpr Case<std::int64_t> kIntegers[] = {
        {"{0:04}", 7, "0007"},  {"{0:04}", -7, "-0007"}, {"{0x;02}", 255, "FF"},
        {"{0x;02}", 10, "0A"},  {"{0x}", -255, "-FF"},   {"{2+}{1}{0+}", 3, "+3"},
        {"{0+}", 0, "0"},       {"{0+}", -1, "-1"},      {"{0 5+}", 42, "+   42"},
        {"{0;x;+}", 31, "+1F"}, {"{0;~zX}", 12, "12"},   {"{0 }5", 3, "35"},
        {"{0;0-3}", 3, "3"},    {"{-0}", 4, "4"},        {"{}", 9, "9"}};
    CheckEach(kIntegers);
    constexpr Case<double> kDoubles[] = {
        {"{0}", 2.0, "2.0000"},      {"{+0.2}", 0.0, "0.00"},    {"{+0.2}", 1.5, "+1.50"},
        {"{+0.2}", -1.5, "-1.50"},   {"{+0.2}", -0.0, "0.00"},   {"{0.2}", -0.0, "-0.00"},
        {"{0;+.02}", 0.25, "+0.25"}, {"{0+}", 1e-21, "0.0000"},  {"{0.02}", 1.0, "1.00"},
        {"{0;.12}", 0.5, "0.5"},     {"{0;.10}", 1e22, "1e+22"}, {"{0;09.1}", 1.0, "1.0"},
        {"{0;.-1}", 7.0, "7"}};
    CheckEach(kDoubles);
    EXPECT_EQ(Format("{0+} {1+} {2x}", 0u, 1u, ~std::uint64_t{0}), "0 +1 FFFFFFFFFFFFFFFF");
    EXPECT_EQ(Format("{0;.2}{2.1}", 1.0, 2.0, 3.0), "1.003.0");
    EXPECT_EQ(Format("{0;0123}", 1), "000000000001");
    EXPECT_EQ(Format("<{0 5}>", static_cast<const char*>(nullptr)), "<>");
}

TEST(StringFormatter, BracesOutsidePlaceholders) {
    constexpr Case<const char*> kTexts[] = {
        {"{{0}}", "a", "{0}"}, {"{{{0}}}", "a", "{a}"}, {"}x", "a", "x"},
        {"}}", "a", "}"},      {"b}", "a", "b"},        {"}{0}", "a", "{0"},
        {"{{", "a", "{"},      {"", "a", ""},           {"{0}}}b{{", "a", "a}b{"}};
    CheckEach(kTexts);
    const MString withNul = MString("{0").Append(u'\0').Append("}");
    for (const MString& format : {MString("{"), MString("a{0;.2"), MString("{0}{-"), withNul}) {
        EXPECT_EQ(RaisedBy([&] { Format(format, 1); }),
                  "Formatting string ends in an argument specification.");
    }
}

TEST(StringFormatter, ArgumentsFindTheirPlacesInPushOrder) {
    constexpr std::pair<const char*, const char*> kCases[] = {{"{0}{1}{2}", "abbccc"},
                                                              {"{2}{1}{0}", "cccbba"},
                                                              {"<{1}|{0}>", "<bb|a>"},
                                                              {"{0}{2}", "accc"},
                                                              {"{0}-{0}", "-a"},
                                                              {"{1}{0}{1}", "abb"},
                                                              {"{0}{1}{0}{2}", "bbaccc"},
                                                              {"{0}{3}{1}", "abb"},
                                                              {"{32}{-1}{999}{0}", "a"},
                                                              {"none", "none"},
                                                              {"{1}", "bb"},
                                                              {"{ 1}", "a"},
                                                              {"{0011}", "bb"}};
    for (const auto& [format, expected] : kCases)
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
