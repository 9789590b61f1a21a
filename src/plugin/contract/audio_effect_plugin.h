// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#include "plugin/contract/plugin.h"
#include "plugin/contract/transport_info.h"

// What the frame expects of an effect that processes audio.
//
// Life     Prepare (may allocate), Update, ResetParameters, then any number of
//          UpdateIfNeeded and Process; Prepare again for another rate or channel count
// Units    samples at sampleRate, which already counts the frame's upsampling
// Arrays   inputs and outputs are pointers, 8 slots for each bus: channel c of bus b at b * 8 + c.
//          Bus 0 is the signal, bus 1 the side-chain where inputBusCount is 2
// Threads  Process on the audio thread under descriptor.lock, and UpdateIfNeeded before it; Clear
//          behind it; everything else elsewhere
// Memory   Process, Update and Clear allocate nothing
// Errors   an exception out of Process ends in the frame

namespace PluginCommand {
inline constexpr int kPrepare = 100;  // and Update and ResetParameters; channels, sampleRate
inline constexpr int kProcess = 101;  // transport, inputs, outputs, sampleCount
inline constexpr int kIsSilent = 102;
inline constexpr int kGetLatency = 103;
inline constexpr int kSetOption = 104;
inline constexpr int kGetTailLength = 105;
inline constexpr int kProcessUpdate = 106;
inline constexpr int kInitGUI = 107;
}  // namespace PluginCommand

class MAudioEffectPlugin : public MPlugin {
public:
    static constexpr int kSlotsPerBus = 8;

    std::intptr_t Dispatch(int code, PluginArguments& arguments) override;

    // The answer is passed on and means nothing to the frame.
    virtual std::intptr_t Prepare(int newChannels, int newSampleRate);
    virtual void InitGUI();
    // Writes every output channel of bus 0, replacing what is there. sampleCount
    // is 1..maxBlockSize. An output may be the input of the same channel.
    virtual void Process(const TransportInfo& transport, const float* const* inputs,
                         float* const* outputs, int sampleCount);
    virtual void ProcessUpdate();
    // Whether nothing that came in can still be heard.
    virtual bool IsSilent();
    // Delay of the dry signal that the host makes up for, in samples.
    virtual int GetLatency();
    // How long the effect sounds on after its input ends, in samples.
    virtual int GetTailLength();
    virtual void SetOption(int value);
    // Silence in everything that remembers sound, as Prepare leaves it; parameters stay. Called on
    // the audio thread under descriptor.lock, where the output has turned out not to be finite.
    virtual void Clear();

    int channels = 0;
    int sampleRate = 0;
    const std::atomic<std::uint8_t>* hqFlag = nullptr;  // "hqupsampling" of the frame; null means 0
    int maxBlockSize = 0;  // an effect sets it; the frame takes anything below 1 as 1

protected:
    bool IsHighQuality() const {
        return hqFlag != nullptr && hqFlag->load(std::memory_order_relaxed) != 0;
    }
};
