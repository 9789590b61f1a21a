// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/mlist.h"
#include "foundation/text/mstring.h"

// A named text of a tree item.
struct MAttributePair {
    MString name;
    MString value;
};

// The named texts of one tree item in their order, which it owns. A name may occur twice; names are
// compared without regard to case and accents, and the first match counts.
//
// Threads  one at a time; Find and the walk may run on several while nobody changes the list
// Memory   a small block for each pair; a pair stays where it is until it is deleted
// Errors   MException "Index out of range.", std::bad_alloc; the list stays as it was

class MAttributeList {
public:
    MAttributeList() = default;
    MAttributeList(const MAttributeList&) = delete;
    MAttributeList& operator=(const MAttributeList&) = delete;
    ~MAttributeList() { Clear(); }

    int Count() const { return pairs.Count(); }
    bool IsEmpty() const { return pairs.IsEmpty(); }
    MAttributePair* operator[](int index) const { return pairs[index]; }
    MAttributePair* const* begin() const { return pairs.begin(); }
    MAttributePair* const* end() const { return pairs.end(); }

    // Null where there is none.
    MAttributePair* Find(const MString& name) const;

    // At the end, whether or not there is one of that name.
    void Add(MString name, MString value);
    // Gives the pair of that name a new value, or adds one.
    void Set(const MString& name, const MString& value);
    // Whether there was one.
    bool Delete(const MString& name);
    void Clear();
    // Moves all pairs of the other list behind those of this one.
    void TakeFrom(MAttributeList& other);

private:
    MList<MAttributePair, 2> pairs;
};
