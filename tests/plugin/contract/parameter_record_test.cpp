// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/parameter_record.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/objects/random.h"

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

// The generator's numbers from seed 1 are well known: 41, 18467, 6334, 26500, 19169, 15724, 11478,
// 29358, 26962, 24464, 5705, 28145, 23281. The
// results follow from them by hand; a row that draws too much or too little shifts all later ones.
TEST(Randomising, FollowsOneSequence) {
    std::atomic<std::uint8_t> onOff = 1;
    ParameterRecord number, integer, list, none, boolean, group, head;
    number.SetFloat("", "", 0, 2, 1);
    number.law = PositionLaw::FourthPower;
    integer.SetInteger("", "", 1, 5, 3);
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
    EXPECT_EQ(draw(integer, 1), 2) << "11478: 2.40";
    EXPECT_EQ(draw(integer, 1), 5) << "29358: 4.58";
    EXPECT_EQ(draw(integer, 0.25), 5) << "26962: 0.65 more, held at 5";
    EXPECT_EQ(draw(integer, 0.25), 5) << "24464: 0.49 more";
    EXPECT_EQ(draw(integer, 0.25), 4) << "5705: 0.65 less";
    EXPECT_EQ(draw(list, 1), 6) << "28145: 6.01";
    number.law = PositionLaw::Square;
    number.Clear(ParameterFlag::kRandomizesWhole);
    EXPECT_NEAR(draw(number, 1), 2 * std::pow(23281 / 32767.0, 2), 1e-12);
    SetRandomSeed(4028364353);  // the largest number is next
    EXPECT_EQ(draw(list, 1), 6) << "32767";
    none.SetEnumeration("", "", {}, 0);
    EXPECT_EQ(draw(none, 1), 0) << "without options";
}
