// SPDX-License-Identifier: GPL-3.0-or-later
// Chunks of arbitrary bytes for the chorus. One that is refused leaves the state as it was; one
// that is taken gives a state that is stored and loaded without a difference, and finite audio.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>

#include "effect/chorus_entry.h"
#include "foundation/streams/memory_stream.h"
#include "foundation/text/exception.h"
#include "hosts/adapter/state_text.h"
#include "plugin/effect_adapter.h"

namespace {

constexpr int kBlockSize = 64;

using Plugin = MAudioEffectPluginToAudioPluginAdapter;

std::unique_ptr<Plugin> MakeChorus() {
    auto plugin = std::make_unique<Plugin>();
    plugin->Initialize("Chorus", "Chorus", ChorusEntry);
    plugin->AnnounceBlockSize(kBlockSize);
    plugin->InitProcessing();
    return plugin;
}

Plugin& TheChorus() {
    static const std::unique_ptr<Plugin> plugin = MakeChorus();
    return *plugin;
}

bool Loads(const void* data, std::size_t size) {
    MMemoryStream stream(data, static_cast<std::int32_t>(size));
    try {
        ReadState(TheChorus(), stream);
    } catch (const MException&) {
        return false;
    }
    return true;
}

std::string Stored() {
    MMemoryStream stream;
    WriteState(TheChorus(), stream);
    return {reinterpret_cast<const char*>(stream.GetData()),
            static_cast<std::size_t>(stream.GetSize())};
}

bool SoundsFinite() {
    std::array<float, 2 * kBlockSize> samples;
    for (int i = 0; i < 2 * kBlockSize; ++i)
        samples[static_cast<std::size_t>(i)] = i % 7 / 7.0f - 0.4f;
    ChannelPointers inputs{samples.data(), samples.data() + kBlockSize};
    ChannelPointers outputs = inputs;
    TheChorus().ProcessAudio(inputs.data(), outputs.data(), kBlockSize, true);
    return std::ranges::all_of(samples, [](float sample) { return std::isfinite(sample); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string before = Stored();
    if (!Loads(data, size)) {
        if (Stored() != before) std::abort();
        return 0;
    }
    const std::string taken = Stored();
    if (!Loads(taken.data(), taken.size()) || Stored() != taken) std::abort();
    if (!SoundsFinite()) std::abort();
    return 0;
}
