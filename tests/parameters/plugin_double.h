// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <utility>

#include "parameters/parameter_types.h"
#include "plugin/frame/automation_table.h"

// A plug-in as adapters know it, which notes what it is told.
struct PluginDouble final : AutomationOwner {
    using Float = ParameterFloatT<ParameterBaseCustom>;

    void SendAutomation(int index, double position) override {
        sent += std::to_string(index) + "=" + std::to_string(position).substr(0, 4) + " ";
    }
    void NeedUpdateEditor(AutomationAdapter& adapter) override { table.changed.Add(adapter); }
    void ParametersChanged() override { ++updates; }

    // A float record 0..1 at 0.5 and its adapter, which serves this many indices.
    Float& AddFloat(const char* name, int count = 1, bool bandLocal = false,
                    bool temporary = false) {
        records.emplace_back().SetFloat(name, name, 0, 1, 0.5);
        auto adapter =
            std::make_unique<Float>(AutomationContext{this, {}, {}, bandLocal}, records.back(), 0);
        adapter->count = count;
        adapter->temporary = temporary;
        return static_cast<Float&>(table.Add(std::move(adapter)));
    }

    std::deque<ParameterRecord> records;
    AutomationTable table{*this};
    std::string sent;
    int updates = 0;
};
