// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "effect/chorus_entry.h"
#include "foundation/objects/lock.h"
#include "plugin/contract/plugin_host.h"
#include "support/reference_chorus.h"
#include "support/signals.h"

// The chorus as a frame drives it: created by its entry function, a lock and a quality flag lent
// to it, then commands only. A Process or a Set that takes or frees memory fails the test.
//
// Threads  as the effect's commands
class ChorusDriver {
public:
    // Created, prepared with its settings and ready to process.
    explicit ChorusDriver(const ReferenceSettings& settings, PluginEntry entry = ChorusEntry);

    // Rate, channels and quality of the settings; the parameters stay.
    void Prepare(const ReferenceSettings& settings);
    void Set(int index, double value);
    // With one argument or none.
    std::intptr_t Send(int code, auto... value) {
        PluginArguments arguments(value...);
        return host->Command(code, arguments);
    }
    void Process(const float* const* inputs, float* const* outputs, int sampleCount,
                 const TransportInfo& transport = {});
    // The whole input in blocks of one size, 0 for random ones.
    Audio Rendered(const Audio& input, int blockSize = 256);

    ParameterRecord& Record(int index) { return host->descriptor->parameters[index]; }

    MLock lock;
    std::atomic<std::uint8_t> highQuality = 0;
    std::unique_ptr<MAudioEffectPluginHost> host;
};

// The sizes of the blocks that a length is cut into: one size, or for size 0 of 1 to 700 samples.
std::vector<int> BlocksOf(int sampleCount, int size);
