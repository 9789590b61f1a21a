// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Root of nearly every class with virtual operations: what is owned through a pointer to it can be
// deleted through it.

class MObject {
public:
    virtual ~MObject() = default;
};
