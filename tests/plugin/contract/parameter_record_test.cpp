// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/parameter_record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

#include "foundation/objects/random.h"

TEST(ParameterRecord, BendsPositionsByItsLaw) {
    ParameterRecord record;
    record.SetFloat("Range", "Range", 0.0001, 0.1, 0.01);
    for (const auto& [law, exponent] : {std::pair(PositionLaw::Linear, 1),
                                        {PositionLaw::Square, 2},
                                        {PositionLaw::FourthPower, 4}}) {
        record.law = law;
        for (const double position : {0.0, 0.3, 0.5, 1.0}) {
            const double value = 0.0001 + 0.0999 * std::pow(position, exponent);
            EXPECT_NEAR(record.ValueAt(position), value, 1e-16);
            EXPECT_NEAR(record.PositionOf(value), position, 1e-4);
        }
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
    ParameterRecord linear, fourth, integer, list, boolean, group, head, fixed, moved, whole;
    linear.SetFloat("", "", 0, 2, 1);
    fourth.SetFloat("", "", 0.0001, 0.1, 0.01);
    fourth.law = PositionLaw::FourthPower;
    integer.SetInteger("", "", 1, 10, 5);
    list.SetEnumeration("", "", {"0", "1", "2", "3", "4", "5", "6"}, 0);
    boolean.SetBoolean("", "", false);
    group.SetGroup("", "", &onOff);
    head.SetGroup("", "");
    fixed.SetFloat("", "", 0, 1, 0.25);
    fixed.Clear(ParameterFlag::kRandomizes);
    moved.SetFloat("", "", 0, 2, 1);
    whole.SetFloat("", "", 0, 10, 5);
    whole.Raise(ParameterFlag::kRandomizesWhole);
    const struct {
        ParameterRecord& record;
        double amount, result;
    } rows[] = {
        {linear, 1, 2 * 41 / 32767.0},
        {fourth, 1, 0.0001 + 0.0999 * std::pow(18467 / 32767.0, 4)},
        {integer, 0.5, 2},  // 6334: a step of round(0.1933 * 9 - 4.5) = -3
        {list, 1, 5},       // 26500: trunc(5.66)
        {boolean, 0.49, 0},
        {head, 1, 0},
        {fixed, 1, 0.25},
        {boolean, 0.5, 1},  // 19169 is odd
        {group, 1, 0},      // 15724 is even
        // From position 0.5 by 11478 / 32767 * 0.4 - 0.2.
        {moved, 0.2, 2 * (0.3 + 0.4 * 11478 / 32767.0)},
        {whole, 1, 9},  // 29358: 8.96
    };
    SetRandomSeed(1);
    for (const auto& [record, amount, result] : rows) {
        record.Randomize(amount);
        EXPECT_NEAR(record.Get(), result, 1e-12);
        const bool ramps = record.type == ParameterType::Float;
        EXPECT_TRUE(!ramps || record.stored == record.Get()) << "no ramp to what is drawn";
    }
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
