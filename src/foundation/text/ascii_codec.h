// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/encoding.h"

// One byte a unit: a byte is the unit of its value, a unit is the byte of its low 8 bits.
class MEncoding::ASCIICodec final : public MEncoding::Codec {
public:
    static const ASCIICodec& Get();

    MString GetName() const override;
    MString Decode(std::string_view bytes) const override;
    std::string Encode(const MString& text, bool terminate) const override;
    bool ReadLine(MTextReader& reader, MString& text) const override;
};
