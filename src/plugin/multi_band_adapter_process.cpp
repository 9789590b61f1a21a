// SPDX-License-Identifier: GPL-3.0-or-later

// One block of a plug-in of several bands.

#include <algorithm>

#include "dsp/vectors.h"
#include "foundation/objects/guarded.h"
#include "plugin/frame/meter_sink.h"
#include "plugin/multi_band_adapter.h"

namespace {

constexpr int kFloatsPerLine = 16;  // of the cache: channels of a buffer share none

int StrideOf(int sampleCount) {
    return (sampleCount + kFloatsPerLine - 1) / kFloatsPerLine * kFloatsPerLine;
}

bool IsStill(const LinearRamp& ramp, double value) {
    return std::abs(ramp.Start() - value) < kSameParameter && !ramp.IsMoving();
}

}  // namespace

// How the parameters of the whole move across the block.
struct MAudioEffectPluginToAudioPluginMultiBandAdapter::MasterRamps {
    double inputStart, inputEnd;  // factors
    LinearRamp output;            // factors
    LinearRamp wet;
    double wetEnd;
};

MAudioEffectPluginToAudioPluginMultiBandAdapter::MasterRamps
MAudioEffectPluginToAudioPluginMultiBandAdapter::TakeRamps(int sampleCount) {
    const auto move = [](const ParameterRecord& record, double& previous) {
        const double from = previous;
        const double to = record.EffectiveInRange();
        if (std::abs(to - from) >= kSameParameter) previous = to;
        return from;
    };
    const double inputFrom = move(inputGain, inputGainPrevious);
    const double outputFrom = move(outputGain, outputGainPrevious);
    const double inputStart = inputGainFactor.Of(inputFrom) * inputGainScale;
    const double outputStart = outputGainFactor.Of(outputFrom) * outputGainScale;
    const double inputEnd = inputGainFactor.Of(inputGainPrevious) * inputGainScale;
    const double outputEnd = outputGainFactor.Of(outputGainPrevious) * outputGainScale;

    LinearRamp wet(dryWetFull.load(kRelaxed) ? 1 : 0);
    if (!dryWetFull.load(kRelaxed) && !dryWetZero.load(kRelaxed)) {
        const double wetFrom = move(dryWet, dryWetPrevious);
        wet = LinearRamp(wetFrom, dryWetPrevious, sampleCount);
    }
    return {inputStart, inputEnd, LinearRamp(outputStart, outputEnd, sampleCount), wet,
            wet.At(sampleCount)};
}

// The way of one block through all bands.
class MAudioEffectPluginToAudioPluginMultiBandAdapter::BandBlock {
public:
    BandBlock(MAudioEffectPluginToAudioPluginMultiBandAdapter& owner, float** inputs,
              float** outputs, int sampleCount)
        : owner(owner),
          inputs(inputs),
          outputs(outputs),
          sampleCount(sampleCount),
          stride(StrideOf(sampleCount)),
          channels(owner.processingOutputs),
          inputBuses(owner.GetInputBusCount()),
          outputBuses(owner.GetOutputBusCount()),
          buses(owner.BusCount()),
          bands(owner.activeBandCount),
          preview(PreviewBand()),
          ramps(owner.TakeRamps(sampleCount)) {}

    void Run() {
        if (bands > 1) ClearSums();
        if (SplitsAnalog()) SplitAnalog();
        for (int b = 0; b < bands; ++b) {
            TakeInput(b);
            Pan(b);
            RunEffect(b);
            Mix();
            Add(b);
        }
        Finish();
    }

private:
    static constexpr std::size_t Slot(int bus, int channel) { return SlotOf(bus, channel); }

    template <typename Work>
    void ForEachSlot(int busCount, Work work) {
        for (int b = 0; b < busCount; ++b)
            for (int c = 0; c < channels; ++c) work(Slot(b, c));
    }

    // Points at the arrays of a buffer that has all buses and channels one behind the other.
    void Point(ChannelPointers& pointers, float* buffer) {
        ForEachSlot(buses, [&](std::size_t slot) {
            pointers[slot] = buffer;
            buffer += stride;
        });
    }
    float* InputsOf(int band) { return owner.bandInputs.Data() + band * buses * channels * stride; }

    int PreviewBand() const {
        const int wanted = owner.previewBand.load(kRelaxed);
        return wanted < bands ? wanted : -1;
    }
    bool SplitsAnalog() const {
        return preview < 0 && owner.splitter.Used().SplitsAnalog() && inputBuses > 0;
    }
    bool SplitsLinear() const { return preview < 0 && owner.splitter.Used().SplitsLinear(); }
    bool IsHeard(int band) const {
        return preview < 0 ? !owner.bandMute[Index(band)].load(kRelaxed) : band == preview;
    }

    void ClearSums() {
        Point(sums, owner.sumBuffers.Data());
        ForEachSlot(outputBuses, [&](std::size_t slot) { VecZero(sums[slot], sampleCount); });
    }

    // All bands at once, which costs less than band by band; their gains come later.
    void SplitAnalog() {
        std::array<float*, kMaxBands * kChannelSlots> split;
        int used = 0;
        for (int b = 0; b < bands; ++b) {
            Point(bandIn, InputsOf(b));
            ForEachSlot(inputBuses, [&](std::size_t slot) {
                split[static_cast<std::size_t>(used++)] = bandIn[slot];
            });
        }
        owner.splitter.SplitAnalog(inputs, inputBuses, channels, split.data(), sampleCount);
    }

    void TakeInput(int band) {
        Point(bandIn, InputsOf(band));
        const LinearRamp gain = GainOf(band);
        ForEachSlot(buses, [&](std::size_t slot) {
            float* const samples = bandIn[slot];
            if (slot >= Slot(inputBuses, 0)) {
                VecZero(samples, sampleCount);
                return;
            }
            Scale(gain, SplitsAnalog() ? samples : inputs[slot], samples, sampleCount);
            if (SplitsLinear()) owner.splitter.RunLinear(band, slot, samples, sampleCount);
        });
    }

    // As far as the signal is dry the band's level is left alone.
    LinearRamp GainOf(int band) {
        double& current = owner.bandGainCurrent[Index(band)];
        const double from = std::exchange(current, owner.bandGainTarget[Index(band)]);
        if (!owner.dryWetAffectsInputGain.load(kRelaxed))
            return {ramps.inputStart * from, ramps.inputEnd * current, sampleCount};
        const double w0 = ramps.wet.Start();
        const double w1 = ramps.wetEnd;
        return {ramps.inputStart * (w0 * from + (1 - w0)),
                ramps.inputEnd * ((1 - w1) + w1 * current), sampleCount};
    }

    void Pan(int band) {
        double& current = owner.bandPanCurrent[Index(band)];
        const double from = std::exchange(current, owner.bandPanTarget[Index(band)]);
        if (channels != 2) return;
        // Both ends by the mix at the start: meant, a ramp of the mix moves it with the next block.
        const bool byMix = owner.dryWetAffectsInputPan.load(kRelaxed);
        const double amount = byMix ? ramps.wet.Start() : 1;
        const LinearRamp pan(amount * from, amount * current, sampleCount);
        if (IsStill(pan, 0)) return;
        for (int b = 0; b < inputBuses; ++b)
            Balance(pan, bandIn[Slot(b, 0)], bandIn[Slot(b, 1)], sampleCount);
    }

    // Whether the band is heard or not, so that its voices stay warm.
    void RunEffect(int band) {
        if (bands > 1) {
            Point(bandOut, owner.bandOutputs.Data());
        } else {
            std::copy_n(outputs, outputBuses * kChannelStride, bandOut.begin());
        }
        MAudioEffectPlugin& effect = *owner.effects[Index(band)];
        effect.UpdateIfNeeded();
        effect.Process(owner.transport, bandIn.data(), bandOut.data(), sampleCount);
    }

    void Mix() {
        if (IsUnity(ramps.wet)) return;
        ForEachSlot(outputBuses, [&](std::size_t slot) {
            MixDry(ramps.wet, bandIn[slot], bandOut[slot], sampleCount);
        });
    }

    void Add(int band) {
        const bool isHeard = IsHeard(band);
        const bool isBypassed = owner.bandBypass[Index(band)].load(kRelaxed);
        const ChannelPointers& result = isBypassed ? bandIn : bandOut;
        owner.FeedMeter(owner.bandMeters[Index(band)], isHeard ? result.data() : nullptr, channels,
                        sampleCount);
        ForEachSlot(outputBuses, [&](std::size_t slot) {
            if (bands > 1) {
                if (isHeard) VecAdd(result[slot], sums[slot], sampleCount);
            } else if (!isHeard) {
                VecZero(outputs[slot], sampleCount);
            } else if (isBypassed) {
                VecCopy(bandIn[slot], outputs[slot], sampleCount);
            }
        });
    }

    void Finish() {
        ForEachSlot(outputBuses, [&](std::size_t slot) {
            Scale(ramps.output, bands > 1 ? sums[slot] : outputs[slot], outputs[slot], sampleCount);
        });
    }

    MAudioEffectPluginToAudioPluginMultiBandAdapter& owner;
    float** const inputs;
    float** const outputs;
    const int sampleCount;
    const int stride;
    const int channels;
    const int inputBuses;
    const int outputBuses;
    const int buses;  // the larger of the two: a bus without input is silent
    const int bands;
    const int preview;
    const MasterRamps ramps;
    ChannelPointers bandIn{};
    ChannelPointers bandOut{};
    ChannelPointers sums{};
};

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ProcessBlock(float** inputs, float** outputs,
                                                                   int sampleCount) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::ProcessBlock", [&] {
        if (!splitter.HasRoomFor(BusCount(), processingOutputs)) return;
        largestBlock = std::max(largestBlock, sampleCount);
        ReserveBuffers(sampleCount);  // nothing, behind the first block of a size
        BandBlock(*this, inputs, outputs, sampleCount).Run();
    });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ReserveBuffers(int sampleCount) {
    const int cells = BusCount() * processingOutputs * StrideOf(sampleCount);
    const int bands = activeBandCount;
    bandInputs.Reserve(bands * cells);
    if (bands < 2) return;
    bandOutputs.Reserve(cells);
    sumBuffers.Reserve(cells);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ProcessBypassed(float* buffer,
                                                                      int sampleCount,
                                                                      int channel) {
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::ProcessBypassed", [&] {
        if (splitter.Used().SplitsAnalog())
            splitter.PassAnalog(Index(channel), buffer, sampleCount);
    });
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::FinishBlock(float** inputs, float** outputs,
                                                                  int sampleCount, bool replacing) {
    MAudioEffectPluginToAudioPluginAdapter::FinishBlock(inputs, outputs, sampleCount, replacing);
    for (MMeterSink* const meter : bandMeters)
        if (meter != nullptr) meter->Update();
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ClearEffect() {
    MAudioEffectPluginToAudioPluginAdapter::ClearEffect();
    splitter.Clear();
}
