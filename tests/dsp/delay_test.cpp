// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/delay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <vector>

namespace {

using Line = MAudioFilters::Delay<float>;

// The line's samples, oldest first, read without disturbing it.
std::vector<float> History(const Line& line) {
    std::vector<float> history;
    for (int i = 0; i < line.Length(); ++i)
        history.push_back(line.Cells()[(line.Index() + i) % line.Length()]);
    return history;
}

void Feed(Line& line, int count) {
    for (int i = 1; i <= count; ++i) line.Exchange(static_cast<float>(i));
}

TEST(DelayLine, TakesAnyLengthBelowOneAsOneSampleOfSilence) {
    for (const int length : {1, 0, -5}) {
        Line line;
        EXPECT_TRUE(line.Resize(length));
        EXPECT_EQ(line.Length(), 1);
        EXPECT_EQ(line.Exchange(7.0f), 0.0f);
        EXPECT_EQ(line.Exchange(8.0f), 7.0f);
    }
}

TEST(DelayLine, LeavesEverythingAloneWhenTheLengthStays) {
    Line line;
    line.Resize(5);
    Feed(line, 7);
    EXPECT_FALSE(line.Resize(5));
    EXPECT_EQ(line.Index(), 2);
    EXPECT_EQ(History(line), (std::vector<float>{3, 4, 5, 6, 7}));
}

TEST(DelayLine, FillsANewLengthWithItsOnlySample) {
    Line line;
    line.Resize(1);
    line.Exchange(0.25f);
    line.Resize(100);
    EXPECT_EQ(History(line), std::vector<float>(100, 0.25f));
}

// A straight line of samples stays one: both ends keep theirs and those between are linear.
TEST(DelayLine, StretchesItsHistoryBetweenItsEnds) {
    for (const int from : {2, 3, 10, 441}) {
        for (const int to : {2, 3, 7, 88, 1411}) {
            Line line;
            line.Resize(from);
            Feed(line, from + from / 2 + 1);  // a turned ring
            const std::vector<float> before = History(line);
            line.Resize(to);
            const std::vector<float> after = History(line);
            EXPECT_EQ(from == to || line.Index() == 0, true);
            ASSERT_EQ(after.size(), static_cast<std::size_t>(to));
            EXPECT_EQ(after.front(), before.front());
            EXPECT_EQ(after.back(), before.back());
            for (int i = 0; i < to; ++i) {
                const double line01 = static_cast<double>(i) / (to - 1);
                const double expected = before.front() + line01 * (before.back() - before.front());
                EXPECT_NEAR(after[static_cast<std::size_t>(i)], expected, 1e-4)
                    << from << " to " << to;
            }
        }
    }
}

TEST(DelayLine, ResamplesACurveInsteadOfDroppingIt) {
    Line line;
    line.Resize(400);
    for (int i = 0; i < 400; ++i) line.Exchange(std::sin(static_cast<float>(i) * 0.03f));
    line.Resize(150);
    const std::vector<float> after = History(line);
    for (std::size_t i = 0; i < after.size(); ++i)
        EXPECT_NEAR(after[i], std::sin(static_cast<double>(i) * 399 / 149 * 0.03), 2e-4);
}

TEST(DelayLine, GivesMemoryBackOnlyWhenLarge) {
    Line line;
    line.Resize(2097152);
    EXPECT_EQ(line.Capacity(), 2097152);
    line.Resize(1300000);
    EXPECT_EQ(line.Capacity(), 2097152);
    line.Resize(3000000);
    EXPECT_EQ(line.Capacity(), 4194304);
    line.Resize(1249999);
    EXPECT_EQ(line.Capacity(), 4194304);
    line.Resize(1300000);
    line.Resize(1250000);
    EXPECT_EQ(line.Capacity(), 2097152);
}

// Whatever the cuts, a block is the same as its samples one by one.
TEST(DelayLine, ExchangesBlocksLikeSingleSamples) {
    for (const int length : {1, 2, 5, 63, 64, 65, 500}) {
        Line single;
        Line blocks;
        single.Resize(length);
        blocks.Resize(length);
        float next = 1;
        for (const int count : {1, 64, 3, 64, 64, 17, 5, 2, 64}) {
            std::vector<float> in(static_cast<std::size_t>(count));
            std::iota(in.begin(), in.end(), next);
            next += static_cast<float>(count);
            std::vector<float> out(in.size());
            blocks.Exchange(in.data(), out.data(), count);
            for (std::size_t i = 0; i < in.size(); ++i)
                ASSERT_EQ(out[i], single.Exchange(in[i])) << "length " << length;
            ASSERT_EQ(History(blocks), History(single)) << "length " << length;
        }
    }
}

}  // namespace
