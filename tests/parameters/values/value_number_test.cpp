// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_number.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "parameters/values/value_checks.h"
#include "parameters/values/value_decorators.h"
#include "parameters/values/value_scales.h"
#include "support/allocation_trap.h"

namespace {

constexpr double kTolerance = 1e-12;  // some roundings of 64-bit logarithms and powers

}  // namespace

TEST(ValueNumber, StepsFollowTheScaleOrAHundredthOfAShortRange) {
    const auto check = [](const auto& value, double inc, double maxinc) {
        EXPECT_NEAR(value.inc, inc, kTolerance);
        EXPECT_NEAR(value.maxinc, maxinc, kTolerance);
    };
    check(MValueDouble({}, 5, 0, 1), 0.001, 0.01);
    check(MValueDouble({}, 5, 3, 3), 1, 10);
    check(MValueInt32({}, 0, -1500, 1499), 2, 20);
    check(MValueFrequency(), 1, 100);
    check(MValueFrequency({}, 50, 20, 110), 0.9, 9);
    check(MValueVolume(), 0.0004f, 0.1f);
    check(MValueVolume({}, 0, 0, 0.01), 0.0001, 0.001);
    check(MValuePan(), 0.01f, 0.1f);
    check(MValuePitch(), 0.0375, 0.375);
    check(MValuePitch({}, 1, 0, 20), 0.1, 1);
    check(MValueTimeMS({}, 0, 0, 0.01), 0.001f, 0.01f);
}

TEST(ValueNumber, PositionsMapToTheRangeAndBack) {
    const auto check = [](auto&& value, double position, const char* stored, double answered) {
        const MString ahead = value.GetTextFrom01(position);
        {
            AllocationTrap trap("Set01, Limit and Get01");
            value.Set01(position);
            value.Limit();
            EXPECT_NEAR(value.Get01(), answered, kTolerance) << stored;
        }
        EXPECT_EQ(value.GetString(), stored);
        EXPECT_EQ(value.GetTextInternal(), ahead) << stored;
    };
    MValueDouble linear({}, 0, -2, 6);
    check(linear, 0.25, "0.000000", 0.25);
    check(linear, 1.5, "6.000000", 1);
    check(linear, NAN, "-2.000000", 0);
    check(MValueFloat({}, 0, 0, 0.5), 0.5, "0.250000", 0.5);
    check(MValueDouble({}, 3, 3, 3), 1, "3.000000", 0);
    MValueFrequency frequency({}, 100, 10, 1000);
    check(frequency, 0.5, "100.000000", 0.5);
    check(frequency, NAN, "10.000000", 0);
    check(MValueFrequency({}, 50, 50, 50), 0, "50.000000", 1);
    MValueInt32 whole({}, 0, -2, 2);
    check(whole, 0.12, "-2", 0);
    check(whole, 0.125, "-1", 0.25);
    check(whole, NAN, "-2", 0);
    check(MValueInt16({}, 0, 0, 100000), 1, "32767", 0.32767);
    check(MValueInt64({}, 0, LLONG_MIN, LLONG_MAX), 1, "9223372036854775807", 1);
    MValueStepDouble stepped({}, 0, -1, 1, 0.25);
    check(stepped, 0.56, "0.000000", 0.5);
    check(stepped, 0.5625, "0.250000", 0.625);
}

TEST(ValueNumber, StepsAreLimitedInSizeAndRange) {
    MValueDouble value({}, 0.5, 0, 1);
    const auto step = [&value](int count, int shift) {
        value.Step(count, shift);
        return value.Get();
    };
    EXPECT_DOUBLE_EQ(step(1, 0), 0.501);
    EXPECT_DOUBLE_EQ(step(-1, 20), 0.491);
    EXPECT_DOUBLE_EQ(step(1, 2), 0.495);
    EXPECT_EQ(step(1000, 9), 1);
    EXPECT_FALSE(value.Step(1, 0));
    EXPECT_TRUE(value.StepFine(5));
    EXPECT_DOUBLE_EQ(value.Get(), 1.005);  // not limited

    MValueFrequency frequency({}, 100, 10, 1000);
    frequency.StepFine(-100);
    EXPECT_NEAR(frequency.Get(), std::pow(10, 1.8), 1e-9);

    MValueInt64 large({}, LLONG_MAX - 1, LLONG_MIN, LLONG_MAX);
    large.Step(1, 62);
    EXPECT_EQ(large.Get(), LLONG_MAX);
}

TEST(ValueNumber, AViewKeepsTheLiveNumberInItsRange) {
    double depth = 0.3;
    float gain = 5;
    std::atomic<double> shared = 0.25;
    MValueDouble view(MValueRef(&depth), 0.5, 0, 1);
    MValueFloat limited(MValueRef(&gain), 0.5, 0, 1);
    MValuePercents atomic{MValueRef(&shared)};
    EXPECT_EQ(depth, 0.3);
    EXPECT_FALSE(view.HasChanged());
    EXPECT_EQ(gain, 1);
    EXPECT_TRUE(limited.HasChanged());
    EXPECT_EQ(atomic.GetText(), "25.0%");

    view.Set(0.3);
    EXPECT_TRUE(view.HasChanged());
    EXPECT_TRUE(view.SetDefault());
    EXPECT_EQ(depth, 0.5);
    atomic.SetText("50");
    EXPECT_EQ(shared, 0.5);

    MValueRef own;
    const MValueRef copy(own);
    own.Set(2.5);
    EXPECT_EQ(copy.Get<double>(), 0);
}

TEST(ValueNumber, StoresItsNumberWithoutTheScale) {
    MValueVolume volume({}, 0.5);
    volume.key = "Gain";
    TestItem item;
    EXPECT_TRUE(volume.Store(item));
    EXPECT_EQ(item.texts["Gain"], "0.500000");
    const auto load = [&](const char* text) {
        item.Set("Gain", text);
        volume.Load(item);
        return volume.Get();
    };
    EXPECT_EQ(load("0.25"), 0.25);
    EXPECT_EQ(load("no number"), 0.25);
    EXPECT_EQ(load("7"), 1);
    item.texts.clear();
    volume.Load(item);
    EXPECT_EQ(volume.Get(), 0.5);
}

TEST(ValueNumber, LayoutItemsDescribeIt) {
    TestItem item{{"id", "Depth"}, {"min", "-4"},  {"max", "4"},          {"default", "2"},
                  {"value", "3"},  {"inc", "0.5"}, {"format", "{0;.1} x"}};
    MValueDouble value;
    value.LoadXmlAttributes(item);
    EXPECT_EQ(value.key, "Depth");
    EXPECT_EQ(value.GetText(), "3.0 x");
    EXPECT_EQ(value.Get01(), 0.875);
    EXPECT_EQ(value.defaultValue, 2);
    EXPECT_EQ(value.maxinc, 0.5);  // raised to inc

    TestItem valueOnly{{"value", "0.25"}, {"min", "low"}};
    MValueDouble other;
    other.LoadXmlAttributes(valueOnly);
    EXPECT_EQ(other.defaultValue, 0.25);
    EXPECT_EQ(other.min, 0);

    TestItem range{{"min", "1"}, {"max", "100"}, {"step", "0.5"}, {"value", "10"}};
    MValueFrequency frequency;
    frequency.LoadXmlAttributes(range);
    EXPECT_NEAR(frequency.Get01(), 0.5, kTolerance);
    MValueStepDouble stepped;
    stepped.LoadXmlAttributes(range);
    stepped.SetText("10.7");
    EXPECT_EQ(stepped.Get(), 10.5);
}

TEST(ValueDecorators, ChangeThePositionAlone) {
    MValueDouble inner({}, 0, 0, 1);
    MValueScaleSqr square(inner);
    MValueScalePower<4> fourth(inner);
    EXPECT_TRUE(square.Set01(0.5));
    EXPECT_EQ(inner.Get(), 0.25);
    EXPECT_EQ(square.Get01(), 0.5);
    EXPECT_EQ(square.GetTextFrom01(0.3), "0.0900");
    EXPECT_TRUE(fourth.Set01(0.5));
    EXPECT_EQ(inner.Get(), 0.0625);
    EXPECT_EQ(fourth.GetTextObjectFrom01(0.5).text, "0.0625");
    EXPECT_TRUE(fourth.StepFine(100));
    EXPECT_NEAR(inner.Get(), 0.1296, kTolerance);
    EXPECT_TRUE(square.SetText("0.04"));
    EXPECT_EQ(square.Get01(), 0.2);
}
