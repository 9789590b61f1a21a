// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

// Counts the plug-ins that hosts hold in this process, whatever the interface: each host adapter
// has one as a member.
//
// Threads  any
class InstanceCount {
public:
    InstanceCount() { count.fetch_add(1); }
    InstanceCount(const InstanceCount&) = delete;
    InstanceCount& operator=(const InstanceCount&) = delete;
    ~InstanceCount() { count.fetch_sub(1); }

    static int Get() { return count.load(); }

private:
    static inline std::atomic<int> count = 0;
};
