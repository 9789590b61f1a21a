// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <utility>

#include "effect/chorus_entry.h"
#include "foundation/objects/lock.h"
#include "plugin/contract/plugin_host.h"
#include "support/reference_chorus.h"
#include "support/signals.h"

// The chorus as a frame drives it: created by its entry function, a lock and a quality flag lent
// to it, then commands only.
//
// Threads  as the effect's commands
using Change = std::pair<int, double>;  // parameter index, value

class ChorusDriver {
public:
    // Created, prepared with its settings and ready to process.
    explicit ChorusDriver(const ReferenceSettings& settings, PluginEntry entry = ChorusEntry);

    void Prepare(const ReferenceSettings& settings);
    void Set(int index, double value);
    std::intptr_t Send(int code) { return host->Command(code); }
    // An argument list of one number or index.
    std::intptr_t Send(int code, auto value) {
        PluginArguments arguments(value);
        return host->Command(code, arguments);
    }
    void Process(const float* const* inputs, float* const* outputs, int sampleCount,
                 const ReferenceTransport& transport = {});
    // The whole input in blocks of one size, 0 for random ones; the same array may be both.
    void ProcessAll(const Audio& input, Audio& output, int blockSize);
    Audio Rendered(const Audio& input, int blockSize = 256);

    ParameterRecord& Record(int index) { return host->descriptor->parameters[index]; }

    MLock lock;
    std::atomic<std::uint8_t> highQuality = 0;
    std::unique_ptr<MAudioEffectPluginHost> host;
};

// Settings with changes from the defaults.
ReferenceSettings With(ReferenceSettings settings, std::initializer_list<Change> changes);
ReferenceSettings Settings(int channels, int sampleRate, bool highQuality,
                           std::initializer_list<Change> changes = {});

// Cuts a length into blocks: all of one size, or for size 0 of 1 to 700 samples.
class BlockCutter {
public:
    explicit BlockCutter(int size) : size(size) {}
    int Next(int samplesLeft);

private:
    int size;
    std::uint32_t seed = 12345;
};
