// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/hash_stream.h"

#include <nettle/md5.h>
#include <nettle/ripemd160.h>

#include <string>

#include "foundation/streams/hexa_digits.h"
#include "foundation/text/exception.h"

void MHashStream::Write(const void* buffer, std::int32_t size) {
    if (size <= 0) return;
    if (source != nullptr) source->Write(buffer, size);
    Update(static_cast<const std::uint8_t*>(buffer), size);
    count += size;
}

std::int32_t MHashStream::Read(void* buffer, std::int32_t size) {
    const std::int32_t read = Source().Read(buffer, size);
    Update(static_cast<const std::uint8_t*>(buffer), read);
    count += read;
    return read;
}

MString MHashStream::GetHashText() const {
    std::string digits;
    for (const std::uint8_t byte : GetHash()) AppendHexaDigits(digits, byte);
    return MString::FromUtf8(digits);
}

MStream& MHashStream::Source() const {
    if (source == nullptr)
        throw MException("Cryptographic hash stream has not been initialized.", 258);
    return *source;
}

struct MMD5Stream::State {
    md5_ctx context;
};

MMD5Stream::MMD5Stream(MStream* source) : MHashStream(source), state(std::make_unique<State>()) {
    md5_init(&state->context);
}

MMD5Stream::~MMD5Stream() = default;

void MMD5Stream::Update(const std::uint8_t* bytes, std::int32_t size) {
    md5_update(&state->context, static_cast<std::size_t>(size), bytes);
}

// The digest ends a context: that of a copy, so that the stream goes on.
std::vector<std::uint8_t> MMD5Stream::GetHash() const {
    md5_ctx copy = state->context;
    std::vector<std::uint8_t> hash(MD5_DIGEST_SIZE);
    md5_digest(&copy, hash.size(), hash.data());
    return hash;
}

struct MRIPEMDStream::State {
    ripemd160_ctx context;
};

MRIPEMDStream::MRIPEMDStream(MStream* source)
    : MHashStream(source), state(std::make_unique<State>()) {
    ripemd160_init(&state->context);
}

MRIPEMDStream::~MRIPEMDStream() = default;

void MRIPEMDStream::Update(const std::uint8_t* bytes, std::int32_t size) {
    ripemd160_update(&state->context, static_cast<std::size_t>(size), bytes);
}

std::vector<std::uint8_t> MRIPEMDStream::GetHash() const {
    ripemd160_ctx copy = state->context;
    std::vector<std::uint8_t> hash(RIPEMD160_DIGEST_SIZE);
    ripemd160_digest(&copy, hash.size(), hash.data());
    return hash;
}
