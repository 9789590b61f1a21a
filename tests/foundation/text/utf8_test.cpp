// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf8.h"

#include <gtest/gtest.h>

#include "foundation/text/mstring.h"

using Case = std::pair<std::string_view, const char16_t*>;

// Borders of the forms from the Unicode standard, table 3-6.
TEST(Utf8, WellFormedTextSurvivesBothWays) {
    constexpr Case kCases[] = {{"A\x7f\xc2\x80\xdf\xbf", u"A\u007f\u0080\u07ff"},
                               {"\xe0\xa0\x80\xef\xbf\xbf\xee\x80\x80", u"\u0800\uffff\ue000"},
                               {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", u"\U00010000\U0010ffff"}};
    for (const auto& [bytes, text] : kCases) {
        EXPECT_EQ(MString::FromUtf8(bytes), text) << bytes;
        EXPECT_EQ(MString(text).ToUtf8(), bytes);
    }
    EXPECT_EQ(MString(L"\u00e9\U0001F3B5"), u"\u00e9\U0001F3B5");
}

TEST(Utf8, MalformedBytesAreLeftOutAndTheRestIsKept) {
    constexpr Case kCases[] = {
        {{"a\0z", 3}, u"a"},                      // NUL ends
        {{"a\xe2\x82\0z", 5}, u"a"},              // also inside a sequence
        {"a\xef\xbb\xbfz", u"az"},                // byte-order mark
        {"a\x80\xbfz", u"az"},                    // continuations without a lead byte
        {"a\xf8\x80\x80\x81\x81z\xffz", u"azz"},  // 11111xxx
        {"a\xe2\xff\x82z", u"az"},                // also inside a sequence
        {"a\xe2\x82z", u"az"},                    // cut short by a letter
        {"\xe2\x82\xc3\xa9", u"\u00e9"},          // by a lead byte
        {"a\xf0\x9f\x8e", u"a"},                  // by the end
        {"a\xf4\x90\x80\x80z", u"az"},            // U+110000
    };
    for (const auto& [bytes, text] : kCases)
        EXPECT_EQ(MString::FromUtf8(bytes), text) << testing::PrintToString(bytes);
}

TEST(Utf8, SurrogatesAreJoinedAndTheEscapeIsARawByte) {
    EXPECT_EQ(MString(u"a\xdc00z").ToUtf8(), "az");
    EXPECT_EQ(MString(u"a\xd800yz").ToUtf8(), "az");  // takes the next unit with it
    EXPECT_EQ(MString(u"a\xd800").ToUtf8(), "a");
    EXPECT_EQ(MString(u"\U0010fe01\U0010feff").ToUtf8(), "\x01\xff");
    EXPECT_EQ(MString(u"\U0010fe00\U0010ff00").ToUtf8(), "\xf4\x8f\xb8\x80\xf4\x8f\xbc\x80");
}
