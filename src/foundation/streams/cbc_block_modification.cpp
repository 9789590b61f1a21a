// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/cbc_block_modification.h"

#include <algorithm>
#include <functional>
#include <utility>

CBCBlockModification::CBCBlockModification(std::unique_ptr<BlockModificationProcessor> cipher,
                                           std::vector<std::uint8_t> initial)
    : cipher(std::move(cipher)),
      initial(std::move(initial)),
      previous(this->initial),
      block(this->initial) {}

void CBCBlockModification::Restart() {
    cipher->Restart();
    previous = initial;
}

void CBCBlockModification::Encode(const std::uint8_t* plain, std::int32_t size,
                                  std::uint8_t* stored) {
    block = previous;
    std::transform(plain, plain + size, previous.begin(), block.begin(), std::bit_xor<>());
    cipher->Encode(block.data(), GetPlainSize(), stored);
    std::copy_n(stored, GetStoredSize(), previous.begin());
}

std::int32_t CBCBlockModification::Decode(const std::uint8_t* stored, std::uint8_t* plain) {
    const std::int32_t size = cipher->Decode(stored, plain);
    std::transform(plain, plain + size, previous.begin(), plain, std::bit_xor<>());
    std::copy_n(stored, GetStoredSize(), previous.begin());
    return size;
}
