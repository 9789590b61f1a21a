// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/encoding.h"

#include "foundation/text/ascii_codec.h"
#include "foundation/text/charset_names.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"
#include "foundation/text/utf16_codec.h"
#include "foundation/text/utf8_codec.h"

const MEncoding::Codec& MEncoding::GetCodec(const MString& name) {
    const auto is = [&name](const char* other) { return name.CompareNoCase(other) == 0; };
    if (name.IsEmpty() || is("ascii")) return ASCIICodec::Get();
    if (is("utf8") || is("utf-8")) return UTF8Codec::Get();
    if (is("utf16") || is("utf-16")) return UTF16Codec::Get();
    if (const Codec* const codec = FindTableCodec(name)) return *codec;
    throw MException(MStringFormatter("No codec found for encoding {0}.") << name);
}

void MEncoding::Codec::ReadHeader(MByteStream&) const {}

void MEncoding::Codec::WriteHeader(MByteStream&) const {}

void MEncoding::Codec::Write(MTextWriter& writer, const MString& text) const {
    writer.Put(Encode(text, false));
}

void MEncoding::Codec::WriteLine(MTextWriter& writer, const MString& text) const {
    Write(writer, MString(text).Append(u'\n'));
}
