// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/object.h"
#include "foundation/xml/attribute.h"

// A named value that stores itself as one attribute of a tree item.
//
// Its text is the one in storage. What a subclass shows to people may be another one, which is why
// the names GetText and SetText are left to subclasses.
//
// Threads  as the owner says
// Errors   what the subclass raises

class MStorable : public MObject {
public:
    explicit MStorable(const MString& name = "value") : name(name) {}

    // The value as text in storage; empty here.
    virtual MString GetString() { return MString(); }
    // Does nothing here.
    virtual void SetString(const MString&) {}
    // On loading where the attribute is absent. The answer is Load's; false here.
    virtual bool OnMissing() { return false; }
    // Always true here.
    virtual bool Save(MAttribute& item);
    // Whether there was a value for it.
    virtual bool Load(MAttribute& item);

    MString name;
};
