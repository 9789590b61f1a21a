// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf8.h"

#include <gtest/gtest.h>

#include "foundation/text/mstring.h"

namespace {

struct DecodeCase {
    std::string_view bytes;
    const char16_t* text;
};

// Borders of the forms from the Unicode standard, table 3-6.
constexpr DecodeCase kWellFormed[] = {
    {"", u""},
    {"A\x7f", u"A\u007f"},
    {"\xc2\x80\xdf\xbf", u"\u0080\u07ff"},
    {"\xe0\xa0\x80\xef\xbf\xbf", u"\u0800\uffff"},
    {"\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", u"\U00010000\U0010ffff"},
    {"\xee\x80\x80", u"\ue000"},
};

constexpr DecodeCase kMalformed[] = {
    {{"a\0b", 3}, u"a"},  // NUL ends
    {"a\xef\xbb\xbf"
     "b",
     u"ab"},  // byte-order mark
    {"a\x80\xbf"
     "b",
     u"ab"},  // stray continuations
    {"a\xf8"
     "b\xff"
     "c",
     u"abc"},  // 11111xxx
    {"a\xe2\x82"
     "b",
     u"ab"},                          // cut short by a letter
    {"\xe2\x82\xc3\xa9", u"\u00e9"},  // cut short by a lead byte
    {{"a\xe2\x82\0b", 5}, u"a"},      // cut short by a NUL
    {"a\xf0\x9f\x8e", u"a"},          // cut short by the end
    {"a\xf4\x90\x80\x80"
     "b",
     u"ab"},  // U+110000
};

MString FromUnits(std::initializer_list<char16_t> units) {
    MString text;
    for (const char16_t unit : units) text.Append(unit);
    return text;
}

}  // namespace

TEST(Utf8, WellFormedTextSurvivesBothWays) {
    for (const DecodeCase& entry : kWellFormed) {
        EXPECT_EQ(MString::FromUtf8(entry.bytes), entry.text) << entry.bytes;
        EXPECT_EQ(MString(entry.text).ToUtf8(), entry.bytes);
    }
    EXPECT_EQ(MString("literal").ToUtf8(), "literal");
}

TEST(Utf8, MalformedBytesAreLeftOutAndTheRestIsKept) {
    for (const DecodeCase& entry : kMalformed)
        EXPECT_EQ(MString::FromUtf8(entry.bytes), entry.text)
            << testing::PrintToString(entry.bytes);
}

TEST(Utf8, SurrogateWithoutPartnerIsLeftOut) {
    EXPECT_EQ(FromUnits({'a', 0xdc00, 'b'}).ToUtf8(), "ab");
    EXPECT_EQ(FromUnits({'a', 0xd800, 'b', 'c'}).ToUtf8(), "ac");  // takes the next unit with it
    EXPECT_EQ(FromUnits({'a', 0xd800}).ToUtf8(), "a");
    EXPECT_EQ(FromUnits({0xdbff, 0xdfff}).ToUtf8(), "\xf4\x8f\xbf\xbf");
}

TEST(Utf8, WideTextBecomesUtf16) {
    EXPECT_EQ(MString(L"\u00e9\U0001F3B5"), u"\u00e9\U0001F3B5");
    EXPECT_EQ(MString(L"\u00e9\U0001F3B5").Length(), 3);
}
