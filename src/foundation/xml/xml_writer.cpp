// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_writer.h"

#include <utility>

#include "foundation/text/exception.h"
#include "foundation/text/text_buffers.h"
#include "foundation/xml/tree_walk.h"
#include "foundation/xml/xml_entities.h"

namespace {

constexpr std::int32_t kBufferSize = 1024;

void RequireNames(const MAttribute& root) {
    WalkTree(
        root,
        [](const MAttribute& item) {
            if (item.GetName().IsEmpty())
                throw MException("XML entity cannot have empty name.", 256);
        },
        [](const MAttribute&) {});
}

// Text is collected before it is encoded, which has a price for each piece.
class XmlOutput {
public:
    XmlOutput(MByteStream& stream, const MEncoding::Codec& codec)
        : writer(stream, kBufferSize), codec(codec) {}

    XmlOutput& Put(const MString& text) {
        if (pending.IsEmpty()) pending.Reserve(kPending + kPending / 2);
        pending.Append(text);
        return EndText();
    }
    XmlOutput& PutEscaped(const MString& text) {
        AppendXmlEscaped(pending, text);
        return EndText();
    }
    void Flush() {
        Encode();
        writer.Flush();
    }

private:
    static constexpr std::int32_t kPending = 1024;

    // Half a surrogate pair at the end of a text would take the unit behind it along.
    XmlOutput& EndText() {
        const std::int32_t length = pending.Length();
        if (length > 0 && (length >= kPending || (pending[length - 1] & 0xfc00) == 0xd800))
            Encode();
        return *this;
    }
    void Encode() {
        codec.Write(writer, pending);
        pending = MString();
    }

    MTextWriter writer;
    const MEncoding::Codec& codec;
    MString pending;
};

class TreeWriter {
public:
    TreeWriter(XmlOutput& output, XmlForm form, std::int32_t rootLevel)
        : output(output), isPretty(form == XmlForm::Pretty), rootLevel(rootLevel) {}

    void Open(const MAttribute& item);
    void Close(const MAttribute& item);

private:
    static bool IsEmpty(const MAttribute& item) {
        return item.SubItems().IsEmpty() && item.GetValue().IsEmpty();
    }
    std::int32_t LevelOf(const MAttribute& item) const { return item.Level() - rootLevel; }
    void PutValue(const MAttribute& item);
    void Indent(std::int32_t level);
    void EndLine(bool ends) {
        if (ends) output.Put("\n");
    }

    XmlOutput& output;
    const bool isPretty;
    const std::int32_t rootLevel;
};

void TreeWriter::Open(const MAttribute& item) {
    const std::int32_t level = LevelOf(item);
    Indent(level);
    output.Put("<").Put(item.GetName());
    for (const MAttributePair* const pair : item.Attributes())
        output.Put(" ").Put(pair->name).Put("=\"").PutEscaped(pair->value).Put("\"");
    if (IsEmpty(item)) {
        output.Put("/>");
        return EndLine(isPretty || level < 2);
    }
    output.Put(">");
    EndLine(isPretty || level == 0);
    PutValue(item);
}

void TreeWriter::Close(const MAttribute& item) {
    if (IsEmpty(item)) return;
    const std::int32_t level = LevelOf(item);
    Indent(level);
    output.Put("</").Put(item.GetName()).Put(">");
    EndLine(isPretty || level < 2);
}

void TreeWriter::PutValue(const MAttribute& item) {
    if (item.GetValue().IsEmpty()) return;
    Indent(LevelOf(item) + 1);
    output.PutEscaped(item.GetValue());
    EndLine(isPretty);
}

void TreeWriter::Indent(std::int32_t level) {
    for (std::int32_t i = 0; isPretty && i < level; ++i) output.Put("\t");
}

}  // namespace

void WriteXml(MByteStream& stream, const MAttribute& root, XmlForm form, const MString& encoding) {
    const MEncoding::Codec& codec = MEncoding::GetCodec(encoding);
    RequireNames(root);
    codec.WriteHeader(stream);
    XmlOutput output(stream, codec);
    output.Put("<?xml version=\"1.0\" encoding=\"").Put(encoding).Put("\"?>\n");
    TreeWriter writer(output, form, root.Level());
    WalkTree(
        root, [&](const MAttribute& item) { writer.Open(item); },
        [&](const MAttribute& item) { writer.Close(item); });
    output.Flush();
}
