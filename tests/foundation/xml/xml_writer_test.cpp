// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_writer.h"

#include <gmock/gmock.h>

#include <random>
#include <vector>

#include "foundation/xml/xml_characters.h"
#include "foundation/xml/xml_support.h"

namespace {

using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t end) { return random() % end; }

// Mark-up and white space are frequent; all encodings have these letters.
MString RandomText(Random& random) {
    constexpr std::u16string_view kUnits = u"<>&'\"/=!?[]-;#x \t\n\u0001\u017e\u010c\u20ac";
    MString text;
    for (std::size_t left = Below(random, 12); left > 0; --left)
        text.Append(kUnits[Below(random, kUnits.size())]);
    return text;
}

void Grow(Random& random, MAttribute& root, std::size_t size) {
    const auto name = [&] { return MString("n").Append(MString::FromInt(Below(random, 50))); };
    std::vector<MAttribute*> items = {&root};
    for (std::size_t i = 0; i < size; ++i) {
        MAttribute& item = *items[Below(random, items.size())];
        items.push_back(&item.AddSubItem(name()));
        // White space at the ends of a value does not come back.
        item.SetValue(TrimXml(RandomText(random)));
        item.SetAttribute(name(), RandomText(random));
    }
}

}  // namespace

TEST(XmlWriter, WritesBothForms) {
    MXMLDocument document;
    const std::string compact = FileBytes(QUILLOREA_XML_CASES "/example_compact.xml");
    const std::string pretty = FileBytes(QUILLOREA_XML_CASES "/example_pretty.xml");
    for (const std::string& read : {compact, pretty}) {
        Load(document, read);
        EXPECT_EQ(Save(document, true, "UTF-8"), compact);
        EXPECT_EQ(Save(document, false, "UTF-8"), pretty);
    }
    Load(document, "<a>v</a>");
    EXPECT_TRUE(Save(document, true).ends_with("\"utf-8\"?>\n<a>\nv</a>\n"));
}

TEST(XmlWriter, RandomTreesComeBackFromBothForms) {
    Random random(4);
    for (int i = 0; i < 300; ++i) {
        const char* const encoding = i % 3 == 0 ? "windows-1250" : i % 3 == 1 ? "utf-16" : "utf-8";
        MXMLDocument document, read;
        document.Root().SetName("root");
        Grow(random, document.Root(), Below(random, 90));
        for (const bool compact : {false, true}) {
            const std::string xml = Save(document, compact, encoding);
            Load(read, xml, {.encoding = i % 3 == 1 ? "utf-16" : "utf-8"});
            ASSERT_EQ(Describe(read.Root()), Describe(document.Root())) << xml;
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
        EXPECT_THAT(Describe(read.Root()),
                    testing::MatchesRegex("\\(n a=\\[[^]=]*\\] b=\\[2\\]\\(c.*"));
    }
}

TEST(XmlWriter, RefusesBeforeAnythingIsWritten) {
    MXMLDocument document;
    document.Root().SetName("a");
    MMemoryStream stream;
    EXPECT_EQ(Raised([&] { document.Save(stream, true, "latin99"); }),
              "0 No codec found for encoding latin99.");
    document.Root().AddSubItem("b").AddSubItem("");
    EXPECT_EQ(Raised([&] { document.Save(stream, false, "utf-16"); }),
              "256 XML entity cannot have empty name.");
    EXPECT_EQ(stream.GetSize(), 0);
}
