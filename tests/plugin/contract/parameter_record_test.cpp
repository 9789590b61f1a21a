// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/parameter_record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "foundation/objects/random.h"

TEST(ParameterRecord, BendsPositionsByItsLaw) {
    const struct {
        PositionLaw law;
        double position, value;
    } rows[] = {
        {PositionLaw::Linear, 0.5, 0.0001 + 0.0999 / 2},
        {PositionLaw::Square, 0.5, 0.0001 + 0.0999 / 4},
        {PositionLaw::FourthPower, 0.5, 0.0001 + 0.0999 / 16},
        {PositionLaw::FourthPower, 0, 0.0001},
        {PositionLaw::FourthPower, 1, 0.1},
    };
    for (const auto& row : rows) {
        ParameterRecord record;
        record.SetFloat("Range", "Range", 0.0001, 0.1, 0.01);
        record.law = row.law;
        EXPECT_NEAR(record.ValueAt(row.position), row.value, 1e-16);
        EXPECT_NEAR(record.PositionOf(row.value), row.position, 1e-12);
    }
}

TEST(ParameterRecord, ASetGoesToTheTargetWhileAMoveIsUnderWay) {
    ParameterRecord record;
    record.SetFloat("Rate", "Rate", -2, 2, -1);
    record.SetSmoothing(true);
    EXPECT_EQ(record.Effective(), -1);
    record.SetEffective(0.5);
    EXPECT_EQ(record.Get(), -1);
    EXPECT_EQ(record.Effective(), 0.5);
    record.SetSmoothing(false);
    EXPECT_EQ(record.Effective(), -1);
}

// The generator's numbers from seed 1 are well known: 41, 18467, 6334, 26500, 19169, 15724, 11478,
// 29358. The results follow from them by hand; a row that draws too much or too little shifts all
// later ones.
TEST(ParameterRecord, RandomisesByOneSequence) {
    std::atomic<std::uint8_t> onOff = 1;
    ParameterRecord linear, fourth, whole, integer, list, boolean, group, head, fixed;
    linear.SetFloat("a", "a", 0, 2, 1);
    fourth.SetFloat("b", "b", 0.0001, 0.1, 0.01);
    fourth.law = PositionLaw::FourthPower;
    integer.SetInteger("c", "c", 1, 10, 5);
    list.SetEnumeration("d", "d", {"0", "1", "2", "3", "4", "5", "6"}, 0);
    boolean.SetBoolean("e", "e", false);
    group.SetGroup("f", "f", &onOff);
    head.SetGroup("g", "g");
    fixed.SetFloat("h", "h", 0, 1, 0.25);
    fixed.Clear(ParameterFlag::kRandomizes);
    whole.SetFloat("i", "i", 0, 10, 5);
    whole.Raise(ParameterFlag::kRandomizesWhole);

    SetRandomSeed(1);
    linear.Randomize(1);
    EXPECT_NEAR(linear.Get(), 2 * 41 / 32767.0, 1e-12);
    EXPECT_EQ(linear.stored, linear.Get());
    fourth.Randomize(1);
    EXPECT_NEAR(fourth.Get(), 0.0001 + 0.0999 * std::pow(18467 / 32767.0, 4), 1e-12);
    integer.Randomize(0.5);  // 6334: a step of round(0.1933 * 9 - 4.5) = -3
    EXPECT_EQ(integer.Get(), 2);
    list.Randomize(1);  // 26500: trunc(5.66)
    EXPECT_EQ(list.Get(), 5);
    boolean.Randomize(0.49);
    head.Randomize(1);
    fixed.Randomize(1);
    EXPECT_EQ(fixed.Get(), 0.25);
    boolean.Randomize(0.5);  // 19169 is odd
    EXPECT_EQ(boolean.Get(), 1);
    group.Randomize(1);  // 15724 is even
    EXPECT_EQ(onOff, 0);
    linear.Set(1);
    linear.Randomize(0.2);  // from position 0.5 by 11478 / 32767 * 0.4 - 0.2
    EXPECT_NEAR(linear.Get(), 2 * (0.3 + 0.4 * 11478 / 32767.0), 1e-12);
    whole.Randomize(1);  // 29358: 8.96
    EXPECT_EQ(whole.Get(), 9);
}

TEST(ParameterRecord, StaysInItsRangeHoweverOftenItIsRandomised) {
    ParameterRecord number, integer, list;
    number.SetFloat("a", "a", -1, 3, 2.9);
    integer.SetInteger("b", "b", 1, 10, 10);
    list.SetEnumeration("c", "c", {"0", "1", "2", "3", "4", "5", "6"}, 6);
    std::set<double> seen;
    SetRandomSeed(3);
    // 200,000 draws: the generator's largest number, 1 in 32768, comes up for each kind of record.
    for (int draw = 0; draw < 200000; ++draw) {
        const double amount = draw % 2 == 0 ? 1 : 0.3;
        for (ParameterRecord* record : {&number, &integer, &list}) {
            record->Randomize(amount);
            ASSERT_GE(record->Get(), record->min);
            ASSERT_LE(record->Get(), record->max);
        }
        seen.insert({integer.Get(), 100 + list.Get()});
    }
    EXPECT_EQ(seen.size(), 17u) << "a value that never comes, or one that is not whole";
}
