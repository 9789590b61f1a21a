// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/delay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "support/signals.h"

namespace {

// Oldest sample first; a new length is read off the straight lines between the old samples.
struct SlowLine {
    void Resize(int newLength) {
        const int from = static_cast<int>(cells.size()), to = std::max(newLength, 1);
        std::vector<float> stretched;
        for (int i = 0; i < to; ++i) {
            const double place = to > 1 ? double(i) * (from - 1) / (to - 1) : 0;
            const int k = static_cast<int>(place);
            const double next = cells[std::min(k + 1, from - 1)];
            stretched.push_back(static_cast<float>(cells[k] + (place - k) * (next - cells[k])));
        }
        cells = stretched;
    }
    float Exchange(float newest) {
        cells.push_back(newest);
        const float oldest = cells.front();
        cells.erase(cells.begin());
        return oldest;
    }
    std::vector<float> cells = {0};
};

}  // namespace

// Blocks, single samples and changes of length in any order.
TEST(DelayLine, DoesAsTheSlowOne) {
    constexpr int kLengths[] = {1, 2, 3, 0, 7, 63, 64, 65, 441, -1, 1411};
    constexpr int kCounts[] = {1, 2, 5, 17, 64, 200};
    std::minstd_rand generator;
    MAudioFilters::Delay<float> line;
    SlowLine slow;
    for (int round = 0; round < 3000; ++round) {
        if (round % 4 == 0) {
            const int before = line.Length(), length = kLengths[generator() % 11];
            EXPECT_EQ(line.Resize(length), std::max(length, 1) != before);
            slow.Resize(length);
        }
        const std::vector<float> in = Noise(1, kCounts[generator() % 6], 1, round)[0];
        std::vector<float> out(in.size());
        line.Exchange(in.data(), out.data(), static_cast<int>(in.size()));
        for (std::size_t i = 0; i < in.size(); ++i)
            ASSERT_NEAR(out[i], slow.Exchange(in[i]), 1e-6) << "length " << line.Length();
        ASSERT_NEAR(line.Exchange(0.25f), slow.Exchange(0.25f), 1e-6);
    }
}

TEST(DelayLine, GivesMemoryBackOnlyWhenLarge) {
    MAudioFilters::Delay<float> line;
    for (const auto& [length, capacity] : {std::pair(3000000, 4194304),
                                           {1249999, 4194304},
                                           {1300000, 4194304},
                                           {1250000, 2097152}}) {
        line.Resize(length);
        EXPECT_EQ(line.Capacity(), capacity) << length;
    }
}
