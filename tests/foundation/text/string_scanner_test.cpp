// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_scanner.h"

#include <gtest/gtest.h>

#include <tuple>

#include "foundation/text/raised_by.h"
#include "foundation/text/string_formatter.h"

// How many arguments are found, and the first three.
TEST(StringScanner, TakesWhatThePlaceholdersCover) {
    constexpr std::tuple<const char*, const char*, const char*> kCases[] = {
        {"{0} dB", "12.5 dB", "1 12.5||"}, {"{0} dB", "12.5", "1 12.5||"},
        {"{0}dB", "12.5 dB", "1 12.5 ||"}, {"{}:{1:02}", "1:07", "2 1|07|"},
        {"a \t{0}", "a\n\n b", "1 b||"},   {"a {0}", "ab", "0 ||"},
        {"{0} {1}", "x", "1 x||"},         {"{0}x{0}", "1x2", "1 2||"},
        {"{0}{1}", "ab", "1 ab||"},        {"{0}-{1}-b", "1+2-3-a", "2 1+2|3|"},
        {"{{{0}}}", "{5}", "1 5||"},       {"}}{0}{{{1}", "}1{2", "2 1|2|"},
        {"{0}}-{1}", "a-b", "2 a|b|"},     {"}", "}", "0 ||"},
        {"({0})", "()", "1 ||"},           {"{0}", "", "0 ||"},
        {"{40} {0}", "x y", "1 y||"},      {"{2}", "x", "1 ||x"}};
    for (const auto& [format, subject, expected] : kCases) {
        const MStringScanner scan(format, subject);
        const MString found = MStringFormatter("{0} {1}|{2}|{3}")
                              << scan.Count() << scan.Get(0) << scan.Get(1) << scan.Get(2);
        EXPECT_EQ(found, expected) << format << " " << subject;
    }
}

TEST(StringScanner, ReadsBackWhatTheFormatterWrote) {
    for (const char* const format :
         {"{0}|{1}|{2;.10}", "{{{2.1}}} {0:04};{1}", "}}{1} of {0x}{{ {2;+.02}"}) {
        const MString text = MStringFormatter(MString(format)) << -17 << "Rate" << 2.5;
        const MStringScanner scanner(format, text);
        EXPECT_EQ(MString::ToInt(scanner.Get(0), scanner.GetRadix(0)), -17) << text.ToUtf8();
        EXPECT_EQ(scanner.Get(1), "Rate") << text.ToUtf8();
        EXPECT_EQ(std::stod(scanner.Get(2).ToUtf8()), 2.5) << text.ToUtf8();
        EXPECT_EQ(scanner.Count(), 3);
    }
}

TEST(StringScanner, RefusesABadIndexAndAnUnfinishedPlaceholder) {
    const MStringScanner scanner("{0}", "x");
    for (const int index : {-1, 32})
        EXPECT_EQ(RaisedBy([&] { scanner.Get(index); }), "Index out of range.");
    EXPECT_EQ(RaisedBy([] { MStringScanner("{0", "x"); }),
              "Formatting string ends in an argument specification.");
}
