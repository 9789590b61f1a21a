// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

#include "foundation/streams/mstream.h"
#include "foundation/text/encoding.h"

// The characters of an XML document, read line by line. The end of a line counts as one blank.
//
// Units    code units; bytes for the bound
// Threads  one
// Memory   holds one line of the document and 64 names
// Errors   RaiseInvalidFile with "The document is too large."; what the stream raises

// Serves no more than so many bytes, and asks nothing of a stream that has ended.
class BoundedInput final : public MStream {
public:
    BoundedInput(MByteStream& source, std::int64_t maximumBytes)
        : source(source), remaining(maximumBytes) {}

    std::int32_t Read(void* buffer, std::int32_t size) override;
    bool IsEnd() override { return ended; }

private:
    MByteStream& source;
    std::int64_t remaining;
    bool ended = false;
};

class XmlLexer {
public:
    // Takes the header of the encoding off the stream.
    XmlLexer(MByteStream& stream, const MEncoding::Codec& codec, std::int64_t maximumBytes);

    // From the next line on.
    void SetCodec(const MEncoding::Codec& newCodec) { codec = &newCodec; }

    // The next unit, which stays; 0 at the end.
    char16_t Peek() { return Fill() ? line[position] : char16_t{0}; }
    // Skips white space; the unit behind it, which stays; 0 at the end.
    char16_t PeekBehindWhite();
    // Skips the unit that was peeked at.
    void Skip() { ++position; }
    // Skips the next unit if it is this one. Whether it was.
    bool SkipIf(char16_t unit);

    // Skips white space and takes the units in front of the next white space or special.
    MString ReadToken();
    // The same where the text is likely to have occurred before: it is shared then.
    MString ReadName();
    // Takes the units up to the next such unit, which is skipped. False where the document ends
    // before it; text has what was left then.
    bool ReadUpTo(char16_t delimiter, MString& text);
    // The same for two such units and a '>'.
    bool ReadUpToBracket(char16_t twice, MString& text);

private:
    // Makes position stand inside the line; false at the end of the document.
    bool Fill() { return position < line.Length() || ReadLine(); }
    bool ReadLine();
    bool StandsAt(std::int32_t start, const MString& text) const;
    // Appends the units from start up to end.
    void Take(std::int32_t start, std::int32_t end, MString& text) const;
    // The next position of the unit in the line, its length where there is none.
    std::int32_t Find(char16_t unit) const;

    BoundedInput input;
    MTextReader reader;
    const MEncoding::Codec* codec;
    MString line;  // with the blank behind it
    std::int32_t position = 0;
    std::array<MString, 64> recentNames;  // by hash
};
