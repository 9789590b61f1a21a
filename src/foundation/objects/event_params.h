// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/text/mstring.h"

class MControl;
class MObject;
class MPlugin;
class MThread;

// What the events of the system tell their handlers. Plain values: they are copied into queues.
// A sender may be dead when a queued notification arrives; who posts one knows how it is used.

struct MOnNotifyParams {
    MObject* sender = nullptr;
};

struct MOnThreadNotifyParams {
    MThread* thread = nullptr;
    std::int32_t exitCode = 0;
};

struct MOnClickParams {
    MControl* sender = nullptr;
};

struct MOnStringParams {
    MControl* sender = nullptr;
    MString text;
};

struct MOnMenuParams {
    MControl* sender = nullptr;
};

// Item: a pointer to an item of a list, tree, menu or caption, an index, or a cell.
template <typename Item>
struct MOnItemParams {
    MControl* sender = nullptr;
    Item item{};
};

struct MOnPluginParameterChangeParams {
    MPlugin* sender = nullptr;
};

struct MOnKeyboardShortcutParams;

// A key together with the modifiers that are held down.
struct MKeyboardShortcut {
    std::int32_t key = 0;        // the window system's code
    std::uint8_t modifiers = 0;  // 16 Ctrl, 32 Alt, 64 Shift

    friend bool operator==(const MKeyboardShortcut&, const MKeyboardShortcut&) = default;

    // Beside a handler: it is called for this shortcut only.
    bool Accepts(const MOnKeyboardShortcutParams& params) const;
};

struct MOnKeyboardShortcutParams {
    MControl* sender = nullptr;
    MKeyboardShortcut shortcut;
};

inline bool MKeyboardShortcut::Accepts(const MOnKeyboardShortcutParams& params) const {
    return params.shortcut == *this;
}
