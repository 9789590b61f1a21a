// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "foundation/text/charset_tables.h"
#include "foundation/text/encoding.h"

// One byte a character: ASCII below 128, a table above. A byte without a character is read as
// U+FFFD, a character without a byte is written as "?".
class MEncoding::TableCodec final : public MEncoding::Codec {
public:
    // The record outlives the codec.
    explicit TableCodec(const CharsetRecord& charset);

    MString GetName() const override;
    MString Decode(std::string_view bytes) const override;
    std::string Encode(const MString& text, bool terminate) const override;
    bool ReadLine(MTextReader& reader, MString& text) const override;

private:
    static constexpr std::size_t kBuckets = 32;

    char ByteOf(char16_t unit) const;

    const CharsetRecord& charset;
    // The indices of the table, bucket by bucket; a unit's bucket is that of its low five bits.
    std::array<std::uint8_t, 128> entries{};
    std::array<std::uint8_t, kBuckets + 1> bucketStarts{};
};
