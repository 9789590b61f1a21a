// SPDX-License-Identifier: GPL-3.0-or-later

// The split of all bands at once, for every vector width. No #pragma once: each variant includes
// this inside its own namespace, after it has defined a struct Simd of static members
//
//     Doubles                       a vector of 64-bit floats
//     kLanes                        its length, a multiple of 2
//     kTogether                     the number of sections that run fastest together, by trial
//     Doubles Load(p), void Store(x, p)      aligned
//     Doubles Join(p)               kLanes / 2 pieces of two numbers each, p[0] in the lowest lanes
//     void Split(x, p)              the reverse
//     Doubles MulAdd(a, b, c)       a * b + c
//
// and has included dsp/analog_crossover_variants.h outside of it.
//
// A piece of a vector is a pair of bands of one channel. A vector takes pieces as they come, those
// with the most sections first. Its lanes run one section after the other, a few at a time over a
// chunk of samples: the samples of a chunk overlap in the processor, which hides the latency of a
// section's feedback.

using Doubles = Simd::Doubles;
using LaneTaps = AnalogCrossover::LaneTaps;
using LaneMemory = AnalogCrossoverState::LaneMemory;
constexpr int kLanes = Simd::kLanes;
constexpr int kPieces = kLanes / 2;
constexpr int kChunk = 64;

// What the pieces of one vector read and write.
struct LaneGroup {
    int sections = 0;
    const LaneTaps* taps[kPieces];
    LaneMemory* memories[kPieces];
    const float* sources[kPieces];
    float* destinations[kLanes];  // null where no band is wanted
};

// The pieces from the one of this number on; the last one stands for those that are missing.
inline LaneGroup MakeGroup(const AnalogSplit& split, int first) {
    const AnalogCrossover& crossover = split.crossover;
    LaneGroup group;
    for (int piece = 0; piece < kPieces; ++piece) {
        const int number = std::min(first + piece, split.Pieces() - 1);
        const int pair = number / split.channels;
        const int c = number % split.channels;
        group.sections = std::max(group.sections, crossover.pairs[pair].sections);
        group.taps[piece] = crossover.pairs[pair].taps;
        group.memories[piece] =
            split.states[c]->lanes.Data() + pair * AnalogCrossover::LanePair::kMaxSections;
        group.sources[piece] = split.sources[c];
        for (int lane = 0; lane < 2; ++lane) {
            const int band = 2 * pair + lane;
            const bool wanted = first + piece == number && band < crossover.bands;
            group.destinations[2 * piece + lane] =
                wanted ? split.destinations[band * split.channels + c] : nullptr;
        }
    }
    return group;
}

inline void Fill(const LaneGroup& group, int first, int count, double* samples) {
    for (int piece = 0; piece < kPieces; ++piece)
        for (int i = 0; i < count; ++i) {
            double* const pair = samples + i * kLanes + 2 * piece;
            pair[0] = pair[1] = group.sources[piece][first + i];
        }
}

inline void Drain(const LaneGroup& group, int first, int count, const double* samples) {
    for (int lane = 0; lane < kLanes; ++lane) {
        float* const destination = group.destinations[lane];
        for (int i = 0; destination != nullptr && i < count; ++i)
            destination[first + i] = static_cast<float>(samples[i * kLanes + lane]);
    }
}

// One number of one section of all pieces.
template <typename Record>
inline Doubles Join(const Record* const (&records)[kPieces], int section,
                    double (Record::*field)[2]) {
    const double* pieces[kPieces];
    for (int piece = 0; piece < kPieces; ++piece) pieces[piece] = records[piece][section].*field;
    return Simd::Join(pieces);
}

inline void Split(Doubles x, LaneMemory* const (&memories)[kPieces], int section,
                  double (LaneMemory::*field)[2]) {
    double* pieces[kPieces];
    for (int piece = 0; piece < kPieces; ++piece) pieces[piece] = memories[piece][section].*field;
    Simd::Split(x, pieces);
}

// A section of every lane, in registers while a chunk runs.
struct Section {
    void Load(const LaneGroup& group, int section) {
        b0 = Join(group.taps, section, &LaneTaps::b0);
        b1 = Join(group.taps, section, &LaneTaps::b1);
        b2 = Join(group.taps, section, &LaneTaps::b2);
        a1 = Join(group.taps, section, &LaneTaps::a1);
        a2 = Join(group.taps, section, &LaneTaps::a2);
        guard = Join(group.taps, section, &LaneTaps::guard);
        s1 = Join<LaneMemory>(group.memories, section, &LaneMemory::s1);
        s2 = Join<LaneMemory>(group.memories, section, &LaneMemory::s2);
    }

    void Store(const LaneGroup& group, int section) const {
        Split(s1, group.memories, section, &LaneMemory::s1);
        Split(s2, group.memories, section, &LaneMemory::s2);
    }

    Doubles Run(Doubles x) {
        const Doubles y = Simd::MulAdd(b0, x, s2);
        s2 = Simd::MulAdd(a1, y, Simd::MulAdd(b1, x, s1));
        s1 = Simd::MulAdd(a2, y, Simd::MulAdd(b2, x, guard));
        return y;
    }

    Doubles b0, b1, b2, a1, a2, guard;
    Doubles s1, s2;
};

template <int kCount>
inline void RunSections(const LaneGroup& group, int first, double* samples, int count) {
    Section sections[kCount];
    for (int k = 0; k < kCount; ++k) sections[k].Load(group, first + k);
    for (int i = 0; i < count; ++i) {
        Doubles x = Simd::Load(samples + i * kLanes);
#pragma GCC unroll 8
        for (int k = 0; k < kCount; ++k) x = sections[k].Run(x);
        Simd::Store(x, samples + i * kLanes);
    }
    for (int k = 0; k < kCount; ++k) sections[k].Store(group, first + k);
}

// As many sections at a time as have room, in parts of nearly the same size: few sections alone
// would wait for their feedback.
template <int kRoom>
inline void RunUpTo(const LaneGroup& group, int first, int wanted, double* samples, int count) {
    if constexpr (kRoom > 0) {
        if (wanted == kRoom) return RunSections<kRoom>(group, first, samples, count);
        RunUpTo<kRoom - 1>(group, first, wanted, samples, count);
    }
}

inline void RunCascade(const LaneGroup& group, double* samples, int count) {
    int parts = (group.sections + Simd::kTogether - 1) / Simd::kTogether;
    for (int first = 0; first < group.sections; --parts) {
        const int wanted = (group.sections - first + parts - 1) / parts;
        RunUpTo<Simd::kTogether>(group, first, wanted, samples, count);
        first += wanted;
    }
}

inline void RunLanes(const AnalogSplit& split) {
    alignas(sizeof(Doubles)) double samples[kChunk * kLanes];
    for (int piece = 0; piece < split.Pieces(); piece += kPieces) {
        const LaneGroup group = MakeGroup(split, piece);
        for (int first = 0; first < split.count; first += kChunk) {
            const int count = std::min(kChunk, split.count - first);
            Fill(group, first, count, samples);
            RunCascade(group, samples, count);
            Drain(group, first, count, samples);
        }
    }
}
