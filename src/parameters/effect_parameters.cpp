// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/effect_parameters.h"

namespace {

std::size_t BucketOf(int recordIndex) { return static_cast<std::size_t>(recordIndex & 7); }

}  // namespace

void ParameterAdapterMap::Add(int recordIndex, ParameterMainBase& adapter) {
    buckets[BucketOf(recordIndex)].emplace_back(recordIndex, &adapter);
}

ParameterMainBase* ParameterAdapterMap::Find(int recordIndex) const {
    for (const auto& [index, adapter] : buckets[BucketOf(recordIndex)])
        if (index == recordIndex) return adapter;
    return nullptr;
}

void ParameterAdapterMap::Clear() {
    for (auto& bucket : buckets) bucket.clear();
}

void AddEffectParameters(const AutomationContext& context, MPlugin& effect, AutomationTable& table,
                         ParameterAdapterMap& map) {
    std::vector<std::unique_ptr<ParameterMainBase>> adapters;
    MString section;
    for (int p = 0; p < effect.descriptor.parameterCount; ++p) {
        ParameterRecord& record = effect.descriptor.parameters[p];
        if (record.Has(ParameterFlag::kNewSection)) section = MString();
        if (record.type == ParameterType::Group) section = record.name;
        auto adapter = MakeParameterAdapter<ParameterBase>(context, record, p, effect);
        if (adapter == nullptr) continue;
        adapter->section = section;
        adapters.push_back(std::move(adapter));
    }
    for (auto& adapter : adapters) {
        map.Add(adapter->localIndex, *adapter);
        table.Add(std::move(adapter));
    }
}
