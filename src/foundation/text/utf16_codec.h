// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/encoding.h"

// Two bytes a unit, the low one first; surrogates are units like others. The header is FF FE.
class MEncoding::UTF16Codec final : public MEncoding::Codec {
public:
    static const UTF16Codec& Get();

    MString GetName() const override;
    MString Decode(std::string_view bytes) const override;
    std::string Encode(const MString& text, bool terminate) const override;
    void ReadHeader(MByteStream& stream) const override;
    void WriteHeader(MByteStream& stream) const override;
    bool ReadLine(MTextReader& reader, MString& text) const override;
};
