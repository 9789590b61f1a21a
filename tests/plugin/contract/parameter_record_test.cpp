// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/parameter_record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <utility>

#include "foundation/objects/random.h"

namespace {

// Enough for the generator's largest number, one in 32768, to come up for every kind of record.
constexpr int kDraws = 200000;
// Of a mean of that many draws between 0 and 1, whose deviation is at most 1/2: five of its own.
constexpr double kMeanTolerance = 5 * 0.5 / 447.2;

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

TEST(ParameterRecord, SetsTheTargetWhileAMoveIsUnderWay) {
    ParameterRecord record;
    record.SetFloat("Rate", "Rate", 0, 1, 0.5);
    EXPECT_EQ(record.flags, 0x461u) << "takes part, updates, is randomised and enabled";
    record.SetSmoothing(true);
    EXPECT_EQ(record.Effective(), 0.5);
    record.SetEffective(0.75);
    record.Clear(ParameterFlag::kUpdates | ParameterFlag::kRandomizes);
    record.Randomize(1);
    EXPECT_EQ(record.Effective(), 0.75) << "takes no part in randomising";
    record.Randomize(1, true);
    EXPECT_NE(record.Effective(), 0.75) << "forced";
    EXPECT_EQ(record.Get(), 0.5);
    record.SetSmoothing(false);
    EXPECT_EQ(record.Effective(), 0.5);
    EXPECT_EQ(record.flags, 0x401u) << "the others are left alone";
}

// The generator's numbers from seed 1 are well known: 41, 18467, 6334, 26500, 19169, 15724. The
// results follow from them by hand; a row that draws too much or too little shifts all later ones.
TEST(Randomising, FollowsOneSequence) {
    std::atomic<std::uint8_t> onOff = 1;
    ParameterRecord number, list, none, boolean, group, head;
    number.SetFloat("", "", 0, 2, 1);
    number.law = PositionLaw::FourthPower;
    list.SetEnumeration("", "", {"0", "1", "2", "3", "4", "5", "6"}, 1);
    boolean.SetBoolean("", "", false);
    group.SetGroup("", "", &onOff);
    head.SetGroup("", "");
    const auto draw = [](ParameterRecord& record, double amount) {
        record.Randomize(amount);
        return record.Get();
    };
    SetRandomSeed(1);
    EXPECT_NEAR(draw(number, 1), 2 * std::pow(41 / 32767.0, 4), 1e-12);
    EXPECT_NEAR(draw(number, 0.5), 2 * std::pow(18508 / 32767.0 - 0.5, 4), 1e-12);
    EXPECT_EQ(number.stored, number.Get()) << "no ramp to what is drawn";
    EXPECT_EQ(draw(list, 0.5), 0) << "6334: round(0.1933 * 7 - 3.5) = -2 from 1 on, held at 0";
    EXPECT_EQ(draw(boolean, 0.49) + draw(head, 1), 0);
    EXPECT_EQ(draw(group, 1), 0) << "26500 is even";
    EXPECT_EQ(draw(boolean, 0.5), 1) << "19169 is odd";
    number.law = PositionLaw::Linear;
    number.Raise(ParameterFlag::kRandomizesWhole);
    EXPECT_EQ(draw(number, 1), 1) << "15724: 0.96";
    none.SetEnumeration("", "", {}, 0);
    EXPECT_EQ(draw(none, 1), 0) << "without options";
}

TEST(Randomising, SpreadsFloatsEvenlyAlongTheKnob) {
    SetRandomSeed(7);
    ParameterRecord record;
    record.SetFloat("a", "a", 1, 3, 2);
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
        EXPECT_EQ(drawn.size(), expected.size()) << "out of range, or not whole";
    };
    // Rounding gives the ends half a share; an index is cut off.
    expect(Draw(integer, 1, 3), {{1, 0.125}, {2, 0.25}, {3, 0.25}, {4, 0.25}, {5, 0.125}});
    expect(Draw(list, 1, 0), {{0, 0.5}, {1, 0.5}});
    // From the middle by up to 4 * 0.25 either way, and from the end.
    expect(Draw(integer, 0.25, 3), {{2, 0.25}, {3, 0.5}, {4, 0.25}});
    expect(Draw(integer, 0.25, 5), {{4, 0.25}, {5, 0.75}});
    expect(Draw(boolean, 0.5, 0), {{0, 0.5}, {1, 0.5}});
    expect(Draw(boolean, 0.3, 1), {{1, 1}});
}
