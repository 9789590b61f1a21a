// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/utf8_codec.h"

#include "foundation/text/decoding_inl.h"
#include "foundation/text/utf8.h"

const MEncoding::UTF8Codec& MEncoding::UTF8Codec::Get() {
    static constexpr UTF8Codec codec;
    return codec;
}

MString MEncoding::UTF8Codec::GetName() const { return "utf8"; }

MString MEncoding::UTF8Codec::Decode(std::string_view bytes) const {
    return MString::FromUtf8(bytes);
}

std::string MEncoding::UTF8Codec::Encode(const MString& text, bool terminate) const {
    std::string bytes = text.ToUtf8();
    if (terminate) bytes += '\0';
    return bytes;
}

bool MEncoding::UTF8Codec::ReadLine(MTextReader& reader, MString& text) const {
    return DecodeLine(reader, text, Utf8Decoder());
}
