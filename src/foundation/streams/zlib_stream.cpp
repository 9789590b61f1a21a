// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/zlib_stream.h"

#include <zlib.h>

#include "foundation/text/exception.h"

namespace {

constexpr std::int32_t kBufferSize = 4096;

}  // namespace

struct MZLibStream::State {
    State(MStream& source, bool compressing) : source(source), compressing(compressing) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (compressing) {
            deflateEnd(&zlib);
        } else {
            inflateEnd(&zlib);
        }
    }

    // Rounds of one output buffer until one is not filled.
    void Deflate(int flush) {
        do {
            zlib.next_out = output;
            zlib.avail_out = kBufferSize;
            deflate(&zlib, flush);
            const auto produced = kBufferSize - static_cast<std::int32_t>(zlib.avail_out);
            if (produced > 0) source.Write(output, produced);
        } while (zlib.avail_out == 0);
    }

    // False at the end of the source.
    bool Refill() {
        const std::int32_t count = source.Read(input, kBufferSize);
        zlib.next_in = input;
        zlib.avail_in = static_cast<uInt>(count);
        return count > 0;
    }

    void Inflate() {
        const bool more = zlib.avail_in > 0 || Refill();
        const int answer = inflate(&zlib, Z_SYNC_FLUSH);
        ended = answer == Z_STREAM_END;
        const bool goesOn = answer == Z_OK || (answer == Z_BUF_ERROR && more);
        if (!ended && !goesOn)
            throw MException("Source compressed stream has invalid content.", 256);
    }

    // Whether only what ends the data is left: zlib takes that up without room for output.
    bool ReachEnd() {
        while (!ended) {
            if (zlib.avail_in == 0 && !Refill()) return false;
            zlib.next_out = output;
            zlib.avail_out = 0;
            ended = inflate(&zlib, Z_SYNC_FLUSH) == Z_STREAM_END;
            if (!ended && zlib.avail_in > 0) return false;
        }
        return true;
    }

    MStream& source;
    const bool compressing;
    bool ended = false;  // decompressing: the end of the data is reached
    z_stream zlib = {};
    Bytef input[kBufferSize];
    Bytef output[kBufferSize];
};

MZLibStream::MZLibStream() = default;

MZLibStream::~MZLibStream() {
    try {
        Close();
    } catch (const MException&) {
    }
}

void MZLibStream::OpenForCompressing(MStream& source, int level) {
    Close();
    auto opened = std::make_unique<State>(source, true);
    if (deflateInit(&opened->zlib, level) != Z_OK)
        throw MException("Could not initialize deflating.", 257);
    state = std::move(opened);
    plainCount = 0;
}

void MZLibStream::OpenForDecompressing(MStream& source) {
    Close();
    auto opened = std::make_unique<State>(source, false);
    if (inflateInit(&opened->zlib) != Z_OK)
        throw MException("Could not initialize inflating.", 257);
    state = std::move(opened);
    plainCount = 0;
}

void MZLibStream::Close() {
    const std::unique_ptr<State> closed = std::move(state);
    if (closed == nullptr) return;
    if (closed->compressing) {
        closed->zlib.next_in = nullptr;
        closed->zlib.avail_in = 0;
        closed->Deflate(Z_FINISH);
    } else if (!closed->ReachEnd()) {
        throw MException("ZLIB stream has not been terminated.", 256);
    }
}

MStream& MZLibStream::GetSubStream() {
    return state != nullptr ? state->source : MStream::GetSubStream();
}

void MZLibStream::Write(const void* buffer, std::int32_t size) {
    if (!Is(true)) RaiseUnsupportedService("write to stream");
    if (size <= 0) return;
    state->zlib.next_in = static_cast<Bytef*>(const_cast<void*>(buffer));
    state->zlib.avail_in = static_cast<uInt>(size);
    state->Deflate(Z_NO_FLUSH);
    plainCount += size;
}

std::int32_t MZLibStream::Read(void* buffer, std::int32_t size) {
    if (!Is(false)) RaiseUnsupportedService("read from stream");
    if (size <= 0) return 0;
    z_stream& zlib = state->zlib;
    zlib.next_out = static_cast<Bytef*>(buffer);
    zlib.avail_out = static_cast<uInt>(size);
    while (zlib.avail_out > 0 && !state->ended) {
        const uInt room = zlib.avail_out;
        state->Inflate();
        plainCount += room - zlib.avail_out;
    }
    return size - static_cast<std::int32_t>(zlib.avail_out);
}

bool MZLibStream::IsEnd() { return Is(false) ? state->ReachEnd() : MStream::IsEnd(); }

bool MZLibStream::Is(bool compressing) const {
    return state != nullptr && state->compressing == compressing;
}
