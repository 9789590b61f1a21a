// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "foundation/streams/crypto_stream.h"

// Blowfish in cipher block chaining, blocks of 8 bytes.
//
// Units    key lengths in bits, keys in bytes
// Ranges   keys of 8 .. 56 bytes. Weak keys, for which the cipher has equal table entries, are
//          refused as invalid
// Threads  those of the source
// Errors   those of MCryptoStream
// Method   B. Schneier, "Description of a New Variable-Length Key, 64-Bit Block Cipher", 1993

class MBlowfishStream : public MCryptoStream {
public:
    static constexpr int kBlockSize = 8;
    using Block = std::array<std::uint8_t, kBlockSize>;

    explicit MBlowfishStream(MStream& source) : MCryptoStream(source) {}

    // What stands before the first block; zero bytes unless told. For the next key.
    void SetInitialBlock(const Block& block) { initial = block; }
    // Text keys set later have exactly so many bits, a multiple of 8: what is longer is cut, what
    // is shorter is filled up with zero bytes. 0 takes them as long as they are.
    void SetKeyLength(int bits) override;
    // As UTF-8.
    void SetKey(const MString& text) override;
    void SetKeyBytes(std::string_view key);

private:
    Block initial = {};
    std::size_t textKeySize = 0;  // 0: as long as it is
};
