// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/audio_plugin.h"

#include <cmath>

#include "foundation/objects/guarded.h"
#include "plugin/frame/automation_update_thread.h"
#include "plugin/frame/editor_factory.h"
#include "plugin/frame/processing_pause.h"

namespace {

// Fills a delay with as much silence as it is to hold back.
void Refill(MArrayQueue<float>& queue, int latency, int blockSize) {
    queue.Reserve(latency + blockSize);
    queue.Clear();
    queue.PushCopies(0, latency);
}

}  // namespace

MAudioPlugin::MAudioPlugin() = default;

MAudioPlugin::~MAudioPlugin() = default;

void MAudioPlugin::SetHostSampleRate(int rate) {
    MLocker lock(processLock);
    hostSampleRate = rate;
    sampleRate = upsampling * rate;
}

void MAudioPlugin::SetConnectedChannels(int inputs, int outputs) {
    const ProcessingPause pause(processingDisabled);
    {
        MLocker lock(processLock);
        connectedInputs = inputs;
        connectedOutputs = outputs;
        const int larger = std::max(inputs, outputs);
        if (larger == connectedChannels) return;
        connectedChannels = larger;
    }
    InitProcessing();
}

void MAudioPlugin::SetUpsampling(int factor) {
    const ProcessingPause pause(processingDisabled);
    {
        MLocker lock(processLock);
        if (factor == upsampling) return;
        UpsamplerAt(0).CheckFactor(factor);
        upsampling = factor;
    }
    InitProcessing();
}

void MAudioPlugin::InitProcessing() {
    Guarded("MAudioPlugin::InitProcessing", [&] {
        {
            MLocker state(stateLock);
            MLocker process(processLock);
            InitProcessingLocked();
        }
        TellLatencyIfChanged();
    });
}

void MAudioPlugin::InitProcessingLocked() {
    sampleRate = hostSampleRate * upsampling;
    TakeChannelMode();
    TakeChannelCounts();
    PrepareUpsamplers();
    PrepareModeDelays();
    PrepareBypassDelays();
    agcActive = agcEnabled.load(kRelaxed) != 0;
    if (agcActive) gainCompensation.Prepare(hostSampleRate, hostInputs, bypassLatency);
    PrepareBuffers();
}

// Once more behind each call: what another thread has changed meanwhile is told last.
void MAudioPlugin::TellLatencyIfChanged() {
    for (int latency = GetReportedLatency(); toldLatency.exchange(latency) != latency;
         latency = GetReportedLatency())
        LatencyChanged();
}

void MAudioPlugin::TakeChannelMode() {
    channelModeActive = ValidChannelMode(channelModeRequested.load(kRelaxed));
    const ChannelModeRecord& mode = kChannelModes[static_cast<std::size_t>(channelModeActive)];
    maxProcessingChannels = mode.processingChannels;
    maxHostChannels = mode.hostChannels;
    if (channelModeActive != kModeSurround) return;

    // Channels that the host has not got are never among the chosen ones.
    surroundCount = 0;
    for (int c = 0; c < kChannelStride; ++c) {
        const auto channel = static_cast<std::size_t>(c);
        surroundActive[channel] =
            c < ConnectedCount() && surroundRequested[channel].load(kRelaxed) != 0;
        surroundCount += surroundActive[channel] ? 1 : 0;
    }
    maxProcessingChannels = std::min(maxProcessingChannels, surroundCount);
}

void MAudioPlugin::TakeChannelCounts() {
    hostInputs = GetHostInputChannels();
    hostOutputs = GetHostOutputChannels();
    processingInputs = GetProcessingInputChannels();
    processingOutputs = GetProcessingOutputChannels();
}

void MAudioPlugin::PrepareUpsamplers() {
    const int channels = LargerHostCount();
    for (int b = 0; b < LargerBusCount(); ++b)
        for (int c = 0; c < channels; ++c)
            UpsamplerAt(b * kChannelStride + c)
                .Configure(hostSampleRate, upsampling, hqUpsampling.load(kRelaxed) != 0);
}

void MAudioPlugin::PrepareModeDelays() {
    if (channelModeActive == kModeLeftRight) return;
    modeLatency = GetLatency();
    for (int b = 0; b < LargerBusCount(); ++b)
        for (int c = 0; c < LargerHostCount(); ++c)
            Refill(modeDelays[SlotOf(b, c)], modeLatency, announcedBlockSize * upsampling);
}

// What waits stays where it is, so that a change of latency loses nothing of it.
void MAudioPlugin::PrepareBypassDelays() {
    const int latency = ComputeLatency();
    for (int b = 0; b < std::min(GetInputBusCount(), GetOutputBusCount()); ++b) {
        for (int c = 0; c < hostOutputs; ++c) {
            Queue& queue = bypassDelays[SlotOf(b, c)];
            queue.Reserve(latency + announcedBlockSize);
            queue.Drop(std::max(queue.Length() - latency, 0));
            queue.PushCopies(0, latency - queue.Length());
        }
    }
    bypassLatency = latency;
}

void MAudioPlugin::PrepareBuffers() {
    for (int b = 0; b < LargerBusCount(); ++b) {
        for (int c = 0; c < LargerHostCount(); ++c) {
            temporaryBuffers[SlotOf(b, c)].Reserve(announcedBlockSize);
            UpsamplerAt(b * kChannelStride + c).Reserve(announcedBlockSize);
        }
    }
    silenceInput.Reserve(announcedBlockSize * upsampling);
    scratchOutput.Reserve(announcedBlockSize * upsampling);
    if (agcActive) gainCompensation.Reserve(announcedBlockSize);
}

int MAudioPlugin::ComputeLatency() {
    const int own = upsampling > 1 ? UpsamplerAt(0).GetLatency() : 0;
    return std::max(GetLatency(), 0) / upsampling + own;
}

MUpsampler& MAudioPlugin::UpsamplerAt(int slot) {
    std::unique_ptr<MUpsampler>& upsampler = upsamplers[static_cast<std::size_t>(slot)];
    if (upsampler == nullptr) upsampler = CreateUpsampler();
    return *upsampler;
}

std::unique_ptr<MUpsampler> MAudioPlugin::CreateUpsampler() {
    return std::make_unique<MUpsampler>();
}

int MAudioPlugin::GetProcessingInputChannels() {
    return inputChannelNames.empty() ? 0 : std::min(maxProcessingChannels, ConnectedCount());
}

int MAudioPlugin::GetProcessingOutputChannels() {
    const bool pair = channelModeActive >= kModeMono &&
                      channelModeActive <= kModeLeftRightNegative && hostOutputs == 2;
    return pair ? maxProcessingChannels : std::min(maxProcessingChannels, ConnectedCount());
}

int MAudioPlugin::GetHostInputChannels() {
    return inputChannelNames.empty() ? 0 : std::min(maxHostChannels, ConnectedCount());
}

int MAudioPlugin::GetHostOutputChannels() { return std::min(maxHostChannels, ConnectedCount()); }

int MAudioPlugin::GetInputBusCount() {
    return static_cast<int>(inputChannelNames.size()) / channelsPerBus;
}

int MAudioPlugin::GetOutputBusCount() {
    return static_cast<int>(outputChannelNames.size()) / channelsPerBus;
}

void MAudioPlugin::SetProgramName(const MString&) {}

int MAudioPlugin::GetLatency() { return 0; }

int MAudioPlugin::GetTailLength() { return -1; }

int MAudioPlugin::GetReportedTailLength() {
    MLocker lock(processLock);
    const int length = GetTailLength();
    return length < 0 ? -1 : length / upsampling;
}

void MAudioPlugin::LatencyChanged() {
    if (hostAdapter != nullptr) hostAdapter->UpdateLatency();
}

double MAudioPlugin::GetOutputClipLevel() { return -1; }

void MAudioPlugin::ProcessMIDIEvent(int time, const std::uint8_t* bytes) {
    Guarded("MAudioPlugin::ProcessMIDIEvent", [&] {
        DecodeMIDI({time, time * tempo / (sampleRate * 60.0) + position}, bytes);
    });
}

void MAudioPlugin::SendNote(int time, int channel, int note, double velocity, bool on) {
    const auto byte = [](long value) { return static_cast<std::uint8_t>(value); };
    const std::uint8_t bytes[3] = {byte((on ? 0x90 : 0x80) | (channel & 0x0f)), byte(note & 0x7f),
                                   byte(std::lround(std::clamp(velocity, 0.0, 1.0) * 127))};
    GenerateMIDIEvent(time, bytes);
}

void MAudioPlugin::GenerateMIDIEvent(int time, const std::uint8_t* bytes) {
    if (hostAdapter != nullptr) hostAdapter->GenerateMIDIEvent(time, bytes);
}
