// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "foundation/objects/random.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"
#include "parameters/values/scale_texts.h"

// What a host sees of records of every kind, and who hears of a change.

namespace {

// An effect with records of every kind, which notes what it is told.
struct EffectDouble : MPlugin {
    EffectDouble() {
        records[0].SetGroup("group", "g", &onOff);
        records[1].SetFloat("float", "f", -1, 3, 1);
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
    void Update() override { changed += "update "; }

    std::atomic<std::uint8_t> onOff = 0;
    ParameterRecord records[12];
    std::string changed;
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

}  // namespace

TEST_F(AdapterKinds, TurnPositionsIntoValuesAndTexts) {
    const struct {
        int index;
        double position, value;
        const char* text;
    } rows[] = {{0, 0.5, 1, "On"},         {1, 0.25, 0, "0.000000"},
                {1, 1.5, 5, "5.000000"},   {2, 0.5, 2, "+2.00 dB"},
                {3, 1 / 3.0, 2, "100 Hz"}, {4, 0.449, 2, "2"},
                {4, 0.45, 3, "3"},         {4, -9, -2, "-2"},
                {4, std::nan(""), 0, "0"}, {5, 1, 16, "16x"},
                {6, 0.24, 0, "One"},       {6, 0.25, 1, "Two"},
                {6, 7, 2, "Three"},        {7, 1, 0, ""},
                {8, 0.499, 0, "Off"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.index) + " at " + std::to_string(row.position));
        ParameterMainBase& adapter = At(row.index);
        EXPECT_EQ(adapter.GetParameterValueNameFrom01(0, row.position).ToUtf8(), row.text);
        EXPECT_EQ(adapter.record.Get(), adapter.record.defaultValue) << "told only";
        adapter.SetParameter(0, row.position, true);
        EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), row.text);
        adapter.SetParameter(0, adapter.GetParameter(0), true);  // back and forth
        EXPECT_NEAR(adapter.record.Get(), row.value, 1e-12);
        adapter.record.Set(adapter.record.defaultValue);
    }
    EXPECT_EQ(effect.changed, "") << "silent";
}

TEST_F(AdapterKinds, ReadTexts) {
    const struct {
        int index;
        const char* text;
        double value;  // the default where the text tells none
    } rows[] = {{1, "2.5 or so", 2.5}, {1, "9", 3},       {1, "none", 1}, {2, "+2.50 dB", 2.5},
                {3, "100", 2},         {3, "-5", 2},      {4, "2.5", 3},  {4, "-7", -2},
                {5, "4x", 4},          {6, "three", 2},   {6, "Four", 1}, {8, "off", 0},
                {8, "0.4", 0},         {8, "perhaps", 1}, {0, "ON", 1},   {7, "On", 0}};
    for (const auto& row : rows) {
        ParameterMainBase& adapter = At(row.index);
        double position = adapter.GetParameter(0);
        const bool told = adapter.ParsePositionFromText(0, row.text, position);
        EXPECT_EQ(adapter.record.Get(), adapter.record.defaultValue) << "answered only";
        EXPECT_EQ(adapter.ParseParameterValueName(0, row.text), told);
        EXPECT_EQ(adapter.record.Get(), row.value) << row.text;
        EXPECT_NEAR(position, adapter.GetParameter(0), 1e-12);
        adapter.record.Set(adapter.record.defaultValue);
    }
}

TEST_F(AdapterKinds, TellTheEffectWhatChangedAndWhenItIsToUpdate) {
    effect.records[4].Clear(ParameterFlag::kUpdates);
    At(4).SetParameter(0, 1, false);
    effect.UpdateIfNeeded();
    At(1).SetParameter(0, 1, false);
    At(2).ParseParameterValueName(0, "3");
    effect.UpdateIfNeeded();
    effect.UpdateIfNeeded();
    SetRandomSeed(1);
    At(3).Randomize(1);
    EXPECT_NEAR(effect.records[3].Get(), 1 + 3 * 41 / 32767.0, 1e-12);
    EXPECT_EQ(effect.changed, "4 1 2 update 3 ");
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
