// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf16_codec.h"

#include "foundation/text/decoding_inl.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::uint8_t kHeader[2] = {0xff, 0xfe};

struct PairDecoder {
    bool Push(std::uint8_t byte, char32_t& unit) {
        isSecond = !isSecond;
        if (isSecond) {
            low = byte;
            return false;
        }
        unit = low | static_cast<char32_t>(byte) << 8;
        return true;
    }

    std::uint8_t low = 0;
    bool isSecond = false;  // the next byte is the second of its pair
};

void PutUnit(std::string& bytes, char16_t unit) {
    bytes += static_cast<char>(unit & 0xff);
    bytes += static_cast<char>(unit >> 8);
}

}  // namespace

const MEncoding::UTF16Codec& MEncoding::UTF16Codec::Get() {
    static constexpr UTF16Codec codec;
    return codec;
}

MString MEncoding::UTF16Codec::GetName() const { return "utf16"; }

MString MEncoding::UTF16Codec::Decode(std::string_view bytes) const {
    return DecodeBytes(bytes, PairDecoder());
}

std::string MEncoding::UTF16Codec::Encode(const MString& text, bool terminate) const {
    std::string bytes;
    bytes.reserve(2 * static_cast<std::size_t>(text.Length()) + 2);
    for (std::int32_t i = 0; i < text.Length(); ++i) PutUnit(bytes, text[i]);
    if (terminate) PutUnit(bytes, 0);
    return bytes;
}

// The message has been "UTF8" from the start; who looks for it expects it so.
void MEncoding::UTF16Codec::ReadHeader(MByteStream& stream) const {
    std::uint8_t header[2] = {};
    for (std::uint8_t& byte : header) {
        if (stream.Read(&byte, 1) != 1) RaiseEndOfStream();
    }
    if (header[0] != kHeader[0] || header[1] != kHeader[1])
        throw MException("Invalid UTF8 header.");
}

void MEncoding::UTF16Codec::WriteHeader(MByteStream& stream) const {
    stream.Write(kHeader, sizeof kHeader);
}

bool MEncoding::UTF16Codec::ReadLine(MTextReader& reader, MString& text) const {
    return DecodeLine(reader, text, PairDecoder());
}
