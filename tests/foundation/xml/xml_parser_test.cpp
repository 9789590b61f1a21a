// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_parser.h"

#include <gtest/gtest.h>

#include "xml_support.h"

namespace {

// Writes down what it is told: "+name attribute=[value]", "-name", "[text]".
class Recorder : public MXMLParser {
public:
    bool OnElement(const MString& name, MAttributeList& attributes, bool closing) override {
        events.append(closing ? "-" : "+").append(name.ToUtf8()).append(TextOf(attributes));
        return Note(name);
    }
    bool OnText(const MString& text) override {
        events.append("[").append(text.ToUtf8()).append("]");
        return Note(text);
    }

    std::string events;
    MString stopsAt;

private:
    bool Note(const MString& what) {
        events += ' ';
        return what == stopsAt;
    }
};

// The events and, where the parse ends in an error, "!" and its text without the prefix.
std::string Events(std::string_view xml, const MXMLOptions& options = {}) {
    constexpr std::string_view kPrefix = "256 Invalid file contents. ";
    Recorder recorder;
    MMemoryStream stream = StreamOver(xml);
    std::string error = RaisedBy([&] { recorder.Parse(stream, options); });
    if (error.starts_with(kPrefix)) error.replace(0, kPrefix.size(), "!");
    std::string events = recorder.events + error;
    if (!events.empty() && events.back() == ' ') events.pop_back();
    return events;
}

struct Case {
    const char* xml;
    const char* events;
};

void Check(std::initializer_list<Case> cases) {
    for (const Case& one : cases) EXPECT_EQ(Events(one.xml), one.events) << one.xml;
}

constexpr const char* kClosing = "!Invalid closing element syntax.";
constexpr const char* kNoName = "!No element name found.";
constexpr const char* kSpecial = "!Invalid special element sequence.";
constexpr const char* kFinishing = "!Invalid element finishing sequence.";
constexpr const char* kNotAttribute = "!Special character found where attribute expected.";
constexpr const char* kNoEqual = "!Invalid character found where attribute expected.";
constexpr const char* kNoEnd = "!No ending delimiter found.";

// A stream of one byte for ever, or that fails after some.
class OddStream final : public MStream {
public:
    OddStream(char byte, std::int64_t failsAfter) : byte(byte), left(failsAfter) {}
    std::int32_t Read(void* buffer, std::int32_t size) override {
        if (left < size) throw MException("Error reading from file \"x\".", 256);
        left -= size;
        std::fill_n(static_cast<char*>(buffer), size, byte);
        return size;
    }

private:
    char byte;
    std::int64_t left;
};

std::string Nested(int depth) {
    std::string xml;
    for (int i = 0; i < depth; ++i) xml += "<a>";
    for (int i = 0; i < depth; ++i) xml += "</a>";
    return xml;
}

}  // namespace

TEST(XmlParser, ReadsElementsAndAttributes) {
    Check({
        {"", ""},
        {"<a/>", "+a -a"},
        {"<a></a>", "+a -a"},
        {"< a ></ a >", "+a -a"},
        {"<\n/a\n>", "-a"},
        {"<A></a>", "+A -a"},
        {"<a b=1/>", "+a b=[1] -a"},
        {"<a b='x'/>", "+a b=['x'] -a"},
        {"<a b='x y'/>", kNoEqual},
        {"<a b = \"x\" c\n=\n\"y\"d=z>", "+a b=[x] c=[y] d=[z]"},
        {"<a b=\"1\r\n\r\n 2/>=<\">", "+a b=[1   2/>=<]"},
        {"<a b=\"\" c= d=1>", kNotAttribute},
        {"<a b=/>", "+a b=[] -a"},
        {"<a b=1 b=2>", "+a b=[1] b=[2]"},
        {"<a b=?>", "+a b=[?]"},
        {"<a ?>", "+a -a"},
        {"<\xc4\x80.\xe2\x82\xac-1/>", "+\xc4\x80.\xe2\x82\xac-1 -\xc4\x80.\xe2\x82\xac-1"},
        {"<a\tb=\x01\"x\"/>", "+a b=[x] -a"},
        {"\xef\xbb\xbf<a/>", "+a -a"},
        {"<a b=\"x&amp;&quot;y\" c=&lt;&#10;&gt;/>", "+a b=[x&\"y] c=[<\n>] -a"},
        {"<?xml version=\"1.0\"?><?other x?><?third ?><a/>", kNoEqual},
        {"<?xml version=\"1.0\" x=1 ?><?third ?><?fourth><a/>", "+a -a"},
    });
}

TEST(XmlParser, ReadsTextsAndSkipsWhatIsNoContent) {
    Check({
        {"<a> \t\r\n </a>", "+a -a"},
        {"<a>\n one\n\ttwo  three \n</a>", "+a [one \ttwo  three] -a"},
        {"<a>x<b/>y</a> z ", "+a [x] +b -b [y] -a [z]"},
        {"<a>>/=!\"'</a>", "+a [>/=!\"'] -a"},
        {"<a>&#10;x&#10;y&#10;</a>", "+a [x\ny] -a"},
        {"<a>&bogus; &AMP;&\xc3\x81mp; &#65;&amp</a>", "+a [&bogus; && &#65;&] -a"},
        {"<a>&amp;lt; &ampx &&lt;&</a>", "+a [&lt; & &<&] -a"},
        {"<a><![CDATA[ a&amp;b ]] > <c>\nd ]]></a>", "+a [a&amp;b ]] > <c> d] -a"},
        {"<a><![CDATA[ \n ]]><![cdata[x]]><![CDATA [x]]><![IGNORE[<b>]]></a>", "+a -a"},
        {"<!DOCTYPE a \"x><a>y</a>", "+a [y] -a"},
        {"<!-- <b> -- > \n->--><a/>", "+a -a"},
        {"<!-x--><a/><!---><b/>", "+a -a +b -b"},
        {"<!><a/>", "+a -a"},
        {"<!\n--><a/>", "+a -a"},
        {"<a>x\0y</a>", "+a [x]"},
    });
    EXPECT_EQ(Events(std::string_view("<a>x\0y</a>", 10)), "+a [x y] -a") << "NUL ends a line";
}

TEST(XmlParser, TellsWhatIsWrong) {
    Check({
        {"</a", kClosing},
        {"</a b>", kClosing},
        {"</a/>", kClosing},
        {"<", kNoName},
        {"< >", kNoName},
        {"<\"a\">", kNoName},
        {"<<a>", kNoName},
        {"<a", kNotAttribute},
        {"<a b=\"x\" ", kNotAttribute},
        {"<a =1>", kNotAttribute},
        {"<a <b>", kNotAttribute},
        {"<a !>", kNotAttribute},
        {"<a / >", kFinishing},
        {"<a /", kFinishing},
        {"<a ? >", kFinishing},
        {"<a b>", kNoEqual},
        {"<a b c=1>", kNoEqual},
        {"<a b?>", kNoEqual},
        {"<a b", kNoEqual},
        {"<a b=\"x>", kNoEnd},
        {"<!", kSpecial},
        {"<!DOCTYPE", kSpecial},
        {"<!-- -- >", kSpecial},
        {"<!--\n--\n>", kSpecial},
        {"<![CDATA]]>", kSpecial},
        {"<![CDATA[ ]] >", kSpecial},
        {"<?xml encoding=\"latin99\"?>", "0 No codec found for encoding latin99."},
    });
}

TEST(XmlParser, StopsWhereTheHandlerSaysSo) {
    for (const char* const stop : {"b", "x", "c"}) {
        Recorder recorder;
        recorder.stopsAt = stop;
        MMemoryStream stream = StreamOver("<a><c>x</c><b></b></a><<<");
        recorder.Parse(stream);
        const std::string all = "+a +c [x] -c +b ";
        const std::string last = stop == MString("x") ? "[x] " : std::string("+") + stop + " ";
        EXPECT_EQ(recorder.events, all.substr(0, all.find(last) + last.size()));
    }
    Recorder recorder;
    recorder.stopsAt = "a";
    MMemoryStream stream = StreamOver("<a/>");
    recorder.Parse(stream);
    EXPECT_EQ(recorder.events, "+a ") << "no end of an element that is not wanted";
}

TEST(XmlParser, DeclaredEncodingHoldsFromTheNextLineOn) {
    const std::string declared = "<?xml ENCODING=\"latin2\"?><a>\xc5\xbe</a>";
    EXPECT_EQ(Events(declared + "\n<b>\xbe</b>"), "+a [\xc5\xbe] -a +b [\xc5\xbe] -b");
    const std::string wide = "<?xml encoding=UTF-16\n>\n";
    const std::string units("<\0b\0/\0>\0", 8);
    EXPECT_EQ(Events(wide + units), "+b -b");
    const std::string header = "\xff\xfe";
    EXPECT_EQ(Events(header + units, {.encoding = "utf-16"}), "+b -b");
    EXPECT_EQ(Events(units, {.encoding = "utf-16"}), "0 Invalid UTF8 header.");
}

// Surrogates spelled in UTF-8, and the private escapes for a quote and a '>'.
TEST(XmlParser, LeavesOutWhatCannotBeWritten) {
    Check({
        {"<\xed\xa0\x80>", kNoName},
        {"<\xed\xb0\x80 b=1/>", kNotAttribute},
        {"<a b=\"\xed\xa0\x80\"/>", "+a b=[] -a"},
        {"<a b=\"\xf4\x8f\xb8\xa2\"/>x\xf4\x8f\xb8\xbey", "+a b=[] -a [xy]"},
        {"<a>\xf0\x9f\x98\x80\xed\xa0\x80\xed\xa0\xbd\xed\xb8\x80</a>",
         "+a [\xf0\x9f\x98\x80\xf0\x9f\x98\x80] -a"},
    });
}

TEST(XmlParser, RefusesWhatIsTooDeepOrTooLarge) {
    EXPECT_EQ(Events(Nested(512)).find('!'), std::string::npos);
    EXPECT_TRUE(Events(Nested(513)).ends_with("+a !The elements are nested too deeply."));
    EXPECT_EQ(Events("<a><b/><b/></a><a><b/></a>", {.maximumDepth = 2}).find('!'),
              std::string::npos);
    EXPECT_TRUE(Events("<a><b></b><b><c/>", {.maximumDepth = 2})
                    .ends_with("+b !The elements are nested too deeply."));

    EXPECT_EQ(Events("<a>12</a>", {.maximumBytes = 9}), "+a [12] -a");
    EXPECT_EQ(Events("<a>12</a>", {.maximumBytes = 8}), "!The document is too large.");
    for (const char byte : {'<', ' ', 'a', '\n', '\xff'}) {
        Recorder recorder;
        OddStream endless(byte, std::int64_t{1} << 40);
        const std::string error =
            RaisedBy([&] { recorder.Parse(endless, {.maximumBytes = 1 << 20}); });
        EXPECT_TRUE(error.starts_with("256 Invalid file contents. ")) << error;
    }
}

TEST(XmlParser, LetsTheErrorsOfAStreamThrough) {
    Recorder recorder;
    OddStream failing('a', 5000);
    EXPECT_EQ(RaisedBy([&] { recorder.Parse(failing); }), "256 Error reading from file \"x\".");
}
