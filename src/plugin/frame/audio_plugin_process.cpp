// SPDX-License-Identifier: GPL-3.0-or-later

// One host block, from the host's buffers to PerformProcess and back.

#include "dsp/finite.h"
#include "dsp/vectors.h"
#include "foundation/objects/guarded.h"
#include "foundation/objects/tolerances.h"
#include "plugin/frame/audio_plugin.h"
#include "plugin/frame/flush_to_zero.h"

namespace {

// Calls work(slot) for each of the first channels of the first buses.
template <typename Work>
void ForEachSlot(int buses, int channels, Work work) {
    for (int b = 0; b < buses; ++b)
        for (int c = 0; c < channels; ++c) work(b * kChannelStride + c);
}

void CopyUnlessSame(const float* source, float* destination, int count) {
    if (source != destination) VecCopy(source, destination, count);
}

bool HasAllChannels(float* const* buffers, int buses, int channels) {
    bool all = true;
    ForEachSlot(buses, channels, [&](int slot) { all = all && buffers[slot] != nullptr; });
    return all;
}

}  // namespace

void MAudioPlugin::ProcessAudio(float** inputs, float** outputs, int sampleCount, bool replacing) {
    Guarded("MAudioPlugin::ProcessAudio", [&] {
        if (processingDisabled.load() > 0) {
            ForEachSlot(1, hostOutputs, [&](int slot) { VecZero(outputs[slot], sampleCount); });
            return;
        }
        const FlushToZero flushed;
        MLocker lock(processLock);
        ChannelPointers none;
        if (inputs == nullptr) {
            none.fill(nullptr);
            inputs = none.data();
        }
        if (!RepairBuffers(inputs, outputs, sampleCount)) return;
        GuardInputs(inputs, sampleCount);
        if (bypassed.load(kRelaxed) != 0) {
            ProcessBypass(inputs, outputs, sampleCount, replacing);
        } else {
            KeepBypassFed(inputs, sampleCount);
            ProcessBlock(inputs, outputs, sampleCount, replacing);
        }
    });
}

// False where there is nothing to process into or from. A host that has connected no channels may
// leave pointers null, and gets silence in those that it gave.
bool MAudioPlugin::RepairBuffers(float** inputs, float** outputs, int sampleCount) {
    const int inputBuses = GetInputBusCount();
    const int outputBuses = GetOutputBusCount();
    if (outputs[0] == nullptr) return false;
    if (inputBuses > 0) FixAudioBuffers(inputs, connectedInputs, inputBuses, true, sampleCount);
    FixAudioBuffers(outputs, connectedOutputs, outputBuses, false, sampleCount);
    if (HasAllChannels(inputs, inputBuses, std::max(processingInputs, hostInputs)) &&
        HasAllChannels(outputs, outputBuses, std::max<int>(processingOutputs, hostOutputs)))
        return true;
    ForEachSlot(outputBuses, kChannelStride,
                [&](int slot) { VecZero(outputs[slot], sampleCount); });
    return false;
}

void MAudioPlugin::FixAudioBuffers(float** buffers, int connected, int busCount, bool isInput,
                                   int sampleCount) {
    if (connected == 0) return;
    Guarded("MAudioPlugin::FixAudioBuffers", [&] {
        GrowingBuffer<float>& substitute = isInput ? silenceInput : scratchOutput;
        substitute.Reserve(sampleCount);
        if (isInput) VecZero(substitute.Data(), sampleCount);  // processing changes its input
        const int given = connected > 0 ? std::min(connected, channelsPerBus) : channelsPerBus;
        for (int b = 0; b < busCount; ++b) {
            float** const bus = buffers + b * kChannelStride;
            const int own = bus[0] != nullptr ? given : 0;
            for (int c = 1; c < own; ++c)
                if (bus[c] == nullptr) bus[c] = bus[c - 1];
            std::fill(bus + own, bus + channelsPerBus, substitute.Data());
        }
    });
}

// A buffer that stands for several channels is guarded once.
void MAudioPlugin::GuardInputs(float** inputs, int sampleCount) {
    std::array<const float*, kChannelSlots> done;
    int doneCount = 0;
    ForEachSlot(GetInputBusCount(), hostInputs, [&](int slot) {
        float* const buffer = inputs[slot];
        const auto end = done.begin() + doneCount;
        if (std::find(done.begin(), end, buffer) != end) return;
        done[static_cast<std::size_t>(doneCount++)] = buffer;
        if (const int replaced = ReplaceNonFinite(buffer, sampleCount))
            nonFiniteInputs.fetch_add(replaced, kRelaxed);
        VecAddConstant(kDenormalGuard, buffer, sampleCount);
    });
}

// While the effect is heard the delays of bypass go along, so that switching hears no gap.
void MAudioPlugin::KeepBypassFed(float* const* inputs, int sampleCount) {
    if (bypassLatency < 1) return;
    ForEachSlot(std::min(GetInputBusCount(), GetOutputBusCount()), hostOutputs, [&](int slot) {
        Queue& queue = bypassDelays[static_cast<std::size_t>(slot)];
        queue.Push(inputs[slot], sampleCount);
        queue.Drop(sampleCount);
    });
}

void MAudioPlugin::ProcessBlock(float** inputs, float** outputs, int sampleCount, bool replacing) {
    PrepareBlock(inputs, outputs, sampleCount, replacing);
    if (agcActive) gainCompensation.AnalyseInput(inputs, sampleCount, hostInputs);
    float** processed = inputs;
    if (upsampling > 1) {
        processed = ProcessUpsampled(inputs, outputs, sampleCount, replacing);
    } else if (replacing) {
        processed = ProcessReplacing(inputs, outputs, sampleCount);
    } else {
        ProcessAccumulating(inputs, outputs, sampleCount);
    }
    if (agcActive) gainCompensation.Apply(outputs, sampleCount, hostOutputs);
    FinishBlock(processed, outputs, sampleCount, replacing);
}

void MAudioPlugin::PointTemporaries(ChannelPointers& pointers, int channels, int sampleCount) {
    pointers.fill(nullptr);
    ForEachSlot(LargerBusCount(), channels, [&](int slot) {
        GrowingBuffer<float>& buffer = temporaryBuffers[static_cast<std::size_t>(slot)];
        buffer.Reserve(sampleCount);
        pointers[static_cast<std::size_t>(slot)] = buffer.Data();
    });
}

// An effect that adds by itself may add to the host's buffers, unless a mode works on them behind
// it.
void MAudioPlugin::ProcessAccumulating(float** inputs, float** outputs, int sampleCount) {
    if (accumulatesOutput && channelModeActive == kModeLeftRight)
        return PerformProcess(inputs, outputs, sampleCount);
    PointTemporaries(temporaryOutputs, LargerHostCount(), sampleCount);
    const auto forEachOutput = [&](auto work) {
        ForEachSlot(GetOutputBusCount(), hostOutputs, [&](int slot) {
            work(temporaryOutputs[static_cast<std::size_t>(slot)], slot);
        });
    };
    if (accumulatesOutput) forEachOutput([&](float* buffer, int) { VecZero(buffer, sampleCount); });
    PerformProcess(inputs, temporaryOutputs.data(), sampleCount);
    forEachOutput([&](float* buffer, int slot) { VecAdd(buffer, outputs[slot], sampleCount); });
}

float** MAudioPlugin::ProcessReplacing(float** inputs, float** outputs, int sampleCount) {
    // What stands for several channels must not be written before the last of them was read.
    const bool shared = std::adjacent_find(inputs, inputs + hostInputs) != inputs + hostInputs;
    const bool needsCopy =
        noInPlace || accumulatesOutput || shared || channelModeActive != kModeLeftRight;
    if (needsCopy && inputs[0] == outputs[0]) {
        PointTemporaries(temporaryInputs, LargerHostCount(), sampleCount);
        ForEachSlot(LargerBusCount(), LargerHostCount(), [&](int slot) {
            float*& copy = temporaryInputs[static_cast<std::size_t>(slot)];
            if (VecCopy(inputs[slot], copy, sampleCount) == kVecNullPointer) copy = nullptr;
        });
        inputs = temporaryInputs.data();
    }
    if (accumulatesOutput)
        ForEachSlot(GetOutputBusCount(), hostOutputs,
                    [&](int slot) { VecZero(outputs[slot], sampleCount); });
    PerformProcess(inputs, outputs, sampleCount);
    return inputs;
}

float** MAudioPlugin::ProcessUpsampled(float** inputs, float** outputs, int sampleCount,
                                       bool replacing) {
    FeedUpsamplers(inputs, sampleCount);
    PerformProcess(temporaryInputs.data(), temporaryOutputs.data(), upsampling * sampleCount);
    const auto mode = replacing ? MUpsampler::Mode::Replace : MUpsampler::Mode::Add;
    const float limit = static_cast<float>(GetOutputClipLevel());
    ForEachSlot(1, hostOutputs, [&](int slot) {
        UpsamplerAt(slot).Down(outputs[slot], sampleCount, mode);
        if (limit < 0) return;
        for (int i = 0; i < sampleCount; ++i)
            outputs[slot][i] = std::clamp(outputs[slot][i], -limit, limit);
    });
    return temporaryInputs.data();
}

void MAudioPlugin::FeedUpsamplers(float* const* inputs, int sampleCount) {
    temporaryInputs.fill(nullptr);
    temporaryOutputs.fill(nullptr);
    ForEachSlot(LargerBusCount(), hostOutputs, [&](int slot) {
        MUpsampler& upsampler = UpsamplerAt(slot);
        upsampler.ConfigureIfChanged(hostSampleRate, upsampling, hqUpsampling.load(kRelaxed) != 0);
        upsampler.Up(inputs[slot], sampleCount);
        temporaryInputs[static_cast<std::size_t>(slot)] = upsampler.UpsampledInput();
        temporaryOutputs[static_cast<std::size_t>(slot)] = upsampler.UpsampledOutput();
    });
}

void MAudioPlugin::ProcessBypass(float** inputs, float** outputs, int sampleCount, bool replacing) {
    const int outputBuses = GetOutputBusCount();
    const int common = std::min(GetInputBusCount(), outputBuses);
    if (replacing) {
        PassBypass(inputs, outputs, sampleCount);
        for (int b = common; b < outputBuses; ++b)
            for (int c = 0; c < channelsPerBus; ++c)
                VecZero(outputs[b * kChannelStride + c], sampleCount);
        return;
    }
    PointTemporaries(temporaryOutputs, hostOutputs, sampleCount);
    PassBypass(inputs, temporaryOutputs.data(), sampleCount);
    ForEachSlot(common, hostOutputs, [&](int slot) {
        VecAdd(temporaryOutputs[static_cast<std::size_t>(slot)], outputs[slot], sampleCount);
    });
}

// All is read before anything is written: an output may be the input of several channels.
void MAudioPlugin::PassBypass(float* const* inputs, float* const* outputs, int sampleCount) {
    const auto forEachCommon = [&](auto work) {
        ForEachSlot(std::min(GetInputBusCount(), GetOutputBusCount()), hostOutputs,
                    [&](int slot) { work(bypassDelays[static_cast<std::size_t>(slot)], slot); });
    };
    if (bypassLatency < 1)
        return forEachCommon(
            [&](Queue&, int slot) { CopyUnlessSame(inputs[slot], outputs[slot], sampleCount); });
    forEachCommon([&](Queue& queue, int slot) { queue.Push(inputs[slot], sampleCount); });
    forEachCommon([&](Queue& queue, int slot) { queue.Pull(outputs[slot], sampleCount); });
}
