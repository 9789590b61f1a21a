// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/attribute.h"

#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_support.h"

namespace {

class Rate final : public MStorable {
public:
    Rate() : MStorable("Rate") {}
    MString GetString() override { return text; }
    void SetString(const MString& newText) override { text = newText; }
    bool OnMissing() override { return ++missed == 2; }

    MString text = "0.5";
    int missed = 0;
};

struct Settings {
    bool Store(const MStoreVisitor& visitor) {
        visitor.Text("Name", name, "none");
        visitor.Number("Mode", mode, std::int32_t{-1});
        visitor.Flag("Enabled", isEnabled, true);
        return visitor.SubItem("LFO", [&](const MStoreVisitor& inner) { inner.Value(rate); });
    }

    MString name = "none";
    std::int32_t mode = -1;
    bool isEnabled = true;
    Rate rate = {};
};

}  // namespace

TEST(XmlDocument, BuildsTheTreeInPlaceOfTheOneBefore) {
    MXMLDocument document;
    const auto load = [&](const std::string& xml) {
        const std::string error = Raised([&] { Load(document, xml); });
        return Describe(document.Root()) + error;
    };
    CheckCases(QUILLOREA_XML_CASES "/tree_cases.txt", load);
}

TEST(Attribute, FindsByNameWithoutCaseAndAccents) {
    MXMLDocument document;
    Load(document, "<a \xc3\x89tat=1 ETAT=2 x=\"\"><B n=1/><c/><b n=2/></a>");
    MAttribute& root = document.Root();
    EXPECT_TRUE(root.HasAttribute("etat"));
    EXPECT_EQ(root.GetCachedAttribute(), "1");
    EXPECT_EQ(root.GetAttribute("x", "standard"), "");
    EXPECT_EQ(root.GetAttribute("y", "standard"), "standard");
    root.SetAttribute("Etat", "3");
    EXPECT_EQ(root.GetCachedAttribute(), "3");
    EXPECT_TRUE(root.HasSubItem("b"));
    EXPECT_EQ(root.GetCachedSubItem().GetAttribute("n"), "1");
    std::string found;
    for (MAttribute::Iterator bands(root); bands.Next("b");)
        found += bands->GetAttribute("n").ToUtf8();
    EXPECT_EQ(found, "12");
    EXPECT_TRUE(root.DeleteAttribute("ETAT"));
    EXPECT_EQ(Describe(root), "(a ETAT=[2] x=[](B n=[1])(c)(b n=[2]))");
}

TEST(Attribute, TellsWhatIsNotThere) {
    MAttribute item;
    item.SetAttribute("a", "1");
    item.AddSubItem("c");
    const auto cached = [&] { item.GetCachedAttribute(); };
    const std::string notCached =
        "0 There is no attribute in the cache. Previous call to HasAttribute probably did not "
        "succeed.";
    const std::string noSubItem =
        "0 There is no subitem in the cache. Previous call to HasSubItem probably did not succeed.";
    ExpectRaised({{"0 Could not find required attribute (x).", [&] { item.GetAttribute("x"); }},
                  {"0 Could not find required subitem (x).", [&] { item.GetSubItem("x"); }},
                  {"0 XML item iterator has not been initialized.",
                   [&] { MAttribute::Iterator(item)->GetName(); }}});
    EXPECT_TRUE(item.HasAttribute("a") && !item.HasAttribute("b"));
    EXPECT_EQ(Raised(cached), notCached) << "a failure empties the cache";
    EXPECT_TRUE(item.HasAttribute("a") && item.DeleteAttribute("a"));
    EXPECT_EQ(Raised(cached), notCached);
    EXPECT_TRUE(item.HasSubItem("c"));
    item.DeleteSubItem(item.GetCachedSubItem());
    EXPECT_EQ(Raised([&] { item.GetCachedSubItem(); }), noSubItem);
}

TEST(Attribute, KeepsItsChildrenLinkedAndCopiesOthers) {
    MXMLDocument document;
    Load(document, "<r><a/><b/><c/><d/></r>");
    MAttribute& root = document.Root();
    for (const char* const name : {"b", "d", "a"}) {
        root.DeleteSubItem(root.GetSubItem(name));
        root.AddSubItem("e");
        Describe(root);
    }
    MXMLDocument source;
    Load(source, "<p x=1>v<q y=2><t/></q><s>w</s></p>");
    root.GetSubItem("e").CopyFrom(source.Root());
    EXPECT_EQ(Describe(root), "(r(c)(p x=[1] [v](q y=[2](t))(s [w]))(e)(e))");
}

// Deeper than any stack: the items must not be handled one within the other.
TEST(Attribute, TreesMayBeAsDeepAsMemoryAllows) {
    constexpr int kDepth = 300000;
    MXMLDocument document;
    document.Root().SetName("a");
    MAttribute* item = &document.Root();
    for (int i = 1; i < kDepth; ++i) item = &item->AddSubItem("a");
    EXPECT_EQ(item->Level(), kDepth - 1);
    MAttribute copy;
    copy.CopyFrom(document.Root());
    document.Root().CopyFrom(copy);
    const std::string xml = Save(document, true);
    EXPECT_EQ(std::count(xml.begin(), xml.end(), '<'), 2 * kDepth);
    Load(document, xml, {.maximumDepth = kDepth});
    EXPECT_EQ(Save(document, true), xml);
}

TEST(StoreVisitor, OneFunctionServesBothDirections) {
    MAttribute item, copy, nothing;
    item.SetAttribute("Mode", "3");
    Settings().Store({true, item});
    EXPECT_EQ(Describe(item), "((LFO Rate=[0.5]))") << "what is standard is taken away";

    item.Clear();
    Settings settings{"wide", -2147483647, false, {}};
    settings.rate.text = "2";
    EXPECT_TRUE(settings.Store({true, item}));
    EXPECT_EQ(Describe(item), "( Name=[wide] Mode=[-2147483647] Enabled=[0](LFO Rate=[2]))");
    Settings read;
    EXPECT_TRUE(read.Store({false, item}));
    read.Store({true, copy});
    EXPECT_EQ(Describe(copy), Describe(item));
    EXPECT_FALSE(read.Store({false, nothing}));
    EXPECT_TRUE(read.name == "none" && read.mode == -1 && read.isEnabled);
    EXPECT_FALSE(read.rate.Load(nothing));
    EXPECT_TRUE(read.rate.Load(nothing)) << "the answer for a missing value";
}
