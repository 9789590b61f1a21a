// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/attribute_list.h"

#include <memory>
#include <utility>

MAttributePair* MAttributeList::Find(const MString& name) const {
    for (MAttributePair* const pair : pairs) {
        if (pair->name.CompareNoCase(name) == 0) return pair;
    }
    return nullptr;
}

void MAttributeList::Add(MString name, MString value) {
    std::unique_ptr<MAttributePair> pair(new MAttributePair{std::move(name), std::move(value)});
    pairs.Add(pair.get());
    static_cast<void>(pair.release());  // the list owns it now
}

void MAttributeList::Set(const MString& name, const MString& value) {
    if (MAttributePair* const pair = Find(name)) {
        pair->value = value;
    } else {
        Add(name, value);
    }
}

bool MAttributeList::Delete(const MString& name) {
    MAttributePair* const pair = Find(name);
    if (pair == nullptr) return false;
    pairs.Remove(pair);
    delete pair;
    return true;
}

void MAttributeList::Clear() {
    for (MAttributePair* const pair : pairs) delete pair;
    pairs.Clear();
}

void MAttributeList::TakeFrom(MAttributeList& other) {
    const int before = pairs.Count();
    try {
        for (MAttributePair* const pair : other.pairs) pairs.Add(pair);
    } catch (...) {
        while (pairs.Count() > before) pairs.Delete(pairs.Count() - 1);
        throw;
    }
    other.pairs.Clear();
}
