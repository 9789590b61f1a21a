// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/fft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <thread>
#include <vector>

#include "support/allocation_trap.h"
#include "support/signals.h"

namespace {

using Samples = std::vector<float>;
using Complex = std::complex<double>;

FftHolder MakeSpec(int order) {
    FftSpec* spec = nullptr;
    EXPECT_EQ(FftCreate(&spec, order, kFftUnscaled, 0), kVecDone);
    return FftHolder(spec);
}

// A transform in a work buffer and on samples that both stand at odd places.
Samples Transformed(VecStatus (*transform)(float*, const FftSpec*, void*), const FftSpec& spec,
                    const Samples& in, int offset) {
    int bytes = 0;
    EXPECT_EQ(FftWorkSize(&spec, &bytes), kVecDone);
    std::vector<std::byte> work(bytes + offset);
    Samples array(offset, 0);
    array.insert(array.end(), in.begin(), in.end());
    {
        const AllocationTrap trap("transform");
        EXPECT_EQ(transform(array.data() + offset, &spec, work.data() + offset), kVecDone);
    }
    return Samples(array.begin() + offset, array.end());
}

// One value of the transform, as it is defined.
Complex SlowBin(const Samples& samples, std::size_t k) {
    const std::size_t n = samples.size();
    Complex sum = 0;
    for (std::size_t t = 0; t < n; ++t)
        sum += double(samples[t]) * std::polar(1.0, -2 * std::numbers::pi * (k * t % n) / n);
    return sum;
}

// A value of a packed spectrum; both ends are real.
Complex Bin(const Samples& packed, std::size_t k) {
    if (k == 0) return packed[0];
    if (k == packed.size() / 2) return packed[1];
    return {packed[2 * k], packed[2 * k + 1]};
}

}  // namespace

TEST(Fft, IsTheTransformWithItsEndsInFrontWhereverItsArraysLie) {
    for (int order = 1; order <= 16; ++order) {
        const std::size_t n = std::size_t{1} << order;
        const Samples samples = Noise(1, static_cast<int>(n), 1, order)[0];
        const FftHolder spec = MakeSpec(order);
        const Samples packed = Transformed(FftForward, *spec, samples, 0);
        const Samples back = Transformed(FftInverse, *spec, packed, 0);
        ASSERT_EQ(Transformed(FftForward, *spec, samples, order % 4 + 1), packed);
        ASSERT_EQ(Transformed(FftInverse, *spec, packed, order % 4 + 1), back);

        // Errors grow with the stages; the values are as large as the square root of n.
        const double tolerance = 1e-7 * order;
        for (std::size_t k = 0; k <= n / 2; k += std::max<std::size_t>(n / 128, 1))
            ASSERT_NEAR(std::abs(Bin(packed, k) - SlowBin(samples, k)), 0, tolerance * std::sqrt(n))
                << n << " at " << k;
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_NEAR(back[i] / n, samples[i], tolerance) << n << " at " << i;
    }
}

TEST(Fft, RefusesWhatItCannotDo) {
    FftSpec* spec = nullptr;
    for (const auto& [order, flags] : {std::pair(0, 8), {17, 8}, {10, 0}})
        EXPECT_EQ(FftCreate(&spec, order, flags, 0), -6) << order;
    const FftHolder held = MakeSpec(1);
    float sample = 7;
    for (const auto transform : {FftForward, FftInverse}) {
        EXPECT_EQ(transform(nullptr, held.get(), &sample), -8);
        EXPECT_EQ(transform(&sample, nullptr, &sample), -8);
        EXPECT_EQ(transform(&sample, held.get(), nullptr), -8);
    }
}

TEST(Fft, IsPlannedByManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([] {
            for (int order = 2; order < 13; ++order) MakeSpec(order);
        });
    for (std::thread& thread : threads) thread.join();
}
