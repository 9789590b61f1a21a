// SPDX-License-Identifier: GPL-3.0-or-later

// Channel modes around the effect, and the cutting of blocks.

#include <utility>

#include "dsp/finite.h"
#include "dsp/vectors.h"
#include "plugin/frame/audio_plugin.h"

namespace {

constexpr int kAutomaticLimit = 256;  // sub-block where none was told

// In place. mid = (left + right) / 2, side = (left - right) / 2.
void MidSideEncode(float* left, float* right, int count) {
    for (int i = 0; i < count; ++i) {
        const float mid = (left[i] + right[i]) * 0.5f;
        right[i] = (left[i] - right[i]) * 0.5f;
        left[i] = mid;
    }
}

void MidSideDecode(float* mid, float* side, int count) {
    for (int i = 0; i < count; ++i) {
        const float left = mid[i] + side[i];
        side[i] = mid[i] - side[i];
        mid[i] = left;
    }
}

// Two buffers, not one that stands for both channels.
bool IsPair(float* const* bus) {
    return bus[0] != nullptr && bus[1] != nullptr && bus[0] != bus[1];
}

}  // namespace

// The pointers as the effect gets them.
struct MAudioPlugin::Routing {
    Routing(float* const* allInputs, float* const* allOutputs) {
        std::copy_n(allInputs, kChannelSlots, inputs.begin());
        std::copy_n(allOutputs, kChannelSlots, outputs.begin());
    }

    ChannelPointers inputs;
    ChannelPointers outputs;
    std::array<bool, kMaxBuses> paired{};  // buses whose left and right the mode works on
};

void MAudioPlugin::PerformProcess(float** inputs, float** outputs, int sampleCount) {
    PrepareForProcessingOnce(inputs, outputs);
    if (channelModeActive == kModeLeftRight) return RunBlock(inputs, outputs, sampleCount);

    Routing routing(inputs, outputs);
    if (channelModeActive == kModeSurround) {
        if (surroundCount != LargerHostCount()) RouteSurround(routing, sampleCount);
        return RunBlock(routing.inputs.data(), routing.outputs.data(), sampleCount);
    }
    RoutePairs(routing, sampleCount);
    RunBlock(routing.inputs.data(), routing.outputs.data(), sampleCount);
    UnroutePairs(routing, sampleCount);
}

// What the effect processes comes to the first channel of each bus.
void MAudioPlugin::RoutePairs(Routing& routing, int sampleCount) {
    const int inputBuses = GetInputBusCount();
    const int outputBuses = GetOutputBusCount();
    for (int b = 0; b < LargerBusCount(); ++b) {
        float** const in = routing.inputs.data() + b * kChannelStride;
        float** const out = routing.outputs.data() + b * kChannelStride;
        const bool paired =
            hostInputs == 2 && (b >= inputBuses || IsPair(in)) && (b >= outputBuses || IsPair(out));
        routing.paired[static_cast<std::size_t>(b)] = paired;
        if (!paired) continue;
        if (b < inputBuses) {
            if (IsMidSideMode(channelModeActive)) MidSideEncode(in[0], in[1], sampleCount);
            if (channelModeActive == kModeLeftRightNegative)
                VecScaleInPlace(-1, in[1], sampleCount);
        }
        if (SwapsChannels(channelModeActive)) {
            std::swap(in[0], in[1]);
            std::swap(out[0], out[1]);
        }
    }
}

// The other channel passes by, and the pair becomes left and right again.
void MAudioPlugin::UnroutePairs(Routing& routing, int sampleCount) {
    for (int b = 0; b < GetOutputBusCount(); ++b) {
        const int slot = b * kChannelStride;
        float** const out = routing.outputs.data() + slot;
        if (!routing.paired[static_cast<std::size_t>(b)]) {
            FillUnprocessed(routing, b, sampleCount);
            continue;
        }
        if (IsSingleChannelMode(channelModeActive))
            PassUnprocessed(routing.inputs[SlotOf(b, 1)], out[1], slot + 1, sampleCount);
        if (SwapsChannels(channelModeActive)) std::swap(out[0], out[1]);
        if (IsMidSideMode(channelModeActive)) MidSideDecode(out[0], out[1], sampleCount);
    }
}

void MAudioPlugin::PassUnprocessed(const float* input, float* output, int slot, int sampleCount) {
    PassDelayed(input, output, slot, sampleCount);
    ProcessBypassed(output, sampleCount, slot % kChannelStride);
}

// Later by modeLatency; silence for a null input.
void MAudioPlugin::PassDelayed(const float* input, float* output, int slot, int sampleCount) {
    Queue& queue = modeDelays[static_cast<std::size_t>(slot)];
    if (input == nullptr) {
        VecZero(output, sampleCount);
    } else if (queue.IsEmpty()) {
        if (input != output) VecCopy(input, output, sampleCount);
    } else {
        queue.Push(input, sampleCount);
        queue.Pull(output, sampleCount);
    }
}

// The effect sees the chosen channels only, close together; the others pass by.
void MAudioPlugin::RouteSurround(Routing& routing, int sampleCount) {
    const int inputBuses = GetInputBusCount();
    const int outputBuses = GetOutputBusCount();
    silenceInput.Reserve(sampleCount);
    scratchOutput.Reserve(sampleCount);
    VecZero(silenceInput.Data(), sampleCount);
    for (int b = 0; b < LargerBusCount(); ++b) {
        float** const in = routing.inputs.data() + b * kChannelStride;
        float** const out = routing.outputs.data() + b * kChannelStride;
        int chosen = 0;
        for (int c = 0; c < LargerHostCount(); ++c) {
            if (surroundActive[static_cast<std::size_t>(c)]) {
                in[chosen] = in[c];
                out[chosen++] = out[c];
            } else if (b < outputBuses) {
                PassDelayed(b < inputBuses ? in[c] : nullptr, out[c], b * kChannelStride + c,
                            sampleCount);
            }
        }
        // An effect that processes one channel at least must not find one that has passed by.
        std::fill(in + chosen, in + kChannelStride, silenceInput.Data());
        std::fill(out + chosen, out + kChannelStride, scratchOutput.Data());
    }
}

// Channels that no mode could route, since the bus has one buffer for both on one side: where the
// middle is processed it is all that there is, elsewhere what is not processed passes by.
void MAudioPlugin::FillUnprocessed(const Routing& routing, int bus, int sampleCount) {
    const float* const* const in = routing.inputs.data() + bus * kChannelStride;
    float* const* const out = routing.outputs.data() + bus * kChannelStride;
    for (int c = processingOutputs; c < hostOutputs; ++c) {
        if (out[c] == out[0]) continue;
        if (channelModeActive == kModeMono) {
            VecCopy(out[0], out[c], sampleCount);
        } else {
            PassUnprocessed(bus < GetInputBusCount() ? in[c] : nullptr, out[c],
                            bus * kChannelStride + c, sampleCount);
        }
    }
}

void MAudioPlugin::RunBlock(float** inputs, float** outputs, int sampleCount) {
    int limit = blockLimit;
    bool moving = false;
    if (interpolationLimit < sampleCount) {
        moving = InterpolationPrepare(sampleCount);
        if (moving) limit = std::min(limit, interpolationLimit);
    } else {
        automation.interpolation.Follow();
    }
    if (limit < 1) limit = kAutomaticLimit;
    if (limit < sampleCount) {
        RunSubBlocks(inputs, outputs, sampleCount, limit, moving);
    } else {
        RunProcess(inputs, outputs, sampleCount);
    }
    if (moving) InterpolationFinish();
}

void MAudioPlugin::RunSubBlocks(float** inputs, float** outputs, int sampleCount, int limit,
                                bool moving) {
    Routing local(inputs, outputs);
    const int slots = LargerBusCount() * kChannelStride;
    const auto advance = [slots](ChannelPointers& pointers, int by) {
        for (int slot = 0; slot < slots; ++slot)
            if (float*& pointer = pointers[static_cast<std::size_t>(slot)]) pointer += by;
    };
    const double beat = usesHostTime ? tempo / (sampleRate * 60.0) : 0;
    double start = usesHostTime ? position : 0;
    for (int remaining = sampleCount;;) {
        const int count = std::min(remaining, limit);
        position = start;
        RunProcess(local.inputs.data(), local.outputs.data(), count);
        remaining -= count;
        if (remaining <= 0) return;
        start += count * beat;
        if (moving) InterpolationProcess(count);
        advance(local.inputs, count);
        advance(local.outputs, count);
    }
}

// An effect that has gone wrong is silent for this sub-block and starts anew in the next.
void MAudioPlugin::RunProcess(float** inputs, float** outputs, int sampleCount) {
    Process(inputs, outputs, sampleCount);
    const auto forEachOutput = [&](auto work) {
        for (int b = 0; b < GetOutputBusCount(); ++b)
            for (int c = 0; c < processingOutputs; ++c) work(outputs[b * kChannelStride + c]);
    };
    bool finite = true;
    forEachOutput([&](float* buffer) { finite = finite && AreFinite(buffer, sampleCount); });
    if (finite) return;
    ClearEffect();
    forEachOutput([&](float* buffer) { VecZero(buffer, sampleCount); });
    clears.fetch_add(1, kRelaxed);
}
