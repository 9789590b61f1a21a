// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/ascii_codec.h"

#include "foundation/text/decoding_inl.h"

namespace {

struct ByteDecoder {
    bool Push(std::uint8_t byte, char32_t& codePoint) {
        codePoint = byte;
        return true;
    }
};

}  // namespace

const MEncoding::ASCIICodec& MEncoding::ASCIICodec::Get() {
    static constexpr ASCIICodec codec;
    return codec;
}

MString MEncoding::ASCIICodec::GetName() const { return "ascii"; }

MString MEncoding::ASCIICodec::Decode(std::string_view bytes) const {
    return DecodeBytes(bytes, ByteDecoder());
}

std::string MEncoding::ASCIICodec::Encode(const MString& text, bool terminate) const {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(text.Length()) + 1);
    for (std::int32_t i = 0; i < text.Length(); ++i) bytes += static_cast<char>(text[i] & 0xff);
    if (terminate) bytes += '\0';
    return bytes;
}

bool MEncoding::ASCIICodec::ReadLine(MTextReader& reader, MString& text) const {
    return DecodeLine(reader, text, ByteDecoder());
}
