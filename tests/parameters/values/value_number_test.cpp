// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>

#include "parameters/values/value_checks.h"
#include "parameters/values/value_decorators.h"
#include "parameters/values/value_scales.h"
#include "support/allocation_trap.h"

namespace {

constexpr double kTolerance = 1e-12;  // some roundings of 64-bit logarithms and powers
constexpr auto kLowest64 = std::numeric_limits<long long>::min();
constexpr auto kHighest64 = std::numeric_limits<long long>::max();

}  // namespace

TEST(ValueNumber, StepsFollowTheScaleOrAHundredthOfAShortRange) {
    struct Case {
        std::shared_ptr<MValueDouble> value;
        double inc, maxinc;
    };
    const auto make = []<typename Value>(Value*, auto... range) {
        return std::make_shared<Value>(MValueRef(), range...);
    };
    const MValueFrequency wide, narrow({}, 50, 20, 110);
    EXPECT_EQ(wide.inc, 1);
    EXPECT_EQ(wide.maxinc, 100);
    EXPECT_NEAR(narrow.inc, 0.9, kTolerance);
    EXPECT_NEAR(narrow.maxinc, 9, kTolerance);
    const Case cases[] = {
        {make((MValueDouble*)nullptr, 5.0, 0.0, 1.0), 0.001, 0.01},
        {make((MValueDouble*)nullptr, 5.0, 3.0, 3.0), 1, 10},
        {make((MValueVolume*)nullptr), 0.0004f, 0.1f},
        {make((MValueVolume*)nullptr, 0.0, 0.0, 0.01), 0.0001, 0.001},
        {make((MValuePan*)nullptr), 0.01f, 0.1f},
        {make((MValuePan*)nullptr, 0.0, 0.0, 0.5), 0.005, 0.05},
        {make((MValuePitch*)nullptr), 0.0375, 0.375},
        {make((MValuePitch*)nullptr, 1.0, 0.0, 20.0), 0.1, 1},
        {make((MValueTimeMS*)nullptr, 0.0, 0.0, 0.01), 0.001f, 0.01f},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(c.value->inc, c.inc, kTolerance);
        EXPECT_NEAR(c.value->maxinc, c.maxinc, kTolerance);
    }
    EXPECT_EQ(MValueInt32({}, 0, 0, 999).inc, 1);
    EXPECT_EQ(MValueInt32({}, 0, -1500, 1499).inc, 2);
    EXPECT_EQ(MValueInt32({}, 0, -1500, 1499).maxinc, 20);
}

TEST(ValueNumber, PositionsMapToTheRangeAndBack) {
    struct Case {
        std::shared_ptr<MValue> value;
        double position;
        const char* stored;
        double answered;
    };
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    const auto linear = std::make_shared<MValueDouble>(MValueRef(), 0, -2, 6);
    const auto frequency = std::make_shared<MValueFrequency>(MValueRef(), 100, 10, 1000);
    const auto whole = std::make_shared<MValueInt32>(MValueRef(), 0, -2, 2);
    const auto stepped = std::make_shared<MValueStepDouble>(MValueRef(), 0, -1, 1, 0.25);
    const Case cases[] = {
        {linear, 0.25, "0.000000", 0.25},
        {linear, 1.5, "6.000000", 1},
        {linear, -1, "-2.000000", 0},
        {linear, kNoNumber, "-2.000000", 0},
        {frequency, 0.5, "100.000000", 0.5},
        {frequency, kNoNumber, "10.000000", 0},
        {whole, 0.12, "-2", 0},
        {whole, 0.125, "-1", 0.25},
        {whole, kNoNumber, "-2", 0},
        {stepped, 0.56, "0.000000", 0.5},
        {stepped, 0.5625, "0.250000", 0.625},
        {std::make_shared<MValueInt16>(MValueRef(), 0, 0, 100000), 1, "32767", 0.32767},
        {std::make_shared<MValueInt64>(MValueRef(), 0, kLowest64, kHighest64), 1,
         "9223372036854775807", 1},
        {std::make_shared<MValueFloat>(MValueRef(), 0, 0, 0.5), 0.5, "0.250000", 0.5},
        {std::make_shared<MValueDouble>(MValueRef(), 3, 3, 3), 1, "3.000000", 0},
        {std::make_shared<MValueFrequency>(MValueRef(), 50, 50, 50), 0, "50.000000", 1},
    };
    for (const Case& c : cases) {
        const MString ahead = c.value->GetTextFrom01(c.position);
        c.value->Set01(c.position);
        EXPECT_EQ(c.value->GetString(), c.stored);
        EXPECT_NEAR(c.value->Get01(), c.answered, kTolerance) << c.stored;
        EXPECT_EQ(c.value->GetTextInternal(), ahead) << c.stored;
    }
}

TEST(ValueNumber, StepsAreLimitedInSizeAndRange) {
    MValueDouble value({}, 0.5, 0, 1);
    EXPECT_TRUE(value.Step(1, 0));
    EXPECT_DOUBLE_EQ(value.Get(), 0.501);
    EXPECT_TRUE(value.Step(-1, 20));
    EXPECT_DOUBLE_EQ(value.Get(), 0.491);
    EXPECT_TRUE(value.Step(1, 2));
    EXPECT_DOUBLE_EQ(value.Get(), 0.495);
    EXPECT_TRUE(value.Step(1000, 9));
    EXPECT_FALSE(value.Step(1, 0));
    EXPECT_TRUE(value.StepFine(5));
    EXPECT_DOUBLE_EQ(value.Get(), 1.005);
    value.Limit();
    EXPECT_EQ(value.Get(), 1);

    MValueFrequency frequency({}, 100, 10, 1000);
    frequency.StepFine(-100);
    EXPECT_NEAR(frequency.Get(), std::pow(10, 1.8), 1e-9);
    frequency.StepFine(2000);
    EXPECT_NEAR(frequency.Get(), 1000, 1e-9);

    MValueInt64 large({}, kHighest64 - 1, kLowest64, kHighest64);
    large.Step(1, 62);
    EXPECT_EQ(large.Get(), kHighest64);
    MValueInt64 exact({}, (1LL << 60) + 1, 0, kHighest64);
    exact.inc = exact.maxinc = 1;
    exact.StepFine(1);
    EXPECT_EQ(exact.Get(), (1LL << 60) + 2);
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
    EXPECT_FALSE(view.SetDefault());
    EXPECT_EQ(depth, 0.5);
    atomic.SetText("50");
    EXPECT_EQ(shared.load(), 0.5);

    MValueRef own;
    own.Set(1.5);
    const MValueRef copy(own);
    own.Set(2.5);
    EXPECT_EQ(copy.Get<double>(), 1.5);
    EXPECT_EQ(MValueRef(MValueRef(&depth)).Get<double>(), 0.5);
}

TEST(ValueNumber, StoresItsNumberWithoutTheScale) {
    MValueVolume volume({}, 0.5);
    volume.key = "Gain";
    TestItem item;
    EXPECT_TRUE(volume.Store(item));
    EXPECT_EQ(item.texts["Gain"], "0.500000");
    const std::pair<const char*, double> loads[] = {
        {"0.25", 0.25}, {"7", 1}, {"-1.5e1", 0}, {"no number", 0.75}};
    for (const auto& [text, number] : loads) {
        volume.Set(0.75);
        item.Set("Gain", text);
        volume.Load(item);
        EXPECT_EQ(volume.Get(), number) << text;
    }
    TestItem empty;
    volume.Load(empty);
    EXPECT_EQ(volume.Get(), 0.5);
    MValueInt16 small({}, 0, -100, 100);
    small.SetString("70000");
    EXPECT_EQ(small.GetString(), "32767");
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
    EXPECT_TRUE(value.HasChanged());

    TestItem valueOnly{{"value", "0.25"}, {"maxinc", "0.3"}, {"min", "low"}};
    MValueDouble other;
    other.LoadXmlAttributes(valueOnly);
    EXPECT_EQ(other.defaultValue, 0.25);
    EXPECT_EQ(other.maxinc, 0.3);
    EXPECT_EQ(other.min, 0);

    TestItem range{{"min", "1"}, {"max", "100"}, {"step", "0.5"}, {"value", "10"}};
    MValueFrequency frequency;
    frequency.LoadXmlAttributes(range);
    EXPECT_NEAR(frequency.Get01(), 0.5, kTolerance);
    MValueStepDouble stepped;
    stepped.LoadXmlAttributes(range);
    stepped.Set(10.7);
    stepped.Limit();
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
    EXPECT_EQ(fourth.Get01(), 0.5);
    EXPECT_EQ(fourth.GetTextObjectFrom01(0.5).text, "0.0625");
    EXPECT_TRUE(fourth.StepFine(100));
    EXPECT_NEAR(inner.Get(), 0.1296, kTolerance);
    EXPECT_TRUE(fourth.Step(-1, 0));
    EXPECT_NEAR(inner.Get(), 0.1286, kTolerance);
    EXPECT_TRUE(square.SetText("0.04"));
    EXPECT_EQ(square.Get01(), 0.2);
    inner.ClearChanged();
    EXPECT_FALSE(square.HasChanged());
}

TEST(ValueNumber, PositionsAndLimitsDoNotAllocate) {
    MValueFrequency frequency;
    MValueStepDouble stepped({}, 0, 0, 1, 0.1);
    MValueInt32 whole({}, 0, 0, 100);
    MValueScalePower<4> fourth(frequency);
    AllocationTrap trap("positions");
    for (MValue* const value :
         std::initializer_list<MValue*>{&frequency, &stepped, &whole, &fourth}) {
        value->Set01(0.3);
        value->Limit();
        value->Step(1, 1);
        value->StepFine(1);
        EXPECT_GT(value->Get01(), 0.2);
    }
}
