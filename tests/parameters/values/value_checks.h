// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <ostream>

#include "parameters/values/value.h"

// Printed by the test library where texts differ.
inline void PrintTo(const MString& text, std::ostream* out) { *out << text.ToUtf8(); }

// An item of a tree as values see it.
struct TestItem : MValueAttributes {
    TestItem() = default;
    TestItem(std::initializer_list<std::pair<const MString, MString>> pairs) : texts(pairs) {}

    const MString* Find(const MString& name) override {
        const auto found = texts.find(name);
        return found == texts.end() ? nullptr : &found->second;
    }
    void Set(const MString& name, const MString& text) override { texts[name] = text; }

    std::map<MString, MString> texts;
};
