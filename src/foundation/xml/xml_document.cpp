// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_document.h"

#include "foundation/xml/invalid_file.h"
#include "foundation/xml/xml_characters.h"
#include "foundation/xml/xml_writer.h"

namespace {

class TreeBuilder final : public MXMLParser {
public:
    explicit TreeBuilder(MAttribute& root) : root(root) {}

    bool OnElement(const MString& name, MAttributeList& attributes, bool closing) override {
        if (closing) return Close(name);
        if (current == nullptr) {
            root.SetName(name);
            current = &root;
        } else {
            current = &current->AddSubItem(name);
        }
        current->TakeAttributes(attributes);
        return false;
    }

    // The pieces of a text that children interrupt are joined by blanks.
    bool OnText(const MString& text) override {
        if (current == nullptr) RaiseInvalidFile("Text outside of any element.");
        const MString trimmed = TrimXml(text);
        MString& value = current->Value();
        if (value.IsEmpty()) {
            value = trimmed;
        } else {
            value.Append(u' ').Append(trimmed);
        }
        return false;
    }

    bool IsOpen() const { return current != nullptr; }

private:
    bool Close(const MString& name) {
        if (current == nullptr || current->GetName().CompareNoCase(name) != 0)
            RaiseInvalidFile("Invalid closing element name.");
        current = current->Parent();
        return current == nullptr;
    }

    MAttribute& root;
    MAttribute* current = nullptr;
};

}  // namespace

void MXMLDocument::Load(MByteStream& stream, const MXMLOptions& options) {
    Clear();
    TreeBuilder builder(root);
    builder.Parse(stream, options);
    if (IsEmpty()) RaiseInvalidFile("The XML does not contain any elements.");
    if (options.mustBeClosed && builder.IsOpen()) RaiseInvalidFile("The document ends too early.");
}

void MXMLDocument::Save(MByteStream& stream, bool compact, const MString& encoding) const {
    WriteXml(stream, root, compact ? XmlForm::Compact : XmlForm::Pretty, encoding);
}
