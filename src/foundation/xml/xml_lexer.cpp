// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_lexer.h"

#include <utility>

#include "foundation/xml/invalid_file.h"
#include "foundation/xml/xml_characters.h"

namespace {

constexpr std::int32_t kBufferSize = 1024;

constexpr bool IsHighSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xd800; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xdc00; }

// What is not written again as it was read; a name might become empty. A pair has to be looked at.
constexpr bool IsDoubtful(char16_t unit) {
    return unit >= 0xd800 && (unit <= 0xdfff || unit == 0xfeff);
}

bool HasDoubtful(const MString& text) {
    for (std::int32_t i = 0; i < text.Length(); ++i) {
        if (IsDoubtful(text[i])) return true;
    }
    return false;
}

MString WithoutUnwritable(const MString& text) {
    MString kept;
    for (std::int32_t i = 0; i < text.Length(); ++i) {
        if (!IsDoubtful(text[i])) {
            kept.Append(text[i]);
        } else if (IsHighSurrogate(text[i]) && IsLowSurrogate(text[i + 1])) {
            if (RawByteAt(text, i) == 0) kept.Append(text[i]).Append(text[i + 1]);
            ++i;
        }
    }
    return kept;
}

}  // namespace

std::int32_t BoundedInput::Read(void* buffer, std::int32_t size) {
    if (ended) return 0;
    const std::int32_t count = source.Read(buffer, size);
    ended = count <= 0;
    if (count > remaining) RaiseInvalidFile("The document is too large.");
    remaining -= count;
    return count;
}

XmlLexer::XmlLexer(MByteStream& stream, const MEncoding::Codec& codec, std::int64_t maximumBytes)
    : input(stream, maximumBytes), reader(input, kBufferSize), codec(&codec) {
    codec.ReadHeader(input);
}

// Codecs tell the end by an error, which is only that where the stream has ended indeed.
bool XmlLexer::ReadLine() {
    position = 0;
    try {
        codec->ReadLine(reader, line);
    } catch (const MException&) {
        if (!input.IsEnd()) throw;
        line = MString();
        return false;
    }
    if (HasDoubtful(line)) line = WithoutUnwritable(line);
    line.Append(u' ');
    return true;
}

char16_t XmlLexer::PeekBehindWhite() {
    for (; Fill(); ++position) {
        if (!IsXmlWhite(line[position])) return line[position];
    }
    return 0;
}

bool XmlLexer::SkipIf(char16_t unit) {
    if (Peek() != unit) return false;
    Skip();
    return true;
}

// A token ends with its line at the latest, since a blank stands there.
MString XmlLexer::ReadToken() {
    PeekBehindWhite();
    const std::int32_t start = position;
    while (position < line.Length() && ClassOf(line[position]) == XmlCharacter::Ordinary)
        ++position;
    return line.SubString(start, position - start);
}

MString XmlLexer::ReadName() {
    PeekBehindWhite();
    const std::int32_t start = position;
    std::uint32_t hash = 0;
    for (; position < line.Length() && ClassOf(line[position]) == XmlCharacter::Ordinary;
         ++position)
        hash = hash * 31 + line[position];
    const std::int32_t length = position - start;
    MString& name = recentNames[hash % recentNames.size()];
    if (name.Length() != length || !StandsAt(start, name)) name = line.SubString(start, length);
    return name;
}

bool XmlLexer::StandsAt(std::int32_t start, const MString& text) const {
    std::int32_t same = 0;
    while (same < text.Length() && line[start + same] == text[same]) ++same;
    return same == text.Length();
}

bool XmlLexer::ReadUpTo(char16_t delimiter, MString& text) {
    text = MString();
    while (Fill()) {
        const std::int32_t start = position;
        position = Find(delimiter);
        Take(start, position, text);
        if (position == line.Length()) continue;
        Skip();
        return true;
    }
    return false;
}

bool XmlLexer::ReadUpToBracket(char16_t twice, MString& text) {
    text = MString();
    while (Fill()) {
        const std::int32_t start = position;
        for (position = Find(u'>'); position < line.Length(); position = Find(u'>')) {
            Skip();
            const std::int32_t end = position - 3;
            if (end < start || line[end] != twice || line[end + 1] != twice) continue;
            Take(start, end, text);
            return true;
        }
        Take(start, position, text);
    }
    return false;
}

void XmlLexer::Take(std::int32_t start, std::int32_t end, MString& text) const {
    MString part = line.SubString(start, end - start);
    if (text.IsEmpty()) {
        text = std::move(part);
    } else {
        text.Append(part);
    }
}

std::int32_t XmlLexer::Find(char16_t unit) const {
    std::int32_t found = position;
    while (found < line.Length() && line[found] != unit) ++found;
    return found;
}
