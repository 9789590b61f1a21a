// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/automation_table.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Far below a step of any host's knob; modulators set every sub-block.
constexpr double kSamePosition = 1e-7;

}  // namespace

AutomationAdapter& AutomationTable::Add(std::unique_ptr<AutomationAdapter> adapter) {
    AutomationAdapter& added = *adapter;
    changed.Reserve(static_cast<int>(adapters.size()) + 1);
    adapters.push_back(std::move(adapter));
    added.baseIndex = parameterCount;
    parameterCount += added.count;
    return added;
}

void AutomationTable::Rebuild(bool compatibilityMode) {
    const auto rank = [compatibilityMode](const AutomationAdapter& adapter) {
        if (adapter.temporary) return 2;
        return compatibilityMode && adapter.bandLocal ? 1 : 0;
    };
    std::stable_sort(adapters.begin(), adapters.end(),
                     [&](const auto& a, const auto& b) { return rank(*a) < rank(*b); });
    Number();
}

void AutomationTable::Number() {
    parameterCount = hostParameterCount = 0;
    interpolation.Clear();
    for (const auto& adapter : adapters) {
        adapter->baseIndex = parameterCount;
        parameterCount += adapter->count;
        if (!adapter->temporary) hostParameterCount += adapter->count;
        interpolation.Add(*adapter);
    }
}

void AutomationTable::Retire(AutomationAdapter& adapter) {
    if (std::find(retired.begin(), retired.end(), &adapter) == retired.end())
        retired.push_back(&adapter);
}

void AutomationTable::DestroyTemporary() {
    if (retired.empty()) return;
    for (AutomationAdapter* const adapter : retired) {
        changed.Remove(*adapter);
        std::erase_if(adapters, [adapter](const auto& owned) { return owned.get() == adapter; });
    }
    retired.clear();
    Number();
}

void AutomationTable::Clear() {
    changed.Clear();
    interpolation.Clear();
    retired.clear();
    adapters.clear();
    parameterCount = hostParameterCount = 0;
}

AutomationTable::Place AutomationTable::Find(int index) const {
    if (adapters.empty()) return {};
    // The first one that starts behind the index; the one in front of it serves it.
    const auto behind = std::upper_bound(
        adapters.begin() + 1, adapters.end(), index,
        [](int wanted, const auto& adapter) { return wanted < adapter->baseIndex; });
    AutomationAdapter* const adapter = (behind - 1)->get();
    return {adapter, index - adapter->baseIndex};
}

void AutomationTable::SetIfChanged(int index, double position, bool silent) {
    const Place place = Find(index);
    if (place.adapter == nullptr) return;
    if (std::abs(place.adapter->GetParameter(place.index) - position) > kSamePosition)
        place.adapter->SetParameter(place.index, position, silent);
}
