// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/object.h"
#include "foundation/xml/attribute.h"

// A named value that stores itself as one attribute of a tree item.
//
// Threads  as the owner says
// Errors   what the subclass raises

class MStorable : public MObject {
public:
    explicit MStorable(const MString& name) : name(name) {}

    // The value as text; empty here.
    virtual MString GetText() { return MString(); }
    // Does nothing here.
    virtual void SetText(const MString&) {}
    // On loading where the attribute is absent. The answer is Load's; false here.
    virtual bool OnMissing() { return false; }
    // Always true here.
    virtual bool Save(MAttribute& item);
    // Whether there was a value for it.
    virtual bool Load(MAttribute& item);

    MString name;
};
