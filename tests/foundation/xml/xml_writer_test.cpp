// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_writer.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/text/utf8.h"
#include "xml_support.h"

namespace {

using Random = std::mt19937;

int Below(Random& random, int end) {
    return std::uniform_int_distribution<int>(0, end - 1)(random);
}

// A text of what an encoding can tell; mark-up and white space are frequent.
MString RandomText(Random& random, bool isWide) {
    constexpr std::u32string_view kUsual = U"<>&'\"/=!?[]-;#x \t\n\x01";
    constexpr std::u32string_view kLocal = U"\u017e\u010c\u20ac";
    constexpr std::u32string_view kWide = U"\u017e\u05d0\uffff\U0001f600";
    const std::u32string_view letters = isWide ? kWide : kLocal;
    std::string text;
    for (int left = Below(random, 12); left > 0; --left) {
        const std::u32string_view set = Below(random, 3) == 0 ? letters : kUsual;
        AppendUtf8(text,
                   set[static_cast<std::size_t>(Below(random, static_cast<int>(set.size())))]);
    }
    return MString::FromUtf8(text);
}

// What a value is after it was read: without white space at its ends.
MString RandomValue(Random& random, bool isWide) {
    const MString text = RandomText(random, isWide);
    return text.IsEmpty() ? text : MString("x").Append(text).Append("x");
}

void Grow(Random& random, MAttribute& item, int size, bool isWide) {
    const auto name = [&] { return MString("n").Append(MString::FromInt(Below(random, 50))); };
    item.SetValue(RandomValue(random, isWide));
    for (int left = Below(random, 4); left > 0; --left)
        item.SetAttribute(name(), RandomText(random, isWide));
    while (size > 1) {
        const int part = 1 + Below(random, size - 1);
        Grow(random, item.AddSubItem(name()), part, isWide);
        size -= part;
    }
}

void BuildExample(MAttribute& root) {
    root.SetName("settings");
    root.SetAttribute("Version", "1");
    MAttribute& band = root.AddSubItem("band0");
    band.SetAttribute("Name", "a<b>&'\"\n");
    band.AddSubItem("LFO").SetValue("deep");
    band.AddSubItem("Empty");
    root.AddSubItem("Sinc");
    root.AddSubItem("note").SetValue("1 & 2");
}

constexpr const char* kBand = "<band0 Name=\"a&lt;b&gt;&amp;&apos;&quot;&#10;\">";

}  // namespace

TEST(XmlWriter, WritesBothForms) {
    MXMLDocument document;
    BuildExample(document.Root());
    const std::string header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const std::string band = kBand;
    EXPECT_EQ(Save(document, true, "UTF-8"), header + "<settings Version=\"1\">\n" + band +
                                                 "<LFO>deep</LFO><Empty/></band0>\n"
                                                 "<Sinc/>\n"
                                                 "<note>1 &amp; 2</note>\n"
                                                 "</settings>\n");
    EXPECT_EQ(Save(document, false, "UTF-8"), header +
                                                  "<settings Version=\"1\">\n"
                                                  "\t" +
                                                  band +
                                                  "\n"
                                                  "\t\t<LFO>\n"
                                                  "\t\t\tdeep\n"
                                                  "\t\t</LFO>\n"
                                                  "\t\t<Empty/>\n"
                                                  "\t</band0>\n"
                                                  "\t<Sinc/>\n"
                                                  "\t<note>\n"
                                                  "\t\t1 &amp; 2\n"
                                                  "\t</note>\n"
                                                  "</settings>\n");
    document.Clear();
    document.Root().SetName("a");
    EXPECT_EQ(Save(document, true, "UTF-8"), header + "<a/>\n");
    document.Root().SetValue("v");
    EXPECT_EQ(Save(document, true, "UTF-8"), header + "<a>\nv</a>\n");
}

TEST(XmlWriter, RandomTreesComeBackFromBothForms) {
    Random random(4);
    for (int i = 0; i < 300; ++i) {
        const char* const encoding = i % 3 == 0 ? "windows-1250" : i % 3 == 1 ? "utf-16" : "utf-8";
        MXMLDocument document;
        document.Root().SetName("root");
        Grow(random, document.Root(), 1 + Below(random, 60), i % 3 != 0);
        const std::string expected = Describe(document.Root());
        for (const bool compact : {false, true}) {
            MXMLDocument read;
            const std::string xml = Save(document, compact, encoding);
            Load(read, xml, {.encoding = i % 3 == 1 ? "utf-16" : "utf-8"});
            ASSERT_EQ(Describe(read.Root()), expected) << xml;
        }
    }
}

// Half a surrogate pair is lost; the escape for raw bytes becomes the byte's character. Neither
// takes mark-up along nor makes any.
TEST(XmlWriter, NoTextBreaksTheDocument) {
    for (const char16_t* const text :
         {u"x\xd800", u"\xd800", u"\xdbff\xde22", u"\xdbff\xde3cy", u"\xdbff", u"\xde22\xdbff"}) {
        MXMLDocument document, read;
        document.Root().SetName(MString("n").Append(char16_t{0xd800}));
        document.Root().SetAttribute("a", text);
        document.Root().SetAttribute(MString("b").Append(char16_t{0xd800}), "2");
        document.Root().AddSubItem("c").SetValue(text);
        Load(read, Save(document, true));
        EXPECT_EQ(read.Root().Attributes().Count(), 2);
        EXPECT_EQ(read.Root().Attributes()[1]->value, "2");
        EXPECT_TRUE(read.Root().HasSubItem("c"));
    }
}

TEST(XmlWriter, RefusesBeforeAnythingIsWritten) {
    MXMLDocument document;
    document.Root().SetName("a");
    MMemoryStream stream;
    EXPECT_EQ(RaisedBy([&] { document.Save(stream, true, "latin99"); }),
              "0 No codec found for encoding latin99.");
    document.Root().AddSubItem("b").AddSubItem("");
    EXPECT_EQ(RaisedBy([&] { document.Save(stream, false, "utf-16"); }),
              "256 XML entity cannot have empty name.");
    EXPECT_EQ(stream.GetSize(), 0);
}
