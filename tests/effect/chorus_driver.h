// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "effect/chorus_entry.h"
#include "foundation/objects/lock.h"
#include "plugin/contract/plugin_host.h"
#include "support/allocation_trap.h"
#include "support/reference_chorus.h"
#include "support/signals.h"

// Settings with changes (parameter index, value) from the defaults.
using Change = std::pair<int, double>;
inline ReferenceSettings Settings(int channels, int sampleRate, bool highQuality,
                                  const std::vector<Change>& changes = {}) {
    ReferenceSettings settings{channels, sampleRate, highQuality};
    for (const auto& [index, value] : changes) settings[index] = value;
    return settings;
}

// The sizes of the blocks that a length is cut into: one size, or for size 0 of 1 to 700 samples.
inline std::vector<int> BlocksOf(int sampleCount, int size) {
    std::minstd_rand generator;
    std::vector<int> blocks;
    for (; sampleCount > 0; sampleCount -= blocks.back())
        blocks.push_back(std::min(sampleCount, size > 0 ? size : int(1 + generator() % 700)));
    return blocks;
}

// The chorus as a frame drives it: created by its entry function, a lock and a quality flag lent
// to it, then commands only. A Process or a Set that takes or frees memory fails the test.
//
// Threads  as the effect's commands
class ChorusDriver {
public:
    // Created, prepared with its settings and ready to process.
    explicit ChorusDriver(const ReferenceSettings& settings, PluginEntry entry = ChorusEntry)
        : host(MPluginSystem::CreateOrRaise("chorus", entry)) {
        host->descriptor->lock = &lock;
        host->Effect()->hqFlag = &highQuality;
        for (int p = 0; p < ReferenceSettings::kCount; ++p) Record(p).Set(settings[p]);
        Prepare(settings);
    }

    // With one argument or more, or none.
    std::intptr_t Send(int code, auto... values) {
        PluginArguments arguments(values...);
        return host->Command(code, arguments);
    }

    // Rate, channels and quality of the settings; the parameters stay.
    void Prepare(const ReferenceSettings& settings) {
        highQuality = settings.highQuality ? 1 : 0;
        Send(PluginCommand::kPrepare, settings.channels, settings.sampleRate);
    }

    void Set(int index, double value) {
        const AllocationTrap trap("Update");
        Record(index).SetEffective(value);
        Send(PluginCommand::kParameterChanged, index);
    }

    void Process(const float* const* inputs, float* const* outputs, int sampleCount,
                 const TransportInfo& transport = {}) {
        const AllocationTrap trap("Process");
        Send(PluginCommand::kProcess, &transport, inputs, outputs, sampleCount);
    }

    // The whole input in blocks of one size, 0 for random ones.
    Audio Rendered(const Audio& input, int blockSize = 256) {
        const int sampleCount = static_cast<int>(input[0].size());
        // Not zeros, so that a channel that is not written shows.
        Audio output = Constant(static_cast<int>(input.size()), sampleCount, 99);
        int from = 0;
        for (const int count : BlocksOf(sampleCount, blockSize)) {
            Process(ReadPointers(input, from).data(), WritePointers(output, from).data(), count);
            from += count;
        }
        return output;
    }

    ParameterRecord& Record(int index) { return host->descriptor->parameters[index]; }

    MLock lock;
    std::atomic<std::uint8_t> highQuality = 0;
    std::unique_ptr<MAudioEffectPluginHost> host;
};
