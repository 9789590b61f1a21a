// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <clocale>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "foundation/objects/random.h"
#include "parameters/effect_parameters.h"
#include "parameters/plugin_double.h"

// What a host sees of records of every kind, and who hears of a change.

namespace {

// An effect with a list of records, which notes what it is told.
struct EffectDouble : MPlugin {
    explicit EffectDouble(int count) : records(static_cast<std::size_t>(count)) {
        descriptor.parameters = records.data();
        descriptor.parameterCount = count;
    }
    void ParameterChanged(int index) override { changed += std::to_string(index) + " "; }
    void Update() override { changed += "update "; }

    std::vector<ParameterRecord> records;
    std::string changed;
};

MString Hertz(double value) { return MString::FromDouble(std::pow(10, value), 0).Append(" Hz"); }

std::optional<double> ReadHertz(const MString& text) {
    const std::optional<double> hertz = ReadNumber(text);
    return hertz ? std::optional(std::log10(*hertz)) : std::nullopt;
}

// One record of each kind: 0 float, 1 with a law and a format, 2 with a text of its own, 3 and 4
// integers, 5 enumeration, 6 boolean, 7 group with and 8 without a switch.
class AdapterKinds : public testing::Test {
protected:
    AdapterKinds() {
        auto& r = effect.records;
        r[0].SetFloat("float", "f", -1, 3, 1);
        r[1].SetFloat("law", "l", 1, 17, 5);
        r[1].law = PositionLaw::FourthPower;
        r[1].format = "{+0.2} dB";
        r[2].SetFloat("text", "t", 1, 4, 2);
        r[2].text = {Hertz, ReadHertz};
        r[2].format = "unused";
        r[3].SetInteger("integer", "i", -2, 8, 0);
        r[4].SetInteger("times", "x", 1, 16, 1);
        r[4].format = "{0}x";
        r[5].SetEnumeration("list", "e", {"One", "Two", "Three"}, 1);
        r[6].SetBoolean("switch", "b", true);
        r[7].SetGroup("group", "g", &onOff);
        r[8].SetGroup("head", "");
        AddEffectParameters({&plugin, "Band 1", "Band 1", true}, effect, plugin.table, map);
        plugin.table.Rebuild(true);
    }
    AutomationAdapter& At(int index) { return *plugin.table.Find(index).adapter; }

    static constexpr int kCount = 9;
    std::atomic<std::uint8_t> onOff = 0;
    EffectDouble effect{kCount};
    PluginDouble plugin;
    ParameterAdapterMap map;
};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST_F(AdapterKinds, TurnPositionsIntoValuesAndTexts) {
    const struct {
        int index;
        double position, value, back;
        const char* text;
    } rows[] = {
        {0, 0.25, 0, 0.25, "0.000000"},
        {0, 1.5, 5, 1.5, "5.000000"},  // beyond the range, as told
        {1, 0.5, 2, 0.5, "+2.00 dB"},
        {1, 0, 1, 0, "+1.00 dB"},
        {2, 1 / 3.0, 2, 1 / 3.0, "100 Hz"},
        {3, 0.449, 2, 0.4, "2"},  // -2 + trunc(4.49 + 0.5)
        {3, 0.45, 3, 0.5, "3"},
        {3, 0.04, -2, 0, "-2"},
        {3, -9, -2, 0, "-2"},
        {3, 9, 8, 1, "8"},
        {3, kNaN, 0, 0.2, "0"},  // the default
        {4, 1, 16, 1, "16x"},
        {5, 0.24, 0, 0, "One"},
        {5, 0.25, 1, 0.5, "Two"},
        {5, 7, 2, 1, "Three"},
        {6, 0.499, 0, 0, "Off"},
        {6, 0.5, 1, 1, "On"},
        {7, 0.5, 1, 1, "On"},
        {8, 1, 0, 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.index) + " at " + std::to_string(row.position));
        AutomationAdapter& adapter = At(row.index);
        const MString before = adapter.GetParameterValueName(0);
        EXPECT_EQ(adapter.GetParameterValueNameFrom01(0, row.position).ToUtf8(), row.text);
        EXPECT_EQ(adapter.GetParameterValueName(0), before) << "told only, not stored";
        adapter.SetParameter(0, row.position, true);
        EXPECT_NEAR(effect.records[static_cast<std::size_t>(row.index)].Get(), row.value, 1e-12);
        EXPECT_NEAR(adapter.GetParameter(0), row.back, 1e-12);
        EXPECT_EQ(adapter.GetParameterValueName(0).ToUtf8(), row.text);
    }
    EXPECT_EQ(effect.changed, "") << "silent";
}

TEST_F(AdapterKinds, ReadTheirTextsUnderEveryLocale) {
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    const struct {
        int index;
        const char* text;
        bool told;
        double value;
    } rows[] = {
        {0, "2.5 or so", true, 2.5}, {0, "9", true, 3},   {0, "none", false, 1},
        {1, "+2.50 dB", true, 2.5},  {2, "100", true, 2}, {3, "2.5", true, 3},
        {3, "-7", true, -2},         {4, "4x", true, 4},  {5, "three", true, 2},
        {5, "Four", false, 1},       {6, "off", true, 0}, {6, "0.4", true, 0},
        {6, "perhaps", false, 1},    {7, "ON", true, 1},  {8, "On", false, 0},
        {2, "-5", true, 2},  // the text's reader answers NaN: the default
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ParameterRecord& record = effect.records[static_cast<std::size_t>(row.index)];
        record.Set(record.defaultValue);
        double position = -1;
        EXPECT_EQ(At(row.index).ParsePositionFromText(0, row.text, position), row.told);
        EXPECT_EQ(record.Get(), record.defaultValue) << "answered only";
        EXPECT_EQ(At(row.index).ParseParameterValueName(0, row.text), row.told);
        EXPECT_EQ(record.Get(), row.value);
        if (row.told) {
            EXPECT_NEAR(position, At(row.index).GetParameter(0), 1e-12);
        } else {
            EXPECT_EQ(position, -1);
        }
    }
    std::setlocale(LC_NUMERIC, "C");
}

TEST_F(AdapterKinds, TellDefaultsAlongAStraightLine) {
    const double told[] = {0.5, 0.25, 1 / 3.0, 0.2, 0, 0.5, 1, 0, 0};
    for (int p = 0; p < kCount; ++p)
        EXPECT_NEAR(At(p).GetParameterDefaultValue(0), told[p], 1e-12) << p;
    EXPECT_NEAR(At(1).GetParameter(0), std::sqrt(0.5), 1e-12) << "under its law";
}

TEST_F(AdapterKinds, TellTheEffectWhatChangedAndWhenItIsToUpdate) {
    effect.records[3].Clear(ParameterFlag::kUpdates);
    At(3).SetParameter(0, 1, false);
    effect.UpdateIfNeeded();
    At(0).SetParameter(0, 1, false);
    At(1).ParseParameterValueName(0, "3");
    effect.UpdateIfNeeded();
    effect.UpdateIfNeeded();
    SetRandomSeed(1);
    At(2).Randomize(1);
    EXPECT_NEAR(effect.records[2].Get(), 1 + 3 * 41 / 32767.0, 1e-12);
    EXPECT_EQ(effect.changed, "3 0 1 update 2 ");
    EXPECT_EQ(At(2).GetRandomizable(), 1);
    EXPECT_EQ(plugin.updates, 0) << "nothing is updated at once";
}

TEST_F(AdapterKinds, AreCalledAfterTheirOwnerAndSection) {
    AutomationAdapter& list = At(5);
    map.Find(5)->section = "Main";
    EXPECT_EQ(list.GetParameterName(0).ToUtf8(), "Band 1 - Main - list");
    EXPECT_EQ(list.GetParameterNameWithoutSection(0).ToUtf8(), "Band 1 - list");
    EXPECT_EQ(list.GetParameterSection(0).ToUtf8(), "Band 1 - Main");
    EXPECT_EQ(list.GetParameterID(0).ToUtf8(), "Band 1 e");
    EXPECT_EQ(list.GetParameterType(0), ParameterType::Enumeration);
    EXPECT_EQ(At(7).GetParameterName(0).ToUtf8(), "Band 1 - group");
    EXPECT_EQ(At(0).GetParameterSection(0).ToUtf8(), "Band 1");
    EXPECT_TRUE(At(7).automatable);
    EXPECT_FALSE(At(8).automatable);

    PluginDouble master;
    EXPECT_EQ(master.AddFloat("Input gain").GetParameterName(0).ToUtf8(), "Input gain");
    EXPECT_EQ(master.AddFloat("Input gain").GetParameterID(0).ToUtf8(), "Input gain");
}

TEST(EffectParameters, AreAddedInTheirOrderWithTheirSections) {
    EffectDouble effect(12);
    for (ParameterRecord& record : effect.records) record.SetFloat("p", "p", 0, 1, 0);
    effect.records[1].SetGroup("First", "");
    effect.records[3].type = ParameterType::None;
    effect.records[4].type = ParameterType::Hidden;
    effect.records[5].Clear(ParameterFlag::kTakesPart);
    effect.records[7].Raise(ParameterFlag::kNewSection);
    effect.records[9].SetGroup("Second", "");
    effect.records[9].Raise(ParameterFlag::kNewSection);
    PluginDouble plugin;
    ParameterAdapterMap map;
    AddEffectParameters({&plugin, {}, {}, false}, effect, plugin.table, map);
    const char* const sections[] = {"",      "First", "First", nullptr,  nullptr,  nullptr,
                                    "First", "",      "",      "Second", "Second", "Second"};
    int index = 0;
    for (int p = 0; p < 12; ++p) {
        ParameterMainBase* const adapter = map.Find(p);
        ASSERT_EQ(adapter != nullptr, sections[p] != nullptr) << p;
        if (adapter == nullptr) continue;
        EXPECT_EQ(adapter->section.ToUtf8(), sections[p]) << p;
        EXPECT_EQ(adapter->localIndex, p);
        EXPECT_EQ(plugin.table.Find(index++).adapter, adapter);
    }

    for (const int type : {6, 8, -1}) {
        effect.records[11].type = static_cast<ParameterType>(type);
        try {
            AddEffectParameters({&plugin, {}, {}, false}, effect, plugin.table, map);
            FAIL() << type;
        } catch (const MException& raised) {
            EXPECT_STREQ(raised.what(), "Invalid plugin parameter type.");
        }
    }
    EXPECT_EQ(plugin.table.ParameterCount(), index) << "nothing was added";
}

TEST(CustomParameters, CallTheirTwoHandlers) {
    struct Counter : MObject {
        void OnChange(const MOnParameterChangedParams& params) {
            changes += params.adapter->name.ToUtf8();
        }
        void OnUpdate(const MOnParameterChangedParams& params) {
            updates += params.adapter->name.ToUtf8();
        }
        std::string changes, updates;
    } counter;
    PluginDouble plugin;
    for (const char* name : {"a", "b"}) {
        PluginDouble::Float& adapter = plugin.AddFloat(name);
        adapter.changed.Connect<&Counter::OnChange>(&counter);
        adapter.updateDue.Connect<&Counter::OnUpdate>(&counter);
    }
    plugin.records[1].Clear(ParameterFlag::kUpdates);
    for (const bool silent : {true, false})
        for (const int index : {0, 1}) plugin.table.Find(index).adapter->SetParameter(0, 1, silent);
    EXPECT_EQ(counter.changes, "ab");
    EXPECT_EQ(counter.updates, "a");
}
