// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/text/exception.h"
#include "parameters/parameter_types.h"
#include "plugin/frame/automation_table.h"

// From an effect's list of records to adapters.
//
// Threads  while the plug-in is built
// Errors   MException "Invalid plugin parameter type."; nothing has been added then

// Finds the adapter of an effect's record.
class ParameterAdapterMap {
public:
    void Add(int recordIndex, ParameterMainBase& adapter);
    // Null for a record that has none.
    ParameterMainBase* Find(int recordIndex) const;
    void Clear();

private:
    static constexpr std::size_t kBuckets = 8;

    std::array<std::vector<std::pair<int, ParameterMainBase*>>, kBuckets> buckets;
};

// The adapter of a record's kind over a base; the arguments are the base's behind the record. Null
// for a record that takes no part.
template <typename Base, typename... Arguments>
std::unique_ptr<ParameterMainBase> MakeParameterAdapter(const AutomationContext& context,
                                                        ParameterRecord& record,
                                                        Arguments&&... arguments);

// Adds an adapter for each record that takes part, in the order of the list. A group's name is the
// section of what follows it, up to the next group or a record that opens a section of its own.
void AddEffectParameters(const AutomationContext& context, MPlugin& effect, AutomationTable& table,
                         ParameterAdapterMap& map);

template <typename Base, typename... Arguments>
std::unique_ptr<ParameterMainBase> MakeParameterAdapter(const AutomationContext& context,
                                                        ParameterRecord& record,
                                                        Arguments&&... arguments) {
    const auto make = [&]<typename Adapter>() -> std::unique_ptr<ParameterMainBase> {
        if (!record.Has(ParameterFlag::kTakesPart)) return nullptr;
        return std::make_unique<Adapter>(context, record, std::forward<Arguments>(arguments)...);
    };
    switch (record.type) {
        case ParameterType::None:
        case ParameterType::Hidden:
            return nullptr;
        case ParameterType::Float:
            return make.template operator()<ParameterFloatT<Base>>();
        case ParameterType::Integer:
            return make.template operator()<ParameterIntT<Base>>();
        case ParameterType::Enumeration:
            return make.template operator()<ParameterEnumT<Base>>();
        case ParameterType::Boolean:
            return make.template operator()<ParameterBoolT<Base>>();
        case ParameterType::Group:
            return make.template operator()<ParameterGroupT<Base>>();
    }
    throw MException("Invalid plugin parameter type.");
}
