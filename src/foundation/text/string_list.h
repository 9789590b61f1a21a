// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "foundation/text/mstring.h"

// A list of strings: the options of an enumeration, lines, names.
//
// Ranges   index 0 .. Count() - 1
// Threads  one may change it, or several may read it
// Errors   MException "Index out of range."; the list is unchanged

class MStringList {
public:
    MStringList() = default;
    MStringList(std::initializer_list<MString> strings) : strings(strings) {}

    void Add(MString text) { strings.push_back(std::move(text)); }
    // In front of the string at index; at Count() behind the last.
    void Insert(std::int32_t index, MString text);
    void Delete(std::int32_t index);
    void Clear() { strings.clear(); }

    std::int32_t Count() const { return static_cast<std::int32_t>(strings.size()); }
    MString& operator[](std::int32_t index);
    const MString& operator[](std::int32_t index) const;

    // The first string that is equal, -1 where none is.
    std::int32_t Find(const MString& text) const;
    // The same by MString::CompareNoCase.
    std::int32_t FindNoCase(const MString& text) const;

    auto begin() const { return strings.begin(); }
    auto end() const { return strings.end(); }

    friend bool operator==(const MStringList&, const MStringList&) = default;

private:
    std::vector<MString> strings;
};
