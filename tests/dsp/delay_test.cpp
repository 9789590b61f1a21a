// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/delay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/signals.h"

namespace {

using Line = MAudioFilters::Delay<float>;

// The line's samples, oldest first, read without disturbing it.
std::vector<float> History(const Line& line) {
    std::vector<float> history;
    for (int i = 0; i < line.Length(); ++i)
        history.push_back(line.Cells()[(line.Index() + i) % line.Length()]);
    return history;
}

TEST(DelayLine, StretchesItsHistoryBetweenItsEnds) {
    for (const int from : {1, 2, 3, 10, 441}) {
        for (const int to : {1, 2, 3, 7, 88, 441, 1411}) {
            Line line;
            line.Resize(from);
            const Audio noise = Noise(1, from + from / 2 + 1, 1);  // a turned ring
            for (const float x : noise[0]) line.Exchange(x);
            const std::vector<float> before = History(line);
            EXPECT_EQ(line.Resize(to), from != to);
            const std::vector<float> after = History(line);
            for (int i = 0; i < to; ++i) {
                const double place = to > 1 ? double(i) * (from - 1) / (to - 1) : 0;
                const int cell = std::min(static_cast<int>(place), std::max(from - 2, 0));
                const double next = from > 1 ? before[cell + 1] : before[cell];
                const double expected = before[cell] + (place - cell) * (next - before[cell]);
                ASSERT_NEAR(after.at(i), expected, 1e-6) << from << " to " << to << " at " << i;
            }
        }
    }
}

TEST(DelayLine, GivesMemoryBackOnlyWhenLarge) {
    const struct {
        int length, capacity;
    } rows[] = {{2097152, 2097152}, {1300000, 2097152}, {3000000, 4194304},
                {1249999, 4194304}, {1300000, 4194304}, {1250000, 2097152}};
    Line line;
    for (const auto& [length, capacity] : rows) {
        line.Resize(length);
        EXPECT_EQ(line.Capacity(), capacity) << length;
    }
}

// Whatever the cuts, a block is the same as its samples one by one.
TEST(DelayLine, ExchangesBlocksLikeSingleSamples) {
    for (const int length : {1, 2, 5, 63, 64, 65, 500}) {
        Line single, blocks;
        single.Resize(length);
        blocks.Resize(length);
        for (const int count : {1, 64, 3, 64, 64, 17, 5, 2, 64}) {
            const std::vector<float> in = Noise(1, count, 1)[0];
            std::vector<float> out(in.size());
            blocks.Exchange(in.data(), out.data(), count);
            for (std::size_t i = 0; i < in.size(); ++i)
                ASSERT_EQ(out[i], single.Exchange(in[i])) << "length " << length;
            ASSERT_EQ(History(blocks), History(single)) << "length " << length;
        }
    }
}

}  // namespace
