// SPDX-License-Identifier: GPL-3.0-or-later
// Every kind of decoder with arbitrary bytes, as a whole and line by line. A decoded text that is
// encoded again decodes to itself.
#include <cstdlib>
#include <iterator>
#include <string>

#include "foundation/text/encoding.h"
#include "foundation/text/exception.h"
#include "support/byte_string.h"

namespace {

constexpr const char* kNames[] = {"ascii", "utf8", "utf16", "windows-1252", "IBM874", "ISO-8859-6"};

// Lines are at most as long together as the whole text.
void ReadLines(const MEncoding::Codec& codec, const std::string& bytes, std::int32_t blockSize) {
    ByteString stream(bytes);
    MTextReader reader(stream, blockSize);
    std::size_t total = 0;
    try {
        for (MString line; codec.ReadLine(reader, line);)
            total += static_cast<std::size_t>(line.Length());
    } catch (const MException&) {
    }
    if (total > bytes.size()) std::abort();
}

void ReadHeader(const MEncoding::Codec& codec, const std::string& bytes) {
    ByteString stream(bytes);
    try {
        codec.ReadHeader(stream);
    } catch (const MException&) {
    }
}

// Surrogates may be lone or the private escape, U+FFFD may stand for a byte without a character.
bool IsEncodable(const MString& text) {
    for (std::int32_t i = 0; i < text.Length(); ++i) {
        if (text[i] == 0 || text[i] == 0xfffd || (text[i] & 0xf800) == 0xd800) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const MEncoding::Codec& codec = MEncoding::GetCodec(kNames[data[0] % std::size(kNames)]);
    const std::string bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    const MString text = codec.Decode(bytes);
    const std::string encoded = codec.Encode(text, true);
    if (IsEncodable(text) && codec.Decode(encoded) != text) std::abort();
    if (text.Length() > static_cast<std::int32_t>(bytes.size())) std::abort();
    ReadHeader(codec, bytes);
    ReadLines(codec, bytes, 1 + data[0] / 6);
    return 0;
}
