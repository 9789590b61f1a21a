// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_driver.h"

#include <algorithm>
#include <random>

#include "support/allocation_trap.h"

ChorusDriver::ChorusDriver(const ReferenceSettings& settings, PluginEntry entry)
    : host(MPluginSystem::CreateOrRaise("chorus", entry)) {
    host->descriptor->lock = &lock;
    host->Effect()->hqFlag = &highQuality;
    for (int p = 0; p < ReferenceSettings::kCount; ++p) Record(p).Set(settings[p]);
    Prepare(settings);
}

void ChorusDriver::Prepare(const ReferenceSettings& settings) {
    highQuality = settings.highQuality ? 1 : 0;
    PluginArguments arguments(settings.channels, settings.sampleRate);
    host->Command(PluginCommand::kPrepare, arguments);
}

void ChorusDriver::Set(int index, double value) {
    const AllocationTrap trap("Update");
    Record(index).SetEffective(value);
    Send(PluginCommand::kParameterChanged, index);
}

void ChorusDriver::Process(const float* const* inputs, float* const* outputs, int sampleCount,
                           const TransportInfo& transport) {
    const AllocationTrap trap("Process");
    PluginArguments arguments(&transport, inputs, outputs, sampleCount);
    host->Command(PluginCommand::kProcess, arguments);
}

Audio ChorusDriver::Rendered(const Audio& input, int blockSize) {
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

std::vector<int> BlocksOf(int sampleCount, int size) {
    std::minstd_rand generator;
    std::vector<int> blocks;
    for (; sampleCount > 0; sampleCount -= blocks.back())
        blocks.push_back(std::min(sampleCount, size > 0 ? size : int(1 + generator() % 700)));
    return blocks;
}
