// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "foundation/streams/mstream.h"

// Compressed data in the zlib format (RFC 1950) in another stream.
//
//     MZLibStream packed;
//     packed.OpenForCompressing(file);
//     packed.Write(data, size);
//     packed.Close();   // writes what is left
//
// Reading takes blocks off the source: what stands behind the compressed data there is lost.
//
// Units    plain bytes
// Threads  those of the source
// Errors   those of the source; MException "Could not initialize deflating.", "Could not initialize
//          inflating." with code 257; "Source compressed stream has invalid content.", "ZLIB stream
//          has not been terminated." with code 256. Not open, or open the other way, it can
//          neither be read nor written

class MZLibStream : public MStream {
public:
    // 0 for no compression, 1 for the quickest to 9 for the smallest result.
    static constexpr int kDefaultLevel = -1;

    MZLibStream();
    MZLibStream(const MZLibStream&) = delete;
    MZLibStream& operator=(const MZLibStream&) = delete;
    // Closes; an error is lost.
    ~MZLibStream() override;

    // The source outlives the stream or its Close. What was open is closed first.
    void OpenForCompressing(MStream& source, int level = kDefaultLevel);
    void OpenForDecompressing(MStream& source);
    // Compressing, ends the data in the source. Decompressing, raises "ZLIB stream has not been
    // terminated." where the end of the data is not reached. Closed in each case; may be repeated.
    void Close();

    MStream& GetSubStream() override;
    void Write(const void* buffer, std::int32_t size) override;
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // How many plain bytes went through.
    std::int64_t GetPosition() override { return plainCount; }
    // Raises nothing for data that are broken or cut short: Read does.
    bool IsEnd() override;
    bool IsOpen() override { return state != nullptr; }

private:
    struct State;

    bool Is(bool compressing) const;

    std::unique_ptr<State> state;
    std::int64_t plainCount = 0;
};
