// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/table_codec.h"

#include "foundation/text/decoding_inl.h"

namespace {

struct TableDecoder {
    bool Push(std::uint8_t byte, char32_t& codePoint) {
        codePoint = byte < 128 ? byte : charset.upper[byte - 128];
        return true;
    }

    const CharsetRecord& charset;
};

}  // namespace

MEncoding::TableCodec::TableCodec(const CharsetRecord& charset) : charset(charset) {
    std::uint8_t filled = 0;
    for (std::size_t bucket = 0; bucket < kBuckets; ++bucket) {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const char16_t unit = charset.upper[i];
            if (unit % kBuckets == bucket && unit != CharsetRecord::kUndefined)
                entries[filled++] = static_cast<std::uint8_t>(i);
        }
        bucketStarts[bucket + 1] = filled;
    }
}

MString MEncoding::TableCodec::GetName() const { return charset.names[0]; }

MString MEncoding::TableCodec::Decode(std::string_view bytes) const {
    return DecodeBytes(bytes, TableDecoder{charset});
}

std::string MEncoding::TableCodec::Encode(const MString& text, bool terminate) const {
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(text.Length()) + 1);
    for (std::int32_t i = 0; i < text.Length(); ++i) bytes += ByteOf(text[i]);
    if (terminate) bytes += '\0';
    return bytes;
}

char MEncoding::TableCodec::ByteOf(char16_t unit) const {
    if (unit < 128) return static_cast<char>(unit);
    const std::size_t bucket = unit % kBuckets;
    for (std::size_t i = bucketStarts[bucket]; i < bucketStarts[bucket + 1]; ++i) {
        if (charset.upper[entries[i]] == unit) return static_cast<char>(128 + entries[i]);
    }
    return '?';
}

bool MEncoding::TableCodec::ReadLine(MTextReader& reader, MString& text) const {
    return DecodeLine(reader, text, TableDecoder{charset});
}
