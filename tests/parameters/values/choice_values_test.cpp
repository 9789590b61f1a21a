// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "parameters/values/enumerations.h"
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

TEST(ChoiceValues, AreDescribedByName) {
    MValueEnum<MRangeMode> mode({}, MRangeMode::UpOnly);
    TestItem valueOnly{{"value", "interval"}};
    mode.LoadXmlAttributes(valueOnly);
    EXPECT_EQ(mode.defaultIndex, 4);
    TestItem both{{"value", "Down only"}, {"default", "Full range"}};
    mode.LoadXmlAttributes(both);
    EXPECT_EQ(mode.Get(), 3);
    EXPECT_TRUE(mode.SetDefault());
    EXPECT_EQ(mode.Get(), 1);
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
