// SPDX-License-Identifier: GPL-3.0-or-later

// The sinc reads, once for every vector width. No #pragma once: each variant includes this inside
// its own namespace, after it has defined a struct Simd of static members
//
//     Doubles                       a vector of 64-bit floats
//     kLanes                        its length
//     Doubles Zero()
//     Doubles Weights(p)            aligned load of kLanes weights
//     Doubles Samples(p)            load of kLanes samples, widened
//     Doubles LastSamples(p)        load of the samples that are left over at a window's end, 0 in
//                                   the other lanes, without touching the cells behind
//     Doubles Broadcast(x)
//     Doubles MulAdd(a, b, c)       a * b + c
//     Doubles Add(a, b), Multiply(a, b)
//     void Sum4(const Doubles sums[4], double* out)     four horizontal sums at once
//
// and has included dsp/voice_loops_inl.h, and dsp/voice_reads_variants.h and dsp/sinc_kernel.h
// outside of it.

using Doubles = Simd::Doubles;
constexpr int kLanes = Simd::kLanes;
constexpr int kFullVectors = SincKernel::kTaps / kLanes;
constexpr int kTogether = 4;  // reads that finish together

// The cells of a window that wraps around the line, in a row.
[[gnu::noinline]] inline const float* CopyWindow(const LineView& line, int first, float* scratch) {
    for (int tap = 0; tap < SincKernel::kTaps; ++tap)
        scratch[tap] = line.cells[((first + tap) % line.length + line.length) % line.length];
    return scratch;
}

// A read's two neighbouring rows and how much of each it takes.
struct KernelPoint {
    KernelPoint(const SincKernel& kernel, double fraction) {
        const double phase = fraction * SincKernel::kPhases;
        const int whole = static_cast<int>(phase);
        row = kernel.Row(whole);
        far = Simd::Broadcast(phase - whole);
        near = Simd::Broadcast(1 - (phase - whole));
    }

    Doubles WeightsAt(int vector) const {
        const double* weights = row + vector * kLanes;
        return Simd::MulAdd(Simd::Weights(weights + SincKernel::kRowLength), far,
                            Simd::Multiply(Simd::Weights(weights), near));
    }

    const double* row;
    Doubles near;
    Doubles far;
};

// The lanes of the sums of one read, for each of kLines lines at the same position. Even and odd
// vectors are summed apart, which halves the chain of dependent additions.
template <int kLines>
struct WindowSums {
    WindowSums() {
        for (int line = 0; line < kLines; ++line) even[line] = odd[line] = Simd::Zero();
    }

    void Add(Doubles weights, const float* const (&windows)[kLines], int first,
             Doubles (&sums)[kLines]) {
        for (int line = 0; line < kLines; ++line)
            sums[line] = Simd::MulAdd(weights, Simd::Samples(windows[line] + first), sums[line]);
    }

    void AddWindows(const KernelPoint& point, const float* const (&windows)[kLines]) {
        constexpr int kPairs = kFullVectors / 2;
        // Not unrolled whole: one compiler would load everything first and spill it.
#pragma GCC unroll 4
        for (int pair = 0; pair < kPairs; ++pair) {
            Add(point.WeightsAt(2 * pair), windows, 2 * pair * kLanes, even);
            Add(point.WeightsAt(2 * pair + 1), windows, (2 * pair + 1) * kLanes, odd);
        }
        if constexpr (kFullVectors % 2 != 0)
            Add(point.WeightsAt(kFullVectors - 1), windows, (kFullVectors - 1) * kLanes, even);
        const Doubles weights = point.WeightsAt(kFullVectors);
        for (int line = 0; line < kLines; ++line) {
            const Doubles last = Simd::LastSamples(windows[line] + kFullVectors * kLanes);
            odd[line] = Simd::MulAdd(weights, last, odd[line]);
        }
    }

    Doubles Lanes(int line) const { return Simd::Add(even[line], odd[line]); }

    Doubles even[kLines];
    Doubles odd[kLines];
};

// Four reads from the point first on; sums[line * 4 + slot].
template <int kLines>
[[gnu::always_inline]] inline void ReadFour(const SincKernel& kernel,
                                            const LineView* const (&lines)[kLines],
                                            const ReadPoints& points, int first, double* out) {
    Doubles lanes[kLines][kTogether];
    // Unrolled, so that the four overlap.
#pragma GCC unroll 4
    for (int slot = 0; slot < kTogether; ++slot) {
        const int cell = points.cells[first + slot] - SincKernel::kCentreTap;
        float scratch[kLines][SincKernel::kTaps];
        const float* windows[kLines];
        if (cell >= 0 && cell + SincKernel::kTaps <= lines[0]->length) [[likely]] {
            for (int line = 0; line < kLines; ++line) windows[line] = lines[line]->cells + cell;
        } else {
            for (int line = 0; line < kLines; ++line)
                windows[line] = CopyWindow(*lines[line], cell, scratch[line]);
        }
        WindowSums<kLines> sums;
        sums.AddWindows(KernelPoint(kernel, points.fractions[first + slot]), windows);
        for (int line = 0; line < kLines; ++line) lanes[line][slot] = sums.Lanes(line);
    }
    for (int line = 0; line < kLines; ++line)
        Simd::Sum4(lanes[line][0], lanes[line][1], lanes[line][2], lanes[line][3],
                   out + line * kTogether);
}

template <int kLines, typename Out>
inline void ReadAll(const LineView* const (&lines)[kLines], const ReadPoints& points,
                    Out* const (&outs)[kLines]) {
    const SincKernel& kernel = SincKernel::Get();
    for (int first = 0; first < points.count; first += kTogether) {
        double sums[kLines * kTogether];
        ReadFour<kLines>(kernel, lines, points, first, sums);
        for (int line = 0; line < kLines; ++line)
            for (int slot = 0; slot < kTogether; ++slot)
                outs[line][first + slot] = static_cast<Out>(sums[line * kTogether + slot]);
    }
}

inline void ReadSinc(const LineView& line, const ReadPoints& points, float* out) {
    ReadAll<1, float>({&line}, points, {out});
}

inline void ReadSincPair(const LineView& left, const LineView& right, const ReadPoints& points,
                         float* outLeft, float* outRight) {
    ReadAll<2, float>({&left, &right}, points, {outLeft, outRight});
}

inline void ReadSincSums(const LineView& line, const ReadPoints& points, double* out) {
    ReadAll<1, double>({&line}, points, {out});
}

constexpr VoiceReads MakeReads(const char* name) {
    return {name,       ReadCubic, ReadSinc, ReadSincPair, ReadSincSums,
            FillPhases, ReadShape, Locate,   MixPair,      AddGained};
}
