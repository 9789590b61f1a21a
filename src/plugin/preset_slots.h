// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "foundation/xml/store_visitor.h"

// The stored states of the presets that a plug-in switches between, of which one is in use and
// stands in the plug-in itself.
//
// Ranges   slots 0 to 7
// Threads  Request, IsChanging and Current on any, the audio thread included; the rest under the
//          plug-in's stateLock
// Errors   std::bad_alloc
class PresetSlots {
public:
    static constexpr int kCount = 8;

    // Which one is wanted; a number of no slot is ignored. Whether there is something to change.
    bool Request(int slot) {
        if (slot < 0 || slot >= kCount) return false;
        requested = slot;
        return IsChanging();
    }
    // Of two threads that each change one of the two and then ask, at least one sees the change.
    bool IsChanging() const { return requested != current; }
    int Current() const { return current; }
    int Previous() const { return previous; }

    MAttribute& CurrentTree() { return trees[static_cast<std::size_t>(current)]; }
    // Puts the requested slot into use.
    void Change() {
        previous = current;
        current = requested.load();
    }

    // "PresetIndex" and, for each slot that is not in use and has something, an item "Preset" with
    // its number. What is absent stays as it is.
    void Store(const MStoreVisitor& visitor);

private:
    std::array<MAttribute, kCount> trees;
    std::atomic<std::int32_t> requested = 0;
    std::atomic<std::int32_t> current = 0;
    int previous = 0;
};
