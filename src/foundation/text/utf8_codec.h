// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/encoding.h"

// One to four bytes a code point, without a header; for what is left out see Utf8Decoder,
// CodePointReader and AppendUtf8.
class MEncoding::UTF8Codec final : public MEncoding::Codec {
public:
    static const UTF8Codec& Get();

    MString GetName() const override;
    MString Decode(std::string_view bytes) const override;
    std::string Encode(const MString& text, bool terminate) const override;
    bool ReadLine(MTextReader& reader, MString& text) const override;
};
