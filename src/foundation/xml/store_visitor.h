// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <concepts>
#include <cstdint>

#include "foundation/text/mstring.h"
#include "foundation/xml/attribute.h"
#include "foundation/xml/storable.h"

// Carries the one Store function of an object through a tree item, in either direction.
//
//     void MLFO::Store(const MStoreVisitor& visitor) {
//         visitor.Flag("Enabled", enabled, false);
//         visitor.SubItem("Envelope", [&](const MStoreVisitor& inner) { envelope.Store(inner); });
//     }
//
// A value that is equal to its standard is not written, and taken away where it stood; an absent
// one reads as its standard.
//
// Threads  as for the item
// Errors   what a body and a storable raise; std::bad_alloc

struct MStoreVisitor {
    bool storing;  // writes the item, else reads it
    MAttribute& node;

    void Text(const MString& key, MString& value, const MString& standard) const;

    // Decimal; what is beyond the type's range wraps around.
    template <std::integral Integer>
    void Number(const MString& key, Integer& value, Integer standard) const {
        std::int64_t number = static_cast<std::int64_t>(value);
        WideNumber(key, number, static_cast<std::int64_t>(standard));
        value = static_cast<Integer>(number);
    }
    // Always written; an absent one leaves the value.
    template <std::integral Integer>
    void KeptNumber(const MString& key, Integer& value) const {
        MString text = MString::FromInt(value);
        Text(key, text, MString());
        if (!storing && !text.IsEmpty()) value = static_cast<Integer>(MString::ToInt64(text));
    }
    // "1" or "0"; any other number reads as true.
    void Flag(const MString& key, bool& value, bool standard) const;

    // A value that knows its own key and standard; it is always written.
    bool Value(MStorable& value) const { return storing ? value.Save(node) : value.Load(node); }

    // Runs body with a visitor of the child of that name: a new one, or the first there is. Whether
    // there was one.
    template <typename Body>
    bool SubItem(const MString& key, Body body) const {
        if (storing) {
            body(MStoreVisitor{true, node.AddSubItem(key)});
            return true;
        }
        if (!node.HasSubItem(key)) return false;
        body(MStoreVisitor{false, node.GetCachedSubItem()});
        return true;
    }

private:
    void WideNumber(const MString& key, std::int64_t& value, std::int64_t standard) const;
};
