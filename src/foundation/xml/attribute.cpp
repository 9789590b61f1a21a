// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/attribute.h"

#include <memory>

#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"
#include "foundation/xml/tree_walk.h"

bool MAttribute::HasAttribute(const MString& wanted) {
    cachedAttribute = attributes.Find(wanted);
    return cachedAttribute != nullptr;
}

const MString& MAttribute::GetCachedAttribute() const {
    if (cachedAttribute == nullptr) {
        throw MException(
            "There is no attribute in the cache. Previous call to HasAttribute probably did not "
            "succeed.");
    }
    return cachedAttribute->value;
}

const MString& MAttribute::GetAttribute(const MString& wanted) const {
    const MAttributePair* const found = attributes.Find(wanted);
    if (found == nullptr)
        throw MException(MStringFormatter("Could not find required attribute ({0}).") << wanted);
    return found->value;
}

MString MAttribute::GetAttribute(const MString& wanted, const MString& standard) const {
    const MAttributePair* const found = attributes.Find(wanted);
    return found != nullptr ? found->value : standard;
}

bool MAttribute::DeleteAttribute(const MString& wanted) {
    cachedAttribute = nullptr;
    return attributes.Delete(wanted);
}

bool MAttribute::HasSubItem(const MString& wanted) {
    cachedSubItem = const_cast<MAttribute*>(FindSubItem(wanted));
    return cachedSubItem != nullptr;
}

MAttribute& MAttribute::GetCachedSubItem() const {
    if (cachedSubItem == nullptr) {
        throw MException(
            "There is no subitem in the cache. Previous call to HasSubItem probably did not "
            "succeed.");
    }
    return *cachedSubItem;
}

MAttribute& MAttribute::GetSubItem(const MString& wanted) {
    return const_cast<MAttribute&>(static_cast<const MAttribute&>(*this).GetSubItem(wanted));
}

const MAttribute& MAttribute::GetSubItem(const MString& wanted) const {
    const MAttribute* const found = FindSubItem(wanted);
    if (found == nullptr)
        throw MException(MStringFormatter("Could not find required subitem ({0}).") << wanted);
    return *found;
}

const MAttribute* MAttribute::FindSubItem(const MString& wanted) const {
    for (const MAttribute* const child : subItems) {
        if (child->name.CompareNoCase(wanted) == 0) return child;
    }
    return nullptr;
}

MAttribute& MAttribute::AddSubItem(const MString& newName) {
    auto child = std::make_unique<MAttribute>();
    child->name = newName;
    child->parent = this;
    child->level = level + 1;
    subItems.Add(child.get());
    const int index = subItems.Count() - 1;
    if (index > 0) {
        child->previous = subItems[index - 1];
        child->previous->next = child.get();
    }
    return *child.release();
}

void MAttribute::DeleteSubItem(MAttribute& child) {
    if (!subItems.Remove(&child)) return;
    cachedSubItem = nullptr;
    if (child.previous != nullptr) child.previous->next = child.next;
    if (child.next != nullptr) child.next->previous = child.previous;
    delete &child;
}

void MAttribute::Clear() {
    name = value = MString();
    attributes.Clear();
    cachedAttribute = nullptr;
    ClearSubItems();
}

// From the leaves upwards, so that no destructor finds children: a tree may be deeper than the
// stack.
void MAttribute::ClearSubItems() {
    cachedSubItem = nullptr;
    MAttribute* item = this;
    for (;;) {
        if (!item->subItems.IsEmpty()) {
            item = item->subItems[item->subItems.Count() - 1];
        } else if (item == this) {
            return;
        } else {
            MAttribute* const owner = item->parent;
            owner->subItems.Delete(owner->subItems.Count() - 1);
            delete item;
            item = owner;
        }
    }
}

void MAttribute::CopyFrom(const MAttribute& source) {
    Clear();
    MAttribute* target = nullptr;
    WalkTree(
        source,
        [&](const MAttribute& item) {
            target = target == nullptr ? this : &target->AddSubItem(item.name);
            target->CopyOwnTexts(item);
        },
        [&](const MAttribute&) { target = target->parent; });
}

void MAttribute::CopyOwnTexts(const MAttribute& source) {
    name = source.name;
    value = source.value;
    for (const MAttributePair* const pair : source.attributes)
        attributes.Add(pair->name, pair->value);
}

bool MAttribute::Iterator::Next() {
    if (current != nullptr) {
        current = current->next;
    } else if (!owner.subItems.IsEmpty()) {
        current = owner.subItems[0];
    }
    return current != nullptr;
}

bool MAttribute::Iterator::Next(const MString& wanted) {
    while (Next()) {
        if (current->name.CompareNoCase(wanted) == 0) return true;
    }
    return false;
}

MAttribute* MAttribute::Iterator::operator->() const {
    if (current == nullptr) throw MException("XML item iterator has not been initialized.");
    return current;
}
