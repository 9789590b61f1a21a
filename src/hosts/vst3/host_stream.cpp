// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/host_stream.h"

#include <algorithm>
#include <array>

#include "foundation/streams/memory_stream.h"
#include "pluginterfaces/base/ibstream.h"

using namespace Steinberg;

MMemoryStream ReadAll(IBStream& stream, std::int32_t limit) {
    MMemoryStream all;
    std::array<char, 16384> chunk;
    while (all.GetSize() <= limit) {
        const std::int64_t wanted =
            std::min<std::int64_t>(limit + std::int64_t{1} - all.GetSize(), chunk.size());
        int32 got = 0;
        const tresult result = stream.read(chunk.data(), static_cast<int32>(wanted), &got);
        got = std::min(got, static_cast<int32>(wanted));
        if (got > 0) all.Write(chunk.data(), got);
        if (result != kResultOk || got <= 0) break;
    }
    all.Seek(0, 0);
    return all;
}

bool WriteAll(IBStream& stream, const MMemoryStream& source, std::int32_t size) {
    // The interface takes a plain pointer and reads from it only.
    auto* bytes = const_cast<std::uint8_t*>(source.GetData());
    for (std::int32_t done = 0; done < size;) {
        int32 taken = 0;
        const tresult result = stream.write(bytes + done, size - done, &taken);
        if (result != kResultOk || taken <= 0 || taken > size - done) return false;
        done += taken;
    }
    return true;
}
