// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "parameters/plugin_double.h"
#include "support/allocation_trap.h"

// The list of adapters, its way through a block, and the editors that follow.

namespace {

struct CountingListener : ParameterListener {
    void ParameterUpdated(ParameterMainBase& adapter) override {
        ++calls;
        names += adapter.name.ToUtf8();
        if (changesAgain) adapter.SetParameter(0, 0.1, false);
    }
    int calls = 0;
    std::string names;
    bool changesAgain = false;
};

std::string OrderOf(const AutomationTable& table) {
    std::string order;
    for (const auto& adapter : table.Adapters())
        order += adapter->GetParameterName(0).ToUtf8() + std::to_string(adapter->baseIndex) + " ";
    return order;
}

class Interpolation : public testing::Test {
protected:
    Interpolation() {
        records[0].Raise(ParameterFlag::kSmoothed);
        plugin.table.Rebuild(true);
    }
    void Set(int index, double position) { plugin.table.SetIfChanged(index, position, false); }

    PluginDouble plugin;
    AutomationInterpolation& interpolation = plugin.table.interpolation;
    std::deque<ParameterRecord>& records =
        (plugin.AddFloat("smooth"), plugin.AddFloat("jumps"), plugin.records);
};

}  // namespace

TEST(AutomationTable, FindsTheAdapterOfEveryIndex) {
    EXPECT_EQ(PluginDouble().table.Find(0).adapter, nullptr);
    for (const int adapterCount : {1, 2, 300}) {
        PluginDouble plugin;
        std::vector<std::pair<AutomationAdapter*, int>> served;
        for (int a = 0; a < adapterCount; ++a) {
            AutomationAdapter& adapter = plugin.AddFloat("", a % 7 == 0 ? 11 : 1 + a % 3);
            for (int i = 0; i < adapter.count; ++i) served.emplace_back(&adapter, i);
        }
        plugin.table.Rebuild(false);
        const int total = plugin.table.ParameterCount();
        ASSERT_EQ(total, static_cast<int>(served.size()));
        for (int index = -2; index < total + 2; ++index) {
            const AutomationTable::Place place = plugin.table.Find(index);
            const int nearest = std::min(std::max(index, 0), total - 1);
            EXPECT_EQ(place.adapter, served[static_cast<std::size_t>(nearest)].first) << index;
            EXPECT_EQ(place.index,
                      served[static_cast<std::size_t>(nearest)].second + index - nearest);
        }
    }
}

TEST(AutomationTable, KeepsTheMastersIndicesApartFromBandsAndPassingEdits) {
    PluginDouble plugin;
    AutomationAdapter& passing = plugin.AddFloat("t", 1, false, true);
    plugin.AddFloat("a", 2);
    plugin.AddFloat("b", 1, true);
    plugin.AddFloat("c");
    AutomationAdapter& other = plugin.AddFloat("u", 1, true, true);
    plugin.table.Rebuild(false);
    EXPECT_EQ(OrderOf(plugin.table), "a0 b2 c3 t4 u5 ");
    plugin.table.Rebuild(true);
    EXPECT_EQ(OrderOf(plugin.table), "a0 c2 b3 t4 u5 ");
    EXPECT_EQ(plugin.table.ParameterCount(), 6);
    EXPECT_EQ(plugin.table.HostParameterCount(), 4);

    plugin.table.changed.Add(passing);
    plugin.table.Retire(passing);
    plugin.table.Retire(passing);
    EXPECT_EQ(plugin.table.ParameterCount(), 6) << "may still be in use";
    plugin.table.DestroyTemporary();
    EXPECT_EQ(OrderOf(plugin.table), "a0 c2 b3 u4 ");
    EXPECT_EQ(plugin.table.changed.Count(), 0);
    plugin.table.changed.Add(other);
    plugin.table.Clear();
    plugin.table.changed.UpdateEditors();
    EXPECT_EQ(plugin.table.ParameterCount(), 0);
}

TEST(AutomationTable, TellsTheHostAllValuesOfARun) {
    PluginDouble plugin;
    plugin.AddFloat("a", 2);
    AutomationAdapter& adapter = plugin.AddFloat("b", 3);
    plugin.table.Rebuild(false);
    adapter.SendAllAutomation();
    EXPECT_EQ(plugin.sent, "2=0.50 3=0.50 4=0.50 ");
}

TEST(AutomationTable, LeavesAPositionThatIsTheSame) {
    PluginDouble plugin;
    CountingListener listener;
    plugin.AddFloat("a").listener = &listener;
    plugin.table.SetIfChanged(0, 0.5 + 0.9e-7, false);
    EXPECT_EQ(plugin.records[0].Get(), 0.5);
    EXPECT_EQ(plugin.table.changed.Count(), 0);
    plugin.table.SetIfChanged(0, 0.5 + 1.1e-7, false);
    EXPECT_EQ(plugin.records[0].Get(), 0.5 + 1.1e-7);
}

TEST(ChangedAdapters, HaveTheirEditorsUpdatedOnceForManyChanges) {
    PluginDouble plugin;
    CountingListener listener;
    for (const char* name : {"a", "b", "c"}) plugin.AddFloat(name).listener = &listener;
    plugin.AddFloat("unseen");
    const auto& adapters = plugin.table.Adapters();
    {
        AllocationTrap trap("changes");
        for (const int a : {2, 0, 2, 3, 2}) adapters[a]->SetParameter(0, 0.25, false);
        adapters[1]->SetParameter(0, 0.25, true);
    }
    plugin.table.changed.UpdateEditors();
    EXPECT_EQ(listener.names, "ca");

    listener.changesAgain = true;
    adapters[1]->SetParameter(0, 0.75, false);
    plugin.table.changed.UpdateEditors();
    EXPECT_EQ(listener.calls, 3) << "what changed meanwhile waits for the next time";
    EXPECT_EQ(plugin.table.changed.Count(), 1);
}

TEST_F(Interpolation, GoesAcrossTheBlockInSteps) {
    for (const int step : {2048, 256, 32, 8, 1}) {
        Set(0, 0.2);
        interpolation.Prepare(1);
        interpolation.Finish();
        Set(0, 0.6);
        Set(1, 0.6);
        plugin.updates = 0;
        constexpr int kBlock = 100;
        AllocationTrap trap("interpolation");
        ASSERT_TRUE(interpolation.Prepare(kBlock));
        for (int at = 0; at < kBlock; at += step) {
            if (at > 0) interpolation.Process(step);
            ASSERT_NEAR(records[0].Effective(), 0.2 + 0.4 * at / kBlock, 1e-12);
            EXPECT_EQ(records[1].Effective(), 0.6) << "is not smoothed";
            Set(0, 0.9);  // has no effect beyond the sub-block
        }
        interpolation.Finish();
        EXPECT_EQ(records[0].Effective(), 0.6);
        EXPECT_EQ(plugin.updates, 2 + (kBlock - 1) / step) << "once for each step and both ends";
        EXPECT_FALSE(interpolation.Prepare(kBlock)) << "has arrived";
    }
}

TEST_F(Interpolation, BeginsWithTheFirstBlockThatMoves) {
    records[0].Set(0.9);
    EXPECT_FALSE(interpolation.Prepare(64)) << "the first one takes note only";
    Set(0, 0.9 + 0.9e-5);
    EXPECT_FALSE(interpolation.Prepare(64));
    Set(0, 0.9 + 1.1e-5);  // small ways add up
    EXPECT_TRUE(interpolation.Prepare(64));
    interpolation.Finish();
    Set(0, 0.1);
    EXPECT_TRUE(interpolation.Prepare(1)) << "one sample: jumps";
    EXPECT_FALSE(records[0].Has(ParameterFlag::kSmoothing));
    EXPECT_EQ(records[0].Effective(), records[0].Get());
    interpolation.Finish();
    plugin.table.Rebuild(true);
    Set(0, 0.7);
    EXPECT_FALSE(interpolation.Prepare(64)) << "the list is new";
}

TEST(AutomationThreads, MayAllSetWhileEditorsFollow) {
    PluginDouble plugin;
    CountingListener listener;
    for (int a = 0; a < 20; ++a) {
        plugin.AddFloat("a").listener = &listener;
        plugin.records.back().Raise(ParameterFlag::kSmoothed);
    }
    plugin.table.Rebuild(true);
    std::atomic<bool> over = false;
    const auto hammer = [&](int start) {
        for (int n = start; !over; ++n) plugin.table.SetIfChanged(n % 20, n % 101 * 0.01, false);
    };
    std::thread host(hammer, 0), editor(hammer, 7);
    std::thread audio([&] {
        for (int block = 0; block < 2000; ++block) {
            if (!plugin.table.interpolation.Prepare(64)) continue;
            plugin.table.interpolation.Process(32);
            plugin.table.interpolation.Finish();
        }
        over = true;
    });
    while (!over) plugin.table.changed.UpdateEditors();
    for (std::thread* thread : {&host, &editor, &audio}) thread->join();
    plugin.table.changed.UpdateEditors();
    EXPECT_GT(listener.calls, 0);
    for (const ParameterRecord& record : plugin.records) {
        EXPECT_FALSE(record.Has(ParameterFlag::kSmoothing));
        EXPECT_EQ(record.InRange(record.Get()), record.Get());
    }
}
