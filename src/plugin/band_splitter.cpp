// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/band_splitter.h"

namespace {

// Makes what is wanted and not there yet, and frees what is there and not wanted.
template <typename Owned>
void Provide(std::unique_ptr<Owned>& owned, bool isWanted) {
    if (!isWanted) {
        owned.reset();
    } else if (owned == nullptr) {
        owned = std::make_unique<Owned>();
    }
}

}  // namespace

void BandSplitter::Prepare(const Room& newRoom) {
    room = {};
    ProvideStates(newRoom, design);
    room = newRoom;
}

void BandSplitter::Build(const Design& newDesign) {
    if (newDesign == design) return;
    const bool isNew = !newDesign.HasStructureOf(design);
    if (isNew) ProvideStates(room, newDesign);
    const double rate = newDesign.sampleRate;
    if (newDesign.SplitsAnalog())
        BuildAnalog(analogCrossover, newDesign.bands, newDesign.limits.data(), rate,
                    newDesign.mode);
    if (newDesign.SplitsLinear())
        BuildLinear(*linearCrossover, newDesign.bands, newDesign.limits.data(), rate,
                    newDesign.fixedQ);
    design = newDesign;
    if (!isNew) return;
    ProvideStates(room, design);
    Clear();
}

void BandSplitter::Clear() {
    for (auto& state : analogCrossoverState)
        if (state != nullptr) ClearAnalogState(*state);
    for (auto& channel : linearCrossoverState)
        if (channel != nullptr) ResetLinearChannel(*channel);
}

// What the present design and the next one need.
void BandSplitter::ProvideStates(const Room& newRoom, const Design& next) {
    const bool analog = design.SplitsAnalog() || next.SplitsAnalog();
    const bool linear = design.SplitsLinear() || next.SplitsLinear();
    Provide(linearCrossover, linear);
    for (int b = 0; b < kMaxBuses; ++b) {
        for (int c = 0; c < kChannelStride; ++c) {
            const bool inUse = b < newRoom.buses && c < newRoom.channels;
            auto& state = analogCrossoverState[SlotOf(b, c)];
            Provide(state, inUse && analog);
            if (state != nullptr) ReserveAnalogState(*state);
            auto& channel = linearCrossoverState[SlotOf(b, c)];
            Provide(channel, inUse && linear);
            if (channel != nullptr) ReserveLinearChannel(*channel, next.bands, newRoom.blockSize);
        }
    }
}

void BandSplitter::SplitAnalog(const float* const* sources, int buses, int channels,
                               float* const* destinations, int count) {
    std::array<AnalogCrossoverState*, kChannelSlots> states;
    std::array<const float*, kChannelSlots> inputs;
    int used = 0;
    for (int b = 0; b < buses; ++b) {
        for (int c = 0; c < channels; ++c, ++used) {
            states[static_cast<std::size_t>(used)] = analogCrossoverState[SlotOf(b, c)].get();
            inputs[static_cast<std::size_t>(used)] = sources[SlotOf(b, c)];
        }
    }
    RunAnalogBands(analogCrossover, states.data(), used, inputs.data(), destinations, count);
}

void BandSplitter::RunLinear(int band, std::size_t slot, float* buffer, int count) {
    RunLinearBand(*linearCrossover, *linearCrossoverState[slot], band, buffer, buffer, count);
}

void BandSplitter::PassAnalog(std::size_t slot, float* buffer, int count) {
    if (AnalogCrossoverState* const state = analogCrossoverState[slot].get())
        RunAnalogAllPass(analogCrossover, *state, buffer, count);
}
