// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_parser.h"

#include <utility>

#include "foundation/xml/invalid_file.h"
#include "foundation/xml/xml_characters.h"
#include "foundation/xml/xml_entities.h"
#include "foundation/xml/xml_lexer.h"

namespace {

// The stages tell whether the parse goes on.
class DocumentReader {
public:
    DocumentReader(MXMLParser& handler, MByteStream& stream, const MXMLOptions& options)
        : handler(handler),
          lexer(stream, MEncoding::GetCodec(options.encoding), options.maximumBytes),
          maximumDepth(options.maximumDepth) {}

    void Run() {
        while (ReadText() && ReadMarkup()) {
        }
    }

private:
    enum class TagEnd { Open, Empty };

    bool ReadText();
    bool GiveText(const MString& text);
    bool ReadMarkup();
    bool ReadClosingElement();
    bool ReadSpecialElement();
    bool ReadBlock();
    bool ReadElement();
    TagEnd ReadAttributes();
    TagEnd ReadTagEnd();
    void ReadValue(MString& value);
    bool GiveElement(const MString& name, TagEnd end);
    void ApplyEncoding();

    MXMLParser& handler;
    XmlLexer lexer;
    const int maximumDepth;
    int depth = 0;
    MAttributeList attributes;
};

bool DocumentReader::ReadText() {
    lexer.PeekBehindWhite();
    MString text;
    const bool found = lexer.ReadUpTo(u'<', text);
    return GiveText(ResolveXmlEntities(std::move(text))) && found;
}

bool DocumentReader::GiveText(const MString& text) {
    const MString trimmed = TrimXml(text);
    return trimmed.IsEmpty() || !handler.OnText(trimmed);
}

bool DocumentReader::ReadMarkup() {
    switch (lexer.PeekBehindWhite()) {
        case u'/':
            lexer.Skip();
            return ReadClosingElement();
        case u'!':
            lexer.Skip();
            return ReadSpecialElement();
        default:
            return ReadElement();
    }
}

bool DocumentReader::ReadClosingElement() {
    const MString name = lexer.ReadName();
    if (lexer.PeekBehindWhite() != u'>') RaiseInvalidFile("Invalid closing element syntax.");
    lexer.Skip();
    if (depth > 0) --depth;
    return !handler.OnElement(name, attributes, true);
}

// The second dash of a comment is not looked at.
bool DocumentReader::ReadSpecialElement() {
    MString skipped;
    bool isEnded = false;
    if (lexer.SkipIf(u'[')) return ReadBlock();
    if (lexer.SkipIf(u'-')) {
        isEnded = lexer.ReadUpToBracket(u'-', skipped);
    } else {
        isEnded = lexer.ReadUpTo(u'>', skipped);
    }
    if (!isEnded) RaiseInvalidFile("Invalid special element sequence.");
    return true;
}

bool DocumentReader::ReadBlock() {
    MString keyword, block;
    if (!lexer.ReadUpTo(u'[', keyword) || !lexer.ReadUpToBracket(u']', block))
        RaiseInvalidFile("Invalid special element sequence.");
    return keyword != "CDATA" || GiveText(block);
}

bool DocumentReader::ReadElement() {
    const MString name = lexer.ReadName();
    if (name.IsEmpty()) RaiseInvalidFile("No element name found.");
    const TagEnd end = ReadAttributes();
    bool goesOn = true;
    if (name[0] == u'?') {
        ApplyEncoding();
    } else {
        goesOn = GiveElement(name, end);
    }
    attributes.Clear();
    return goesOn;
}

DocumentReader::TagEnd DocumentReader::ReadAttributes() {
    for (;;) {
        MString name = lexer.ReadName();
        if (name.IsEmpty()) return ReadTagEnd();
        if (name == "?") {
            if (!lexer.SkipIf(u'>')) RaiseInvalidFile("Invalid element finishing sequence.");
            return TagEnd::Empty;
        }
        if (lexer.PeekBehindWhite() != u'=')
            RaiseInvalidFile("Invalid character found where attribute expected.");
        lexer.Skip();
        MString value;
        ReadValue(value);
        attributes.Add(std::move(name), ResolveXmlEntities(std::move(value)));
    }
}

DocumentReader::TagEnd DocumentReader::ReadTagEnd() {
    if (lexer.SkipIf(u'>')) return TagEnd::Open;
    if (!lexer.SkipIf(u'/')) RaiseInvalidFile("Special character found where attribute expected.");
    if (!lexer.SkipIf(u'>')) RaiseInvalidFile("Invalid element finishing sequence.");
    return TagEnd::Empty;
}

void DocumentReader::ReadValue(MString& value) {
    if (lexer.PeekBehindWhite() != u'"') {
        value = lexer.ReadToken();
        return;
    }
    lexer.Skip();
    if (!lexer.ReadUpTo(u'"', value)) RaiseInvalidFile("No ending delimiter found.");
}

bool DocumentReader::GiveElement(const MString& name, TagEnd end) {
    if (depth >= maximumDepth) RaiseInvalidFile("The elements are nested too deeply.");
    if (handler.OnElement(name, attributes, false)) return false;
    if (end == TagEnd::Open) {
        ++depth;
        return true;
    }
    attributes.Clear();
    return !handler.OnElement(name, attributes, true);
}

void DocumentReader::ApplyEncoding() {
    if (const MAttributePair* const encoding = attributes.Find("encoding"))
        lexer.SetCodec(MEncoding::GetCodec(encoding->value));
}

}  // namespace

void MXMLParser::Parse(MByteStream& stream, const MXMLOptions& options) {
    DocumentReader(*this, stream, options).Run();
}
