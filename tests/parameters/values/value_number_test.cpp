// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_number.h"

#include <gtest/gtest.h>

#include <atomic>

#include "parameters/values/value_checks.h"
#include "parameters/values/value_decorators.h"
#include "parameters/values/value_scales.h"

TEST(ValueNumber, AViewKeepsTheLiveNumberInItsRange) {
    float gain = 5;
    std::atomic<double> depth = 0.3;
    MValueFloat limited(MValueRef(&gain), 0.5, 0, 1);
    MValuePercents view{MValueRef(&depth), 0.5};
    EXPECT_EQ(gain, 1);
    EXPECT_EQ(depth, 0.3);
    EXPECT_TRUE(limited.HasChanged() && !view.HasChanged());
    view.Set(0.3);
    EXPECT_TRUE(view.HasChanged()) << "written, if with the same number";
    EXPECT_TRUE(view.SetDefault());
    EXPECT_EQ(depth, 0.5);

    MValueRef own;
    const MValueRef copy(own);
    own.Set(2.5);
    EXPECT_EQ(copy.Get<double>(), 0);
}

TEST(ValueNumber, ReadsWhatAnItemOfATreeTells) {
    TestItem item{{"id", "Depth"}, {"min", "-4"},  {"max", "4"},  {"default", "2"},
                  {"value", "3"},  {"inc", "0.5"}, {"maxinc", ""}};
    MValueDouble value;
    value.LoadXmlAttributes(item);
    EXPECT_EQ(value.Get01(), 0.875);
    EXPECT_EQ(value.maxinc, 0.5) << "raised to inc";
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
    EXPECT_NEAR(inner.Get(), 0.1296, 1e-12);
    EXPECT_TRUE(square.SetText("0.04"));
    EXPECT_EQ(square.Get01(), 0.2);
}
