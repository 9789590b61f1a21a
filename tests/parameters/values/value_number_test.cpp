// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_number.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "parameters/values/value_checks.h"
#include "parameters/values/value_decorators.h"
#include "parameters/values/value_scales.h"

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

TEST(ValueNumber, StepsAreLimitedInSizeAndRange) {
    MValueDouble value({}, 0.5, 0, 1);
    for (const auto& [count, shift, number] :
         {std::tuple{1, 0, 0.501}, {-1, 20, 0.491}, {1, 2, 0.495}, {1000, 9, 1.0}}) {
        EXPECT_TRUE(value.Step(count, shift));
        EXPECT_DOUBLE_EQ(value.Get(), number);
    }
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
    EXPECT_EQ(gain, 1);
    EXPECT_TRUE(limited.HasChanged() && !view.HasChanged());
    view.Set(0.3);
    EXPECT_TRUE(view.HasChanged()) << "written, if with the same number";
    EXPECT_TRUE(view.SetDefault());
    EXPECT_EQ(depth, 0.5);
    atomic.SetText("50");
    EXPECT_EQ(shared, 0.5);

    MValueRef own;
    const MValueRef copy(own);
    own.Set(2.5);
    EXPECT_EQ(copy.Get<double>(), 0);
}

TEST(ValueNumber, ReadsWhatAnItemOfATreeTells) {
    TestItem item{{"id", "Depth"}, {"min", "-4"},  {"max", "4"},          {"default", "2"},
                  {"value", "3"},  {"inc", "0.5"}, {"format", "{0;.1} x"}};
    MValueDouble value;
    value.LoadXmlAttributes(item);
    EXPECT_EQ(value.GetText(), "3.0 x");
    EXPECT_EQ(value.Get01(), 0.875);
    EXPECT_EQ(value.maxinc, 0.5);  // raised to inc

    EXPECT_TRUE(value.Save(item));
    EXPECT_EQ(item.GetAttribute("Depth"), "3.000000");
    for (const auto& [text, number] : {std::pair("1.5", 1.5), {"no number", 1.5}, {"7", 4.0}}) {
        item.SetAttribute("Depth", text);
        EXPECT_TRUE(value.Load(item));
        EXPECT_EQ(value.Get(), number) << text;
    }
    TestItem valueOnly{{"value", "0.25"}, {"min", "low"}};
    EXPECT_FALSE(value.Load(valueOnly));
    EXPECT_EQ(value.Get(), 2) << "the default";
    value.LoadXmlAttributes(valueOnly);
    EXPECT_EQ(value.defaultValue, 0.25);
    EXPECT_EQ(value.min, -4);
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
    EXPECT_TRUE(fourth.StepFine(100));
    EXPECT_NEAR(inner.Get(), 0.1296, kTolerance);
    EXPECT_TRUE(square.SetText("0.04"));
    EXPECT_EQ(square.Get01(), 0.2);
}
