// SPDX-License-Identifier: GPL-3.0-or-later

// The steps around the reads, which the compiler turns into vector code for the processor at hand.
// No #pragma once: each variant includes this inside its own namespace, after <cstring>,
// dsp/shape_table.h and dsp/voice_reads.h outside of it. Nothing is fused, so that all variants
// give the same bits.

inline void FillPhases(const PhaseRun& run, double* phases, int count) {
    // Adding and taking away 2^52 rounds to a whole number, in vectors too; exact below 2^51.
    constexpr double kRounder = 4503599627370496.0;
    const double base = run.base;
    const double rate = run.rate;
    const auto start = static_cast<double>(run.samples);
    for (int i = 0; i < count; ++i) {
        const double cycles = base + (start + i) * rate;
        const double phase = cycles - ((cycles + kRounder) - kRounder);
        phases[i] = phase < 0 ? phase + 1 : phase;
    }
}

// Only the look into the table goes one by one: both ends of a line between points at once.
inline void ReadShape(const ShapeTable& shape, const double* phases, double offset,
                      const LevelLaw& law, double* out, int count) {
    int cells[kMaxReads];
    double fractions[kMaxReads];
    for (int i = 0; i < count; ++i) {
        const double position = (phases[i] + offset) * (ShapeTable::kPoints / ShapeTable::kPeriod);
        const int whole = static_cast<int>(position);
        fractions[i] = position - whole;
        cells[i] = whole & (ShapeTable::kPoints - 1);
    }
    float ends[2 * kMaxReads];
    for (int i = 0; i < count; ++i)
        std::memcpy(ends + 2 * i, shape.Points() + cells[i], 2 * sizeof(float));
    const auto [before, scale, after] = law;
    for (int i = 0; i < count; ++i) {
        const double from = ends[2 * i];
        const double level = from + fractions[i] * (ends[2 * i + 1] - from);
        out[i] = (level + before) * scale + after;
    }
}

inline void Locate(const ReadOrigin& origin, const double* offsets, ReadPoints& points) {
    const int length = origin.length;
    const int start = origin.cell + 1;
    const double distance = origin.distance;
    const int count = points.count;
    for (int i = 0; i < count; ++i) {
        const double x = offsets[i] + distance;
        const int whole = static_cast<int>(x);
        points.fractions[i] = x - whole;
        // whole < length and start + i <= 2 * length: two wraps at the most.
        int cell = whole + (start + i - length);
        cell += cell < 0 ? length : 0;
        cell -= cell >= length ? length : 0;
        points.cells[i] = cell;
    }
    for (int i = count; i % 4 != 0; ++i) {
        points.cells[i] = points.cells[count - 1];
        points.fractions[i] = points.fractions[count - 1];
    }
}

inline void MixPair(const GainedSamples& first, const GainedSamples& second, const double* tremolo,
                    float* out, int count) {
    const auto mix = [=](int i) {
        return first.samples[i] * first.gain + second.samples[i] * second.gain;
    };
    if (tremolo == nullptr) {
        for (int i = 0; i < count; ++i) out[i] = static_cast<float>(mix(i));
    } else {
        for (int i = 0; i < count; ++i) out[i] = static_cast<float>(mix(i) * tremolo[i]);
    }
}

inline void AddGained(const GainedSamples& from, const double* tremolo, const double* wet,
                      double* sum, int count) {
    const auto [samples, gain] = from;
    if (tremolo == nullptr) {
        for (int i = 0; i < count; ++i) sum[i] += samples[i] * gain * wet[i];
    } else {
        for (int i = 0; i < count; ++i) sum[i] += samples[i] * tremolo[i] * gain * wet[i];
    }
}
