// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/streams/mstream.h"

// Computes a hash of the bytes that pass through it to or from another stream, or of those that are
// written to it where it has no source.
//
//     MMD5Stream md5;
//     md5.WriteString(text);
//     MString hash = md5.GetHashText();
//
// Units    bytes
// Threads  those of the source
// Errors   those of the source; MException "Cryptographic hash stream has not been initialized."
//          with code 258 where a source is needed and there is none

class MHashStream : public MStream {
public:
    MHashStream(const MHashStream&) = delete;
    MHashStream& operator=(const MHashStream&) = delete;

    MStream& GetSubStream() override { return Source(); }
    void Write(const void* buffer, std::int32_t size) override;
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // How many bytes passed.
    std::int64_t GetPosition() override { return count; }
    void Flush() override { Source().Flush(); }
    bool IsEnd() override { return Source().IsEnd(); }

    // Of the bytes so far; more may follow.
    virtual std::vector<std::uint8_t> GetHash() const = 0;
    // In hexadecimal digits.
    MString GetHashText() const;

protected:
    // A source outlives the stream.
    explicit MHashStream(MStream* source) : source(source) {}
    virtual void Update(const std::uint8_t* bytes, std::int32_t size) = 0;

private:
    MStream& Source() const;

    MStream* source;  // may be null
    std::int64_t count = 0;
};

// RFC 1321; 16 bytes.
class MMD5Stream : public MHashStream {
public:
    explicit MMD5Stream(MStream* source = nullptr);
    ~MMD5Stream() override;
    std::vector<std::uint8_t> GetHash() const override;

private:
    struct State;
    void Update(const std::uint8_t* bytes, std::int32_t size) override;

    std::unique_ptr<State> state;
};

// RIPEMD-160 (H. Dobbertin, A. Bosselaers, B. Preneel, 1996); 20 bytes.
class MRIPEMDStream : public MHashStream {
public:
    explicit MRIPEMDStream(MStream* source = nullptr);
    ~MRIPEMDStream() override;
    std::vector<std::uint8_t> GetHash() const override;

private:
    struct State;
    void Update(const std::uint8_t* bytes, std::int32_t size) override;

    std::unique_ptr<State> state;
};
