// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <map>

#include "foundation/objects/random.h"
#include "plugin/contract/parameter_record.h"

// The flags of a move, and what randomising does in the long run.

namespace {

constexpr int kDraws = 20000;
// Of a mean of that many draws between 0 and 1, whose deviation is at most 1/2: five of its own.
constexpr double kMeanTolerance = 5 * 0.5 / 141.4;

using Shares = std::map<double, double>;  // of the draws that gave a value

// start is set before each draw.
Shares Draw(ParameterRecord& record, double amount, double start) {
    Shares shares;
    for (int draw = 0; draw < kDraws; ++draw) {
        record.Set(start);
        record.Randomize(amount);
        shares[record.Get()] += 1.0 / kDraws;
    }
    return shares;
}

double Mean(const Shares& shares) {
    double mean = 0;
    for (const auto& [value, share] : shares) mean += value * share;
    return mean;
}

}  // namespace

TEST(ParameterFlags, OfAMoveLeaveTheOthersAlone) {
    ParameterRecord record;
    record.SetFloat("a", "a", 0, 1, 0.5);
    EXPECT_EQ(record.flags, 0x461u) << "takes part, updates, is randomised and enabled";
    record.SetSmoothing(true);
    record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
    record.Randomize(1);
    EXPECT_EQ(record.Effective(), 0.5) << "takes no part";
    record.Randomize(1, true);
    EXPECT_NE(record.Effective(), 0.5) << "forced";
    EXPECT_EQ(record.Get(), 0.5) << "while it moves, the draw is its target";
    record.SetSmoothing(false);
    EXPECT_EQ(record.flags, 0x401u);
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
        EXPECT_NEAR(Mean(Draw(record, 1, 1)), 1 + 2.0 / (power + 1), 2 * kMeanTolerance);
    }
    record.law = PositionLaw::Linear;
    const Shares near = Draw(record, 0.1, 2);  // position 0.5, by up to 0.1 either way
    EXPECT_NEAR(Mean(near), 2, 0.2 * kMeanTolerance);
    EXPECT_NEAR(near.rbegin()->first - near.begin()->first, 0.4, 1e-3);
    EXPECT_NEAR(Draw(record, 0.5, 3)[3], 0.5, kMeanTolerance) << "the end of the knob holds half";
}

TEST(Randomising, ReachesWholeNumbersByTheirShares) {
    SetRandomSeed(9);
    ParameterRecord integer, list, boolean;
    integer.SetInteger("a", "a", 1, 5, 3);
    list.SetEnumeration("b", "b", {"0", "1"}, 0);
    boolean.SetBoolean("c", "c", false);
    const auto expect = [](Shares drawn, const Shares& expected) {
        for (const auto& [value, share] : expected)
            EXPECT_NEAR(drawn[value], share, kMeanTolerance) << value;
        EXPECT_EQ(drawn.size(), expected.size());
    };
    // Rounding gives the ends half a share; an index is cut off.
    expect(Draw(integer, 1, 3), {{1, 0.125}, {2, 0.25}, {3, 0.25}, {4, 0.25}, {5, 0.125}});
    expect(Draw(list, 1, 0), {{0, 0.5}, {1, 0.5}});
    // From the middle by up to 4 * 0.25 either way.
    expect(Draw(integer, 0.25, 3), {{2, 0.25}, {3, 0.5}, {4, 0.25}});
    expect(Draw(boolean, 0.5, 0), {{0, 0.5}, {1, 0.5}});
    expect(Draw(boolean, 0.3, 1), {{1, 1}});
}
