// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_parser.h"

#include <gmock/gmock.h>

#include "foundation/xml/xml_support.h"

namespace {

using testing::EndsWith;

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
    MMemoryStream stream = Over(xml);
    std::string error = Raised([&] { recorder.Parse(stream, options); });
    if (error.starts_with(kPrefix)) error.replace(0, kPrefix.size(), "!");
    std::string events = recorder.events + error;
    if (!events.empty() && events.back() == ' ') events.pop_back();
    return events;
}

}  // namespace

TEST(XmlParser, KeepsToItsGrammar) {
    const auto events = [](const std::string& xml) { return Events(xml); };
    CheckCases(QUILLOREA_XML_CASES "/grammar_cases.txt", events);
}

TEST(XmlParser, StopsWhereTheHandlerSaysSo) {
    for (const auto& [stop, events] :
         {std::pair("a", "+a "), {"b", "+a +c [x] -c +b "}, {"x", "+a +c [x] "}}) {
        Recorder recorder;
        recorder.stopsAt = stop;
        MMemoryStream stream = Over("<a><c>x</c><b/></a><<<");
        recorder.Parse(stream);
        EXPECT_EQ(recorder.events, events);
    }
}

TEST(XmlParser, ReadsInTheEncodingOfTheCaller) {
    const std::string units("<\0b\0/\0>\0", 8);
    EXPECT_EQ(Events("\xff\xfe" + units, {.encoding = "utf-16"}), "+b -b");
    EXPECT_EQ(Events(units, {.encoding = "utf-16"}), "0 Invalid UTF8 header.");
}

TEST(XmlParser, RefusesWhatIsTooDeepTooLargeOrUnreadable) {
    std::string deep;
    for (int i = 0; i < 512; ++i) deep += "<a>";
    EXPECT_THAT(Events(deep), EndsWith(" +a"));
    EXPECT_THAT(Events(deep + "<b>"), EndsWith(" +a !The elements are nested too deeply."));
    EXPECT_THAT(Events("<a><b/><b/></a><a><b/></a>", {.maximumDepth = 2}), EndsWith(" -a"));
    EXPECT_THAT(Events("<a><b></b><b><c/>", {.maximumDepth = 2}),
                EndsWith(" +b !The elements are nested too deeply."));
    EXPECT_EQ(Events("<a>12</a>", {.maximumBytes = 9}), "+a [12] -a");
    EXPECT_EQ(Events("<a>12</a>", {.maximumBytes = 8}), "!The document is too large.");
    for (const char byte : {'<', ' ', 'a', '\n', '\xff'})
        EXPECT_EQ(Events(std::string(2048, byte), {.maximumBytes = 2000}),
                  "!The document is too large.");
    MStream unreadable;
    EXPECT_EQ(Raised([&] { Recorder().Parse(unreadable); }),
              "1 Service \"read from stream\" is not implemented.");
}
