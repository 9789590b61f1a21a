// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_scanner.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

TEST(StringScanner, TakesWhatThePlaceholdersCover) {
    struct Case {
        const char *format, *subject;
        std::vector<const char*> found;  // by argument, null where nothing is found
    };
    const Case cases[] = {
        {"{0} dB", "12.5 dB", {"12.5"}},
        {"{0} dB", "12.5", {"12.5"}},
        {"{0}dB", "12.5 dB", {"12.5 "}},
        {"{}:{1:02}", "1:07", {"1", "07"}},
        {"a \t{0}", "a\n\n b", {"b"}},
        {"a {0}", "ab", {}},
        {"{0} {1}", "x", {"x"}},
        {"{0}x{0}", "1x2", {"2"}},
        {"{0}{1}", "ab", {"ab"}},
        {"{{{0}}}", "{5}", {"5"}},
        {"}}{0}{{{1}", "}1{2", {"1", "2"}},
        {"{0}}-{1}", "a-b", {"a", "b"}},
        {"}", "}", {}},
        {"({0})", "()", {""}},
        {"{0}", "", {}},
        {"{40} {0}", "x y", {"y"}},
        {"{2}", "x", {nullptr, nullptr, "x"}},
    };
    for (const Case& c : cases) {
        const MStringScanner scanner(c.format, c.subject);
        int count = 0;
        for (std::size_t i = 0; i < c.found.size(); ++i) {
            count += c.found[i] != nullptr;
            EXPECT_EQ(scanner.Get(static_cast<int>(i)), c.found[i]) << c.format << " " << c.subject;
        }
        EXPECT_EQ(scanner.Count(), count) << c.format << " " << c.subject;
    }
}

TEST(StringScanner, ReadsBackWhatTheFormatterWrote) {
    for (const char* const format : {"{0}|{1}|{2}", "{{{2}}} {0};{1}", "}}{1} of {0}{{ {2}"}) {
        const MString text = MStringFormatter(MString(format)) << -17 << "Rate" << 2.5;
        const MStringScanner scanner(format, text);
        EXPECT_EQ(scanner.Get(0), "-17") << format;
        EXPECT_EQ(scanner.Get(1), "Rate") << format;
        EXPECT_EQ(scanner.Get(2), "2.5000") << format;
    }
    const MStringScanner scanner("{0x;06}:", MStringFormatter("{0x;06}:") << 0xbeef);
    EXPECT_EQ(MString::ToInt(scanner.Get(0), scanner.GetRadix(0)), 0xbeef);
}

TEST(StringScanner, RefusesABadIndexAndAnUnfinishedPlaceholder) {
    const MStringScanner scanner("{0}", "x");
    EXPECT_TRUE(scanner.Get(31).IsEmpty());
    EXPECT_THROW(scanner.Get(32), MException);
    EXPECT_THROW(scanner.Get(-1), MException);
    try {
        MStringScanner("{0", "x");
        ADD_FAILURE();
    } catch (const MException& error) {
        EXPECT_EQ(error.message, "Formatting string ends in an argument specification.");
    }
}
