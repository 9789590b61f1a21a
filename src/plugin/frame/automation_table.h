// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include "plugin/frame/automation_adapter.h"
#include "plugin/frame/automation_interpolation.h"
#include "plugin/frame/changed_adapters.h"

// The adapters of a plug-in in the order of the indices that they serve: the host's list of
// parameters.
//
//     AutomationTable table(plugin);
//     table.Add(std::make_unique<...>(...));
//     table.Rebuild(compatibilityMode);
//     const auto [adapter, index] = table.Find(parameter);
//
// Units    indices of the host's list, from 0
// Threads  changes of the list under the owner's locks, apart from everything else. Find and the
//          adapters' sets and gets on any thread. interpolation and changed tell their own
// Memory   the adapters are the table's. Find allocates nothing
// Errors   std::bad_alloc
class AutomationTable {
public:
    struct Place {
        AutomationAdapter* adapter = nullptr;
        int index = 0;  // the adapter's
    };

    explicit AutomationTable(AutomationOwner& owner) : interpolation(owner) {}
    AutomationTable(const AutomationTable&) = delete;
    AutomationTable& operator=(const AutomationTable&) = delete;

    // Behind all others, at the next free index; hosts and the interpolation know it after a
    // Rebuild.
    AutomationAdapter& Add(std::unique_ptr<AutomationAdapter> adapter);
    // Gives each adapter its index, in the order in which they were added but for this: temporary
    // ones come last, and in the compatibility mode the bands' sets behind the master's, so that
    // an effect with another list of parameters leaves the master's indices alone.
    void Rebuild(bool compatibilityMode);

    // Queues a temporary adapter for destruction.
    void Retire(AutomationAdapter& adapter);
    // Deletes those that were queued; the rest keeps its order.
    void DestroyTemporary();
    void Clear();

    int ParameterCount() const { return parameterCount; }
    // Without the temporary ones.
    int HostParameterCount() const { return hostParameterCount; }
    const std::vector<std::unique_ptr<AutomationAdapter>>& Adapters() const { return adapters; }

    // The adapter that serves an index. In front of the first there is the first and behind the
    // last the last, with an index that is none of its own; null without any.
    Place Find(int index) const;
    // Sets what differs by more than 1e-7 from the present position.
    void SetIfChanged(int index, double position, bool silent);

    AutomationInterpolation interpolation;
    ChangedAdapters changed;

private:
    void Number();

    std::vector<std::unique_ptr<AutomationAdapter>> adapters;  // by baseIndex
    std::vector<AutomationAdapter*> retired;
    int parameterCount = 0;
    int hostParameterCount = 0;
};
