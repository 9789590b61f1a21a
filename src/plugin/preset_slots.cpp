// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/preset_slots.h"

#include "foundation/text/string_formatter.h"

void PresetSlots::Store(const MStoreVisitor& visitor) {
    std::int32_t index = current;
    visitor.KeptNumber("PresetIndex", index);
    if (!visitor.storing && index >= 0 && index < kCount) current = requested = index;

    for (int i = 0; i < kCount; ++i) {
        MAttribute& tree = trees[static_cast<std::size_t>(i)];
        const MString key = MStringFormatter("Preset{0}") << i;
        if (i == current) continue;
        if (!visitor.storing) {
            if (visitor.node.HasSubItem(key)) tree.CopyFrom(visitor.node.GetCachedSubItem());
        } else if (!tree.GetName().IsEmpty()) {
            MAttribute& item = visitor.node.AddSubItem(key);
            item.CopyFrom(tree);
            item.SetName(key);
        }
    }
}
