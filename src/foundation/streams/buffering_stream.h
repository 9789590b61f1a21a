// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/streams/mstream.h"

// Turns blocks of plain bytes into the blocks that are stored, and back.
//
// Units    bytes
// Threads  one
// Errors   MException "Invalid file contents." with code 256 for a stored block that has no meaning

class BlockModificationProcessor {
public:
    virtual ~BlockModificationProcessor() = default;
    // 1 or more, and the same as long as the processor lives.
    virtual std::int32_t GetPlainSize() const = 0;
    virtual std::int32_t GetStoredSize() const = 0;
    // The next block is the first one of its data.
    virtual void Restart() = 0;
    // size plain bytes, the plain size except in the last block of the data, to one stored block.
    virtual void Encode(const std::uint8_t* plain, std::int32_t size, std::uint8_t* stored) = 0;
    // One stored block to at most the plain size of bytes. How many there are.
    virtual std::int32_t Decode(const std::uint8_t* stored, std::uint8_t* plain) = 0;
};

// A filter that works in blocks: what is written goes to the source one stored block after the
// other, and is read back from there in the same way. It is used one way at a time.
//
// Units    plain bytes
// Threads  those of the source
// Errors   those of the source and the processor; MException "Buffering stream has not been
//          initialized." with code 258; "No more data in source stream." with code 256 where a
//          stored block is cut short

class MBufferingStream : public MStream {
public:
    MBufferingStream(const MBufferingStream&) = delete;
    MBufferingStream& operator=(const MBufferingStream&) = delete;
    // Closes; an error is lost.
    ~MBufferingStream() override;

    // Writes the last block, which need not be full. What follows is data of its own. May be
    // repeated.
    void Close();

    MStream& GetSubStream() override { return source; }
    void Write(const void* buffer, std::int32_t size) override;
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // How many plain bytes went through.
    std::int64_t GetPosition() override { return plainCount; }
    // Reads ahead by a block.
    bool IsEnd() override;

protected:
    // The source outlives the stream or its Close.
    explicit MBufferingStream(MStream& source) : source(source) {}
    // Sets the block sizes; before it the stream is not initialised. Ends what was under way.
    void SetProcessor(std::unique_ptr<BlockModificationProcessor> processor);

private:
    void RequireProcessor() const;
    void Restart();
    void StoreBlock();
    bool LoadBlock();

    MStream& source;
    std::unique_ptr<BlockModificationProcessor> processor;
    std::vector<std::uint8_t> stored;   // one block on its way to or from the source
    std::vector<std::uint8_t> writing;  // one plain block, of which writeCount bytes are there
    std::vector<std::uint8_t> reading;  // one plain block, to be served from readPosition on
    std::int32_t writeCount = 0;
    std::int32_t readCount = 0;
    std::int32_t readPosition = 0;
    std::int64_t plainCount = 0;
};
