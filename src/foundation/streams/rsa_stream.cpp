// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/rsa_stream.h"

#include <nettle/rsa.h>

#include <algorithm>
#include <memory>
#include <random>

#include "foundation/text/exception.h"

namespace {

constexpr std::size_t kPaddingSize = 11;       // at least, of PKCS #1
constexpr std::size_t kLargestModulus = 2048;  // bytes

// For padding and blinding.
void FillRandomly(void*, std::size_t length, std::uint8_t* target) {
    std::random_device device;
    std::generate_n(target, length, [&] { return static_cast<std::uint8_t>(device()); });
}

struct Number {
    Number() { mpz_init(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;
    ~Number() { mpz_clear(value); }

    mpz_t value;
};

void ReadNumber(mpz_t number, const std::string& digits) {
    constexpr int kHexadecimal = 16;
    if (mpz_set_str(number, digits.c_str(), kHexadecimal) != 0 || mpz_cmp_ui(number, 2) < 0)
        RaiseInvalidKey();
}

// inverse * number is 1 modulo factor.
void Invert(mpz_t inverse, const mpz_t number, const mpz_t factor) {
    if (mpz_invert(inverse, number, factor) == 0) RaiseInvalidKey();
}

class RSABlocks : public BlockModificationProcessor {
public:
    RSABlocks() {
        rsa_public_key_init(&publicKey);
        rsa_private_key_init(&privateKey);
    }
    RSABlocks(const RSABlocks&) = delete;
    RSABlocks& operator=(const RSABlocks&) = delete;
    ~RSABlocks() override {
        rsa_private_key_clear(&privateKey);
        rsa_public_key_clear(&publicKey);
    }

    void SetPublic(const std::string& modulus, const std::string& exponent) {
        ReadNumber(publicKey.n, modulus);
        ReadNumber(publicKey.e, exponent);
        PreparePublic();
    }
    void SetPrivate(const std::string& p, const std::string& q, const std::string& exponent) {
        ReadNumber(privateKey.p, p);
        ReadNumber(privateKey.q, q);
        ReadNumber(publicKey.e, exponent);
        // The decryption below overruns its memory where q is the much longer one.
        if (mpz_cmp(privateKey.p, privateKey.q) < 0) mpz_swap(privateKey.p, privateKey.q);
        mpz_mul(publicKey.n, privateKey.p, privateKey.q);
        PreparePublic();
        PreparePrivate();
    }

    std::int32_t GetPlainSize() const override {
        return static_cast<std::int32_t>(publicKey.size - kPaddingSize);
    }
    std::int32_t GetStoredSize() const override {
        return static_cast<std::int32_t>(publicKey.size);
    }
    void Restart() override {}
    void Encode(const std::uint8_t* plain, std::int32_t size, std::uint8_t* stored) override;
    std::int32_t Decode(const std::uint8_t* stored, std::uint8_t* plain) override;

private:
    void PreparePublic() {
        const bool isOdd = mpz_odd_p(publicKey.n) && mpz_odd_p(publicKey.e);
        if (!isOdd || rsa_public_key_prepare(&publicKey) == 0 || publicKey.size > kLargestModulus)
            RaiseInvalidKey();
    }
    void PreparePrivate();

    rsa_public_key publicKey;
    rsa_private_key privateKey;
    bool isPrivate = false;
};

void RSABlocks::PreparePrivate() {
    Number below;  // a factor less 1
    mpz_sub_ui(below.value, privateKey.p, 1);
    Invert(privateKey.a, publicKey.e, below.value);
    mpz_sub_ui(below.value, privateKey.q, 1);
    Invert(privateKey.b, publicKey.e, below.value);
    Invert(privateKey.c, privateKey.q, privateKey.p);
    if (rsa_private_key_prepare(&privateKey) == 0) RaiseInvalidKey();
    isPrivate = true;
}

void RSABlocks::Encode(const std::uint8_t* plain, std::int32_t size, std::uint8_t* stored) {
    Number number;
    if (rsa_encrypt(&publicKey, nullptr, FillRandomly, static_cast<std::size_t>(size), plain,
                    number.value) == 0)
        RaiseInvalidKey();
    nettle_mpz_get_str_256(publicKey.size, stored, number.value);
}

std::int32_t RSABlocks::Decode(const std::uint8_t* stored, std::uint8_t* plain) {
    if (!isPrivate) RaiseUnsupportedService("read from stream");
    Number number;
    nettle_mpz_set_str_256_u(number.value, publicKey.size, stored);
    std::size_t size = publicKey.size - kPaddingSize;
    const bool isValid = mpz_cmp(number.value, publicKey.n) < 0 &&
                         rsa_decrypt_tr(&publicKey, &privateKey, nullptr, FillRandomly, &size,
                                        plain, number.value) != 0;
    if (!isValid) throw MException("Invalid file contents.", 256);
    return static_cast<std::int32_t>(size);
}

}  // namespace

void MRSAStream::SetPublicKey(const std::string& modulus, const std::string& exponent) {
    auto blocks = std::make_unique<RSABlocks>();
    blocks->SetPublic(modulus, exponent);
    SetProcessor(std::move(blocks));
}

void MRSAStream::SetPrivateKey(const std::string& p, const std::string& q,
                               const std::string& exponent) {
    auto blocks = std::make_unique<RSABlocks>();
    blocks->SetPrivate(p, q, exponent);
    SetProcessor(std::move(blocks));
}
