// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

#include "parameters/values/value.h"

// Printed by the test library where texts differ.
inline void PrintTo(const MString& text, std::ostream* out) { *out << text.ToUtf8(); }

// An item of a tree.
struct TestItem : MAttribute {
    TestItem() = default;
    TestItem(std::initializer_list<std::pair<MString, MString>> pairs) {
        for (const auto& [name, text] : pairs) SetAttribute(name, text);
    }
};
