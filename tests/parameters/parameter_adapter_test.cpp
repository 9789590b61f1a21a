// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

#include "foundation/objects/random.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"
#include "parameters/values/scale_texts.h"
#include "support/rows.h"

// What a host sees of records of every kind, and who hears of a change.

namespace {

// An effect with records of every kind, which notes what it is told.
struct EffectDouble : MPlugin {
    EffectDouble() {
        records[0].SetGroup("group", "g", &onOff);
        records[1].SetFloat("float", "f", -1, 3, 1);
        records[1].law = PositionLaw::Square;
        records[2].SetFloat("law", "l", 1, 17, 5);
        records[2].law = PositionLaw::FourthPower;
        records[2].format = "{+0.2} dB";
        records[3].SetFloat("text", "t", 1, 4, 2);
        records[3].text = {LogFrequencyText, ReadLogFrequency};
        records[4].SetInteger("integer", "i", -2, 8, 0);
        records[5].SetInteger("times", "x", 1, 16, 1);
        records[5].format = "{0}x";
        records[5].Raise(ParameterFlag::kNewSection);
        records[6].SetEnumeration("list", "e", {"One", "Two", "Three"}, 1);
        records[7].SetGroup("head", "");
        records[8].SetBoolean("switch", "b", true);
        records[9].type = ParameterType::Hidden;
        records[10].SetBoolean("no part", "n", true);
        records[10].Clear(ParameterFlag::kTakesPart);
        descriptor.parameters = records;
        descriptor.parameterCount = 12;
    }
    void ParameterChanged(int index) override { changed += std::to_string(index) + " "; }
    void Update() override {
        changed += "update ";
        if (std::exchange(asksAgain, false)) RequestUpdate();
    }

    std::atomic<std::uint8_t> onOff = 0;
    ParameterRecord records[12];
    std::string changed;
    bool asksAgain = false;
};

class AdapterKinds : public testing::Test {
protected:
    AdapterKinds() { Add(); }
    void Add() { AddEffectParameters({&plugin, "B 1", "Band 1", true}, effect, plugin.table, map); }
    ParameterMainBase& At(int index) { return *map.Find(index); }

    EffectDouble effect;
    PluginDouble plugin;
    ParameterAdapterMap map;
};

void CheckPosition(ParameterMainBase& adapter, double position, const std::string& text) {
    const double before = adapter.record.Get();
    EXPECT_EQ(adapter.GetParameterValueNameFrom01(0, position).ToUtf8(), text);
    EXPECT_EQ(adapter.record.Get(), before) << "told only";
    adapter.SetParameter(0, position, true);
    adapter.SetParameter(0, adapter.GetParameter(0), true);  // back and forth
    EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), text);
}

// The text of the value that is made of a typed one; "same" where it stays.
void CheckTyped(ParameterMainBase& adapter, const std::string& text, const std::string& typed) {
    const bool stays = text == "same";
    const double before = adapter.record.Get();
    double position = adapter.GetParameter(0);
    EXPECT_EQ(adapter.ParsePositionFromText(0, typed.c_str(), position), !stays);
    EXPECT_EQ(adapter.record.Get(), before) << "answered only";
    EXPECT_EQ(adapter.ParseParameterValueName(0, typed.c_str()), !stays);
    EXPECT_NEAR(adapter.GetParameter(0), position, 1e-12);
    EXPECT_TRUE(stays || adapter.GetParameterValueName(0).ToUtf8() == text);
}

}  // namespace

TEST_F(AdapterKinds, TellPositionsAndReadTexts) {
    ForEachRow(QUILLOREA_ADAPTER_CASES, [&](const Row& row) {
        int index = 0;
        while (At(index).record.name != row.section.c_str()) ++index;
        if (row.sign == "->") CheckPosition(At(index), row.Number(), row.right);
        if (row.sign == "<-") CheckTyped(At(index), row.left, row.right);
    });
}

TEST_F(AdapterKinds, TellTheEffectWhatChangedAndWhenItIsToUpdate) {
    for (const double position : {std::nan(""), HUGE_VAL}) At(1).SetParameter(0, position, false);
    EXPECT_EQ(effect.records[1].Get(), 1) << "was no position";
    effect.records[4].Clear(ParameterFlag::kUpdates);
    At(4).SetParameter(0, 1, false);
    effect.UpdateIfNeeded();
    At(1).SetParameter(0, 1, false);
    At(2).ParseParameterValueName(0, "3");
    effect.asksAgain = true;
    for (int block = 0; block < 3; ++block) effect.UpdateIfNeeded();
    SetRandomSeed(1);
    At(3).Randomize(1);
    EXPECT_NEAR(effect.records[3].Get(), 1 + 3 * 41 / 32767.0, 1e-12);
    EXPECT_EQ(effect.changed, "4 1 2 update update 3 ");
    EXPECT_EQ(plugin.updates, 0) << "nothing is updated at once";
}

TEST_F(AdapterKinds, StandInTheirOrderUnderTheirNames) {
    EXPECT_EQ(At(0).GetParameterName(0).ToUtf8(), "Band 1 - group");
    EXPECT_EQ(At(1).GetParameterName(0).ToUtf8(), "Band 1 - group - float");
    EXPECT_EQ(At(1).GetParameterSection(0).ToUtf8(), "B 1 - group");
    EXPECT_EQ(At(6).GetParameterSection(0).ToUtf8(), "B 1") << "a new section";
    EXPECT_EQ(At(7).GetParameterID(0).ToUtf8(), "Band 1 head");
    EXPECT_EQ(At(8).GetParameterID(0).ToUtf8(), "Band 1 b");
    EXPECT_EQ(plugin.table.Find(8).adapter, &At(8));
    EXPECT_EQ(At(1).GetParameterNameWithoutSection(0).ToUtf8(), "Band 1 - float");
    EXPECT_EQ(plugin.table.ParameterCount(), 9) << "the rest takes no part";
    EXPECT_TRUE(At(0).automatable && !At(7).automatable);
    // A default is told along a straight line, under a law too.
    EXPECT_EQ(At(2).GetParameterDefaultValue(0), 0.25);
    EXPECT_NEAR(At(2).GetParameter(0), std::sqrt(0.5), 1e-12);

    for (const int type : {6, 8, -1}) {
        effect.records[11].type = static_cast<ParameterType>(type);
        EXPECT_THAT([&] { Add(); },
                    testing::ThrowsMessage<MException>("Invalid plugin parameter type."));
    }
    EXPECT_EQ(plugin.table.ParameterCount(), 9) << "nothing was added";
}
