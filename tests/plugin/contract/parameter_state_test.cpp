// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "foundation/objects/random.h"
#include "plugin/contract/parameter_record.h"

// The flags as stored bits, and what randomising does in the long run.

namespace {

constexpr int kDraws = 100000;
// Of a mean of that many draws between 0 and 1, whose deviation is at most 1/2: five of its own.
constexpr double kMeanTolerance = 5 * 0.5 / 316.2;

struct Moments {
    double mean = 0, least = 1e9, largest = -1e9;
    std::map<double, int> counts;
};

// start is set before each draw.
Moments Draw(ParameterRecord& record, double amount, double start) {
    Moments result;
    for (int draw = 0; draw < kDraws; ++draw) {
        record.Set(start);
        record.Randomize(amount);
        const double value = record.Get();
        result.mean += value / kDraws;
        result.least = std::min(result.least, value);
        result.largest = std::max(result.largest, value);
        if (value == std::trunc(value)) ++result.counts[value];
    }
    return result;
}

}  // namespace

TEST(ParameterFlags, StandWhereTheBytesHaveThem) {
    const struct {
        std::uint32_t flag;
        int byte, bit;
    } rows[] = {
        {ParameterFlag::kTakesPart, 0, 0},       {ParameterFlag::kMain, 0, 1},
        {ParameterFlag::kSmoothed, 0, 3},        {ParameterFlag::kSmoothing, 0, 4},
        {ParameterFlag::kUpdates, 0, 5},         {ParameterFlag::kRandomizes, 0, 6},
        {ParameterFlag::kEnabled, 1, 2},         {ParameterFlag::kNewSection, 1, 3},
        {ParameterFlag::kRandomizesWhole, 1, 6},
    };
    for (const auto& row : rows) EXPECT_EQ(row.flag, 1u << (8 * row.byte + row.bit));
    EXPECT_EQ(ParameterFlag::kGroupBits, 0x18080u);
}

TEST(ParameterFlags, OfAMoveLeaveTheOthersAlone) {
    ParameterRecord record;
    record.SetFloat("a", "a", 0, 1, 0.5);
    record.Raise(ParameterFlag::kSmoothed);
    const std::uint32_t before = record.flags;
    record.SetSmoothing(true);
    EXPECT_EQ(record.flags, before | ParameterFlag::kSmoothing);
    record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
    record.Randomize(1);
    EXPECT_EQ(record.Effective(), 0.5) << "takes no part";
    record.Randomize(1, true);
    EXPECT_NE(record.Effective(), 0.5) << "forced";
    EXPECT_EQ(record.Get(), 0.5) << "while it moves, the draw is its target";
    record.SetSmoothing(false);
    EXPECT_EQ(record.flags, (ParameterFlag::kNew & ~0x60u) | ParameterFlag::kSmoothed);
}

TEST(Randomising, SpreadsFloatsEvenlyAlongTheKnob) {
    SetRandomSeed(7);
    ParameterRecord record;
    record.SetFloat("a", "a", 1, 3, 2);
    // The mean of r^n is 1 / (n + 1).
    for (const auto& [law, power] : {std::pair(PositionLaw::Linear, 1),
                                     {PositionLaw::Square, 2},
                                     {PositionLaw::FourthPower, 4}}) {
        record.law = law;
        const Moments drawn = Draw(record, 1, 1);
        EXPECT_NEAR(drawn.mean, 1 + 2.0 / (power + 1), 2 * kMeanTolerance);
        EXPECT_LT(drawn.least, 1.001);
        EXPECT_GT(drawn.largest, 2.999);
    }
    record.law = PositionLaw::Linear;
    const Moments near = Draw(record, 0.1, 2);  // position 0.5, by up to 0.1 either way
    EXPECT_NEAR(near.mean, 2, 0.2 * kMeanTolerance);
    EXPECT_NEAR(near.least, 1.8, 1e-3);
    EXPECT_NEAR(near.largest, 2.2, 1e-3);
    Moments end = Draw(record, 0.5, 3);  // half of the draws end at the end of the knob
    EXPECT_NEAR(end.counts[3] / double{kDraws}, 0.5, kMeanTolerance);
}

TEST(Randomising, ReachesWholeNumbersByTheirShares) {
    SetRandomSeed(9);
    ParameterRecord integer, list, boolean;
    integer.SetInteger("a", "a", 1, 5, 3);
    list.SetEnumeration("b", "b", {"0", "1", "2", "3"}, 0);
    boolean.SetBoolean("c", "c", false);
    const auto expect = [](Moments drawn, std::map<double, double> shares) {
        for (const auto& [value, share] : shares)
            EXPECT_NEAR(drawn.counts[value] / double{kDraws}, share, kMeanTolerance) << value;
        EXPECT_EQ(drawn.counts.size(), shares.size());
    };
    // Rounding gives the ends half a share; an index is cut off.
    expect(Draw(integer, 1, 3), {{1, 0.125}, {2, 0.25}, {3, 0.25}, {4, 0.25}, {5, 0.125}});
    expect(Draw(list, 1, 0), {{0, 0.25}, {1, 0.25}, {2, 0.25}, {3, 0.25}});
    // From the middle by up to 4 * 0.25 either way.
    expect(Draw(integer, 0.25, 3), {{2, 0.25}, {3, 0.5}, {4, 0.25}});
    expect(Draw(boolean, 0.5, 0), {{0, 0.5}, {1, 0.5}});
    expect(Draw(boolean, 0.3, 1), {{1, 1}});
}
