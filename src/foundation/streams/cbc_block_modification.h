// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include "foundation/streams/buffering_stream.h"

// Cipher block chaining: each plain block is combined with the stored block before it, so that
// equal blocks do not look equal.
//
// Ranges   a cipher whose plain and stored blocks have the same size. A last block that is not full
//          is filled up with zero bytes, which come back when it is read
// Threads  one
// Method   stored = cipher(plain XOR previous stored); the initial block stands before the first

class CBCBlockModification : public BlockModificationProcessor {
public:
    // initial has the block size.
    CBCBlockModification(std::unique_ptr<BlockModificationProcessor> cipher,
                         std::vector<std::uint8_t> initial);

    std::int32_t GetPlainSize() const override { return cipher->GetPlainSize(); }
    std::int32_t GetStoredSize() const override { return cipher->GetStoredSize(); }
    void Restart() override;
    void Encode(const std::uint8_t* plain, std::int32_t size, std::uint8_t* stored) override;
    std::int32_t Decode(const std::uint8_t* stored, std::uint8_t* plain) override;

private:
    std::unique_ptr<BlockModificationProcessor> cipher;
    const std::vector<std::uint8_t> initial;
    std::vector<std::uint8_t> previous;
    std::vector<std::uint8_t> block;
};
