// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/blowfish_stream.h"

#include <nettle/blowfish.h>

#include <memory>
#include <vector>

#include "foundation/streams/cbc_block_modification.h"

namespace {

constexpr int kMinKeyBits = 8 * BLOWFISH_MIN_KEY_SIZE;
constexpr int kMaxKeyBits = 8 * BLOWFISH_MAX_KEY_SIZE;

class BlowfishBlocks : public BlockModificationProcessor {
public:
    explicit BlowfishBlocks(std::string_view key) {
        const bool fits =
            key.size() >= BLOWFISH_MIN_KEY_SIZE && key.size() <= BLOWFISH_MAX_KEY_SIZE;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(key.data());
        if (!fits || blowfish_set_key(&context, key.size(), bytes) == 0) RaiseInvalidKey();
    }

    std::int32_t GetPlainSize() const override { return BLOWFISH_BLOCK_SIZE; }
    std::int32_t GetStoredSize() const override { return BLOWFISH_BLOCK_SIZE; }
    void Restart() override {}
    void Encode(const std::uint8_t* plain, std::int32_t, std::uint8_t* stored) override {
        blowfish_encrypt(&context, BLOWFISH_BLOCK_SIZE, stored, plain);
    }
    std::int32_t Decode(const std::uint8_t* stored, std::uint8_t* plain) override {
        blowfish_decrypt(&context, BLOWFISH_BLOCK_SIZE, plain, stored);
        return BLOWFISH_BLOCK_SIZE;
    }

private:
    blowfish_ctx context;
};

}  // namespace

void MBlowfishStream::SetKeyLength(int bits) {
    const bool isLegal = bits >= kMinKeyBits && bits <= kMaxKeyBits && bits % 8 == 0;
    if (bits != 0 && !isLegal) RaiseInvalidKey();
    textKeySize = static_cast<std::size_t>(bits / 8);
}

void MBlowfishStream::SetKey(const MString& text) {
    std::string key = text.ToUtf8();
    if (textKeySize > 0) key.resize(textKeySize);
    SetKeyBytes(key);
}

void MBlowfishStream::SetKeyBytes(std::string_view key) {
    SetProcessor(std::make_unique<CBCBlockModification>(
        std::make_unique<BlowfishBlocks>(key),
        std::vector<std::uint8_t>(initial.begin(), initial.end())));
}
