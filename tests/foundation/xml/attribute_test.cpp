// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/attribute.h"

#include <gtest/gtest.h>

#include "foundation/xml/store_visitor.h"
#include "xml_support.h"

namespace {

std::string LoadAndDescribe(const char* xml) {
    MXMLDocument document;
    const std::string error = RaisedBy([&] { Load(document, xml); });
    return Describe(document.Root()) + error;
}

// The links of the children, and what their iterator finds.
std::string NamesBothWays(MAttribute& item) {
    std::string names;
    MAttribute* last = nullptr;
    for (MAttribute::Iterator child(item); child.Next(); last = &*child)
        names += child->GetName().ToUtf8();
    names += '|';
    for (; last != nullptr; last = last->Previous()) names += last->GetName().ToUtf8();
    return names;
}

class Rate final : public MStorable {
public:
    Rate() : MStorable("Rate") {}
    MString GetText() override { return text; }
    void SetText(const MString& newText) override { text = newText; }
    bool OnMissing() override { return ++missed == 2; }

    MString text = "0.5";
    int missed = 0;
};

struct Settings {
    void Store(const MStoreVisitor& visitor) {
        visitor.Text("Name", name, "none");
        visitor.Number("Mode", mode, std::int32_t{-1});
        visitor.Flag("Enabled", isEnabled, true);
        hasRate =
            visitor.SubItem("LFO", [&](const MStoreVisitor& inner) { loaded = inner.Value(rate); });
    }

    MString name = "none";
    std::int32_t mode = -1;
    bool isEnabled = true;
    bool hasRate = false;
    bool loaded = false;
    Rate rate;
};

}  // namespace

TEST(XmlDocument, BuildsTheTree) {
    constexpr const char* kCases[][2] = {
        {"<a>x<b/>y</a>", "(a [x y](b))"},
        {"<A e=1>\n x \n<b>1<c f=\"\"/></B>&#10;</\xc3\xa1>", "(A e=[1] [x](b [1](c f=[])))"},
        {"<a>1<![CDATA[ &lt; ]]>2</a><b/></b>junk", "(a [1 &lt; 2])"},
        {"<a><b>open", "(a(b [open]))"},
        {"<a><b></a>", "(a(b))256 Invalid file contents. Invalid closing element name."},
        {"</a>", "()256 Invalid file contents. Invalid closing element name."},
        {" x <a/>", "()256 Invalid file contents. Text outside of any element."},
        {"<?xml?><?xml version=1 ?><!-- -->",
         "()256 Invalid file contents. The XML does not contain any "
         "elements."},
        {"", "()256 Invalid file contents. The XML does not contain any elements."},
        {"<a/", "()256 Invalid file contents. Invalid element finishing sequence."},
    };
    for (const auto& [xml, tree] : kCases) EXPECT_EQ(LoadAndDescribe(xml), tree) << xml;

    MXMLDocument document;
    Load(document, "<a b=1>x<c/></a>");
    EXPECT_FALSE(document.IsEmpty());
    Load(document, "<d/>");
    EXPECT_EQ(Describe(document.Root()), "(d)") << "nothing of the tree before is left";
    RaisedBy([&] {
        Load(document,
             "<e><f>"
             "</e>");
    });
    EXPECT_EQ(Describe(document.Root()), "(e(f))");
}

TEST(Attribute, FindsByNameWithoutCaseAndAccents) {
    MXMLDocument document;
    Load(document, "<a \xc3\x89tat=1 ETAT=2 x=\"\"><B n=1/><c/><b n=2/></a>");
    MAttribute& root = document.Root();
    EXPECT_TRUE(root.HasAttribute("etat"));
    EXPECT_EQ(root.GetCachedAttribute(), "1");
    EXPECT_EQ(root.GetAttribute("X"), "");
    EXPECT_EQ(root.GetAttribute("x", "standard"), "");
    EXPECT_EQ(root.GetAttribute("y", "standard"), "standard");
    root.SetAttribute("Etat", "3");
    EXPECT_EQ(root.GetCachedAttribute(), "3");
    EXPECT_TRUE(root.HasSubItem("b"));
    EXPECT_EQ(root.GetCachedSubItem().GetAttribute("n"), "1");
    EXPECT_EQ(&root.GetSubItem("b"), root.SubItems()[0]);
    std::string found;
    for (MAttribute::Iterator bands(root); bands.Next("b");)
        found += bands->GetAttribute("n").ToUtf8();
    EXPECT_EQ(found, "12");
    EXPECT_TRUE(root.DeleteAttribute("ETAT"));
    EXPECT_EQ(Describe(root), "(a ETAT=[2] x=[](B n=[1])(c)(b n=[2]))");
    EXPECT_FALSE(root.DeleteAttribute("z"));
}

TEST(Attribute, TellsWhatIsNotThere) {
    MAttribute item;
    const std::string noAttribute =
        "0 There is no attribute in the cache. Previous call to HasAttribute probably did not "
        "succeed.";
    const std::string noSubItem =
        "0 There is no subitem in the cache. Previous call to HasSubItem probably did not succeed.";
    const auto cached = [&] { item.GetCachedAttribute(); };
    const auto cachedSubItem = [&] { item.GetCachedSubItem(); };
    EXPECT_EQ(RaisedBy(cached), noAttribute);
    EXPECT_EQ(RaisedBy(cachedSubItem), noSubItem);
    item.SetAttribute("a", "1");
    EXPECT_TRUE(item.HasAttribute("a"));
    EXPECT_FALSE(item.HasAttribute("b"));
    EXPECT_EQ(RaisedBy(cached), noAttribute) << "a failure empties the cache";
    EXPECT_TRUE(item.HasAttribute("a"));
    item.DeleteAttribute("a");
    EXPECT_EQ(RaisedBy(cached), noAttribute);
    MAttribute& child = item.AddSubItem("c");
    EXPECT_TRUE(item.HasSubItem("c"));
    item.DeleteSubItem(child);
    EXPECT_EQ(RaisedBy(cachedSubItem), noSubItem);
    EXPECT_EQ(RaisedBy([&] { item.GetAttribute("Depth"); }),
              "0 Could not find required attribute (Depth).");
    EXPECT_EQ(RaisedBy([&] { item.GetSubItem("LFO"); }),
              "0 Could not find required subitem (LFO).");
    MAttribute::Iterator none(item);
    EXPECT_FALSE(none.Next());
    EXPECT_EQ(RaisedBy([&] { none->GetName(); }), "0 XML item iterator has not been initialized.");
}

TEST(Attribute, KeepsItsChildrenLinked) {
    MAttribute root;
    MAttribute& a = root.AddSubItem("a");
    MAttribute& b = root.AddSubItem("b");
    MAttribute& c = root.AddSubItem("c");
    EXPECT_EQ(NamesBothWays(root), "abc|cba");
    EXPECT_EQ(b.AddSubItem("d").Level(), 2);
    EXPECT_EQ(b.Parent(), &root);
    root.DeleteSubItem(b);
    EXPECT_EQ(NamesBothWays(root), "ac|ca");
    root.DeleteSubItem(c);
    root.AddSubItem("e");
    root.DeleteSubItem(a);
    EXPECT_EQ(NamesBothWays(root), "e|e");
}

TEST(Attribute, CopiesWithTheLevelsOfItsNewPlace) {
    MXMLDocument source, target;
    Load(source, "<p x=1>v<q y=2><r/></q><s>w</s></p>");
    Load(target, "<a><b old=1><c/></b></a>");
    target.Root().GetSubItem("b").CopyFrom(source.Root());
    EXPECT_EQ(Describe(target.Root()), "(a(p x=[1] [v](q y=[2](r))(s [w])))");
    EXPECT_EQ(target.Root().GetSubItem("p").GetSubItem("q").GetSubItem("r").Level(), 3);
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

TEST(Storable, SavesAndLoadsOneAttribute) {
    MAttribute item;
    Rate rate;
    EXPECT_FALSE(rate.Load(item));
    EXPECT_TRUE(rate.Load(item)) << "the answer for a missing value";
    EXPECT_TRUE(rate.Save(item));
    EXPECT_EQ(item.GetAttribute("rate"), "0.5");
    item.SetAttribute("RATE", "0.7");
    EXPECT_TRUE(rate.Load(item));
    EXPECT_EQ(rate.text, "0.7");
    EXPECT_EQ(rate.missed, 2);
    MStorable plain("p");
    EXPECT_FALSE(plain.Load(item));
    EXPECT_TRUE(plain.Save(item));
    EXPECT_TRUE(plain.Load(item));
    EXPECT_EQ(item.GetAttribute("p"), "");
}

TEST(StoreVisitor, OneFunctionServesBothDirections) {
    MAttribute item;
    item.SetAttribute("Mode", "3");
    Settings standard;
    standard.Store({true, item});
    EXPECT_EQ(Describe(item), "((LFO Rate=[0.5]))") << "what is standard is taken away";

    Settings original;
    original.name = "wide";
    original.mode = -2147483647;
    original.isEnabled = false;
    original.rate.text = "2";
    item.Clear();
    original.Store({true, item});
    EXPECT_EQ(Describe(item), "( Name=[wide] Mode=[-2147483647] Enabled=[0](LFO Rate=[2]))");
    Settings read;
    read.Store({false, item});
    EXPECT_EQ(read.name, "wide");
    EXPECT_EQ(read.mode, original.mode);
    EXPECT_FALSE(read.isEnabled);
    EXPECT_TRUE(read.hasRate && read.loaded);
    EXPECT_EQ(read.rate.text, "2");

    MAttribute nothing;
    read.Store({false, nothing});
    EXPECT_EQ(read.name, "none");
    EXPECT_EQ(read.mode, -1);
    EXPECT_TRUE(read.isEnabled);
    EXPECT_FALSE(read.hasRate);
}
