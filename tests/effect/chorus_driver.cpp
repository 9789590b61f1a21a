// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_driver.h"

#include <algorithm>

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
    Record(index).Set(value);
    Send(PluginCommand::kParameterChanged, index);
}

void ChorusDriver::Process(const float* const* inputs, float* const* outputs, int sampleCount,
                           const ReferenceTransport& transport) {
    TransportInfo info;
    info.tempo = transport.tempo;
    info.position = transport.position;
    PluginArguments arguments(&info, inputs, outputs, sampleCount);
    host->Command(PluginCommand::kProcess, arguments);
}

Audio ChorusDriver::Rendered(const Audio& input, int blockSize) {
    const int sampleCount = static_cast<int>(input[0].size());
    // Not zeros, so that a channel that is not written shows.
    Audio output = Constant(static_cast<int>(input.size()), sampleCount, 99);
    BlockCutter cutter(blockSize);
    for (int from = 0, count = 0; from < sampleCount; from += count) {
        count = cutter.Next(sampleCount - from);
        Process(ReadPointers(input, from).data(), WritePointers(output, from).data(), count);
    }
    return output;
}

ReferenceSettings Settings(int channels, int sampleRate, bool highQuality,
                           const std::vector<Change>& changes) {
    ReferenceSettings settings;
    settings.channels = channels;
    settings.sampleRate = sampleRate;
    settings.highQuality = highQuality;
    for (const auto& [index, value] : changes) settings[index] = value;
    return settings;
}

int BlockCutter::Next(int samplesLeft) {
    seed = seed * 1664525u + 1013904223u;
    return std::min(samplesLeft, size > 0 ? size : 1 + static_cast<int>((seed >> 16) % 700));
}
