// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "parameters/plugin_double.h"
#include "support/allocation_trap.h"

// The list of adapters, its way through a block, and the editors that follow.

namespace {

struct NotingListener : MObject, ParameterListener {
    void ParameterUpdated(ParameterMainBase& adapter) override {
        names += adapter.name.ToUtf8();
        if (changesAgain) adapter.SetParameter(0, 0.1, false);
    }
    void OnChange(const MOnParameterChangedParams&) { told += "c"; }
    void OnUpdate(const MOnParameterChangedParams&) { told += "u"; }

    std::string names, told;
    bool changesAgain = false;
};

std::string OrderOf(const AutomationTable& table) {
    std::string order;
    for (const auto& adapter : table.Adapters())
        order += adapter->GetParameterName(0).ToUtf8() + std::to_string(adapter->baseIndex) + " ";
    return order;
}

}  // namespace

TEST(AutomationTable, FindsTheAdapterOfEveryIndex) {
    EXPECT_EQ(PluginDouble().table.Find(0).adapter, nullptr);
    for (const int adapterCount : {1, 2, 300}) {
        PluginDouble plugin;
        std::vector<AutomationAdapter*> served;
        for (int a = 0; a < adapterCount; ++a)
            served.insert(served.end(), 1 + a * 5 % 11, &plugin.AddFloat("", 1 + a * 5 % 11));
        plugin.table.Rebuild(false);
        const int total = plugin.table.ParameterCount();
        ASSERT_EQ(total, static_cast<int>(served.size()));
        for (int index = -2; index < total + 2; ++index) {
            const AutomationTable::Place place = plugin.table.Find(index);
            EXPECT_EQ(place.adapter, served[std::clamp(index, 0, total - 1)]) << index;
            const auto first = std::find(served.begin(), served.end(), place.adapter);
            EXPECT_EQ(place.index, index - (first - served.begin()));
        }
    }
}

TEST(AutomationTable, KeepsTheMastersIndicesApartFromBandsAndPassingEdits) {
    PluginDouble plugin;
    AutomationAdapter& passing = plugin.AddFloat("t", 1, false, true);
    plugin.AddFloat("a", 2);
    plugin.AddFloat("b", 1, true);
    AutomationAdapter& run = plugin.AddFloat("c", 2);
    plugin.AddFloat("u", 1, true, true);
    plugin.table.Rebuild(false);
    EXPECT_EQ(OrderOf(plugin.table), "a0 b2 c3 t5 u6 ");
    plugin.table.Rebuild(true);
    EXPECT_EQ(OrderOf(plugin.table), "a0 c2 b4 t5 u6 ");
    EXPECT_EQ(plugin.table.HostParameterCount(), 5);
    run.SendAllAutomation();
    EXPECT_EQ(plugin.sent, "2=0.50 3=0.50 ");

    plugin.table.changed.Add(passing);
    plugin.table.Retire(passing);
    plugin.table.Retire(passing);
    plugin.table.DestroyTemporary();
    EXPECT_EQ(OrderOf(plugin.table), "a0 c2 b4 u5 ");
    EXPECT_EQ(plugin.table.changed.Count(), 0);
}

TEST(ChangedAdapters, HaveTheirEditorsUpdatedOnceForManyChanges) {
    PluginDouble plugin;
    NotingListener listener;
    for (const char* name : {"a", "b", "c"}) plugin.AddFloat(name).listener = &listener;
    PluginDouble::Float& unseen = plugin.AddFloat("unseen");
    unseen.changed.Connect<&NotingListener::OnChange>(&listener);
    unseen.updateDue.Connect<&NotingListener::OnUpdate>(&listener);
    const auto set = [&](int index, double position, bool silent = false) {
        AllocationTrap trap("change");
        plugin.table.SetIfChanged(index, position, silent);
    };
    for (const auto& [index, position] : {std::pair(2, 0.25), {0, 0.25}, {2, 0.75}, {3, 0.25}})
        set(index, position);
    set(1, 0.25, true);
    set(1, 0.25 + 0.9e-7);
    EXPECT_EQ(plugin.records[1].Get(), 0.25) << "as good as the same";
    unseen.record.Clear(ParameterFlag::kUpdates);
    unseen.SetParameter(0, 1, false);
    EXPECT_EQ(listener.told, "cuc");
    plugin.table.changed.UpdateEditors();
    EXPECT_EQ(listener.names, "ca");
    listener.changesAgain = true;
    set(1, 0.25 + 1.1e-7);
    plugin.table.changed.UpdateEditors();
    EXPECT_EQ(listener.names, "cab");
    EXPECT_EQ(plugin.table.changed.Count(), 1) << "what changed meanwhile waits";
}
