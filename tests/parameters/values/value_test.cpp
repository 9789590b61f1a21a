// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>

#include "parameters/values/value_checks.h"
#include "parameters/values/value_list.h"
#include "parameters/values/value_scales.h"

namespace {

// A client with words of its own for one value.
struct Words : MObject {
    void OnText(const MOnCustomTextParams& params) {
        const bool isSet = params.mode == MOnCustomTextParams::Mode::Set;
        if (isSet) params.value.Set01(params.text == "many" ? 1 : 0);
        if (!isSet) params.text = params.value.Get01() > 0.5 ? "many" : "few";
    }
};

}  // namespace

TEST(Values, AViewKeepsTheLiveNumberInItsRange) {
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

TEST(Values, ReadsWhatAnItemOfATreeTells) {
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

TEST(ChoiceValues, AListMayChangeUnderItsValue) {
    MStringList names;
    MValueStringList value({}, names);
    EXPECT_EQ(value.GetText(), "");
    EXPECT_FALSE(value.Set01(1));
    EXPECT_EQ(value.Get01(), 0);
    names = {"Velocity", u"\u00c9clat"};
    EXPECT_TRUE(value.SetText("eclat"));
    EXPECT_EQ(value.Get(), 1);
    names.Delete(1);
    value.Limit();
    EXPECT_EQ(value.GetText(), "Velocity");
}

TEST(WholeNumbers, OfferEachOfTheirNumbersAndOtherWords) {
    Words words;
    MValueInt32 voices({}, 2, 1, 10);
    EXPECT_EQ(voices.GetItemCount(), 10);
    EXPECT_EQ(voices.GetItemObject(4).text, "5");
    voices.SetItem(9);
    EXPECT_EQ(voices.Get(), 10);
    voices.customText.Connect<&Words::OnText>(&words);
    EXPECT_TRUE(voices.SetText("one"));
    EXPECT_EQ(voices.Get(), 1);
    EXPECT_EQ(voices.GetTextObject().text, "few");
    EXPECT_EQ(voices.GetTextFrom01(1), "10") << "the scale's own";
    EXPECT_EQ(MValueInt32({}, 0, INT32_MIN, INT32_MAX).GetItemCount(), INT32_MAX);
    EXPECT_EQ(MValueDouble().GetItemCount(), 0);
}
