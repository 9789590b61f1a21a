// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/text/byte_stream.h"
#include "foundation/text/mstring.h"
#include "foundation/text/text_buffers.h"

// Text from bytes and bytes from text, in the encodings that files and servers use.
//
//     const MEncoding::Codec& codec = MEncoding::GetCodec("windows-1250");
//     MString text = codec.Decode(bytes);
//
// Threads  any; codecs hold no state and live as long as the module
// Errors   MException "No codec found for encoding {0}."; "Invalid UTF8 header."; "No more data in
//          source stream." with code 256; what the stream raises

class MEncoding {
public:
    class Codec;
    class ASCIICodec;
    class UTF8Codec;
    class UTF16Codec;
    class TableCodec;

    // By a name or alias in any case: "", "ascii", "utf8", "utf-8", "utf16", "utf-16" and those of
    // the charset tables.
    static const Codec& GetCodec(const MString& name);
};

class MEncoding::Codec {
public:
    // The canonical name.
    virtual MString GetName() const = 0;
    // The text until a NUL or the end of the bytes, without a header.
    virtual MString Decode(std::string_view bytes) const = 0;
    // terminate appends a NUL.
    virtual std::string Encode(const MString& text, bool terminate) const = 0;

    // The byte-order mark of encodings that have one. Read takes it off the stream, and raises
    // "Invalid UTF8 header." where other bytes stand there.
    virtual void ReadHeader(MByteStream& stream) const;
    virtual void WriteHeader(MByteStream& stream) const;

    // The text up to a line feed, a NUL or the end; carriage returns are left out. Always true:
    // where the stream ends before the first character, raises "No more data in source stream.".
    virtual bool ReadLine(MTextReader& reader, MString& text) const = 0;
    virtual void Write(MTextWriter& writer, const MString& text) const;
    // With a line feed.
    virtual void WriteLine(MTextWriter& writer, const MString& text) const;

protected:
    ~Codec() = default;
};
