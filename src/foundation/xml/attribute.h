// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/mlist.h"
#include "foundation/text/mstring.h"
#include "foundation/xml/attribute_list.h"

// An item of a tree of named texts: what state, presets, layouts and configurations are made of.
//
//     MAttribute& band = settings.AddSubItem("band0");
//     band.SetAttribute("Rate", "0.5");
//     if (band.HasAttribute("Depth")) depth = band.GetCachedAttribute();
//
// Names are compared without regard to case and accents, and the first match in order counts.
//
// Threads  one at a time. The const operations change nothing, and several threads may call them
//          while nobody changes the tree; HasAttribute and HasSubItem change the item
// Memory   an item owns its pairs and its children; they stay where they are until deleted
// Errors   MException with the texts told below and code 0, std::bad_alloc

class MAttribute {
public:
    class Iterator;

    MAttribute() = default;
    MAttribute(const MAttribute&) = delete;
    MAttribute& operator=(const MAttribute&) = delete;
    ~MAttribute() { ClearSubItems(); }

    const MString& GetName() const { return name; }
    void SetName(const MString& newName) { name = newName; }
    // The text of the element.
    const MString& GetValue() const { return value; }
    void SetValue(const MString& newValue) { value = newValue; }
    MString& Value() { return value; }

    const MAttributeList& Attributes() const { return attributes; }
    // Whether there is one; GetCachedAttribute then gives its value.
    bool HasAttribute(const MString& wanted);
    // Raises "There is no attribute in the cache. Previous call to HasAttribute probably did not
    // succeed.".
    const MString& GetCachedAttribute() const;
    // Raises "Could not find required attribute ({0}).".
    const MString& GetAttribute(const MString& wanted) const;
    MString GetAttribute(const MString& wanted, const MString& standard) const;
    // Replaces the value of the one of that name, or adds one.
    void SetAttribute(const MString& wanted, const MString& text) { attributes.Set(wanted, text); }
    // Whether there was one. Empties the cache.
    bool DeleteAttribute(const MString& wanted);
    // Puts these behind the attributes there are; the other list is then empty.
    void TakeAttributes(MAttributeList& others) { attributes.TakeFrom(others); }

    const MList<MAttribute, 2>& SubItems() const { return subItems; }
    // As for attributes, with "There is no subitem in the cache. Previous call to HasSubItem
    // probably did not succeed." and "Could not find required subitem ({0}).".
    bool HasSubItem(const MString& wanted);
    MAttribute& GetCachedSubItem() const;
    MAttribute& GetSubItem(const MString& wanted);
    const MAttribute& GetSubItem(const MString& wanted) const;
    // Null where there is none.
    const MAttribute* FindSubItem(const MString& wanted) const;
    // At the end, whether or not there is one of that name.
    MAttribute& AddSubItem(const MString& newName);
    // One of this item's own children.
    void DeleteSubItem(MAttribute& child);

    // Takes away name, value, attributes and children.
    void Clear();
    // Makes name, value, attributes and children those of the source, which stands in another tree.
    void CopyFrom(const MAttribute& source);

    // Null for the root.
    MAttribute* Parent() const { return parent; }
    // The neighbours among the children of the parent; null at the ends.
    MAttribute* Next() const { return next; }
    MAttribute* Previous() const { return previous; }
    // 0 for the root, one more for each generation below.
    std::int32_t Level() const { return level; }

private:
    void CopyOwnTexts(const MAttribute& source);
    void ClearSubItems();

    MAttribute* parent = nullptr;
    MAttribute* next = nullptr;
    MAttribute* previous = nullptr;
    std::int32_t level = 0;
    MList<MAttribute, 2> subItems;
    MString name;
    MString value;
    MAttributeList attributes;
    // What the last HasAttribute and HasSubItem found.
    const MAttributePair* cachedAttribute = nullptr;
    MAttribute* cachedSubItem = nullptr;
};

// A walk over the children of an item.
//
//     for (MAttribute::Iterator bands(settings); bands.Next("band");) Load(*bands);
//
// Errors   MException "XML item iterator has not been initialized." where it stands on no item

class MAttribute::Iterator {
public:
    // Stands on no item. The owner outlives the iterator, and is not changed during the walk.
    explicit Iterator(const MAttribute& owner) : owner(owner) {}

    // To the next child, from no item to the first; false behind the last, where it stands on no
    // item again.
    bool Next();
    // To the next child of that name.
    bool Next(const MString& wanted);

    MAttribute& operator*() const { return *operator->(); }
    MAttribute* operator->() const;

private:
    const MAttribute& owner;
    MAttribute* current = nullptr;
};
