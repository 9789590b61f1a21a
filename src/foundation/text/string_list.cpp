// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_list.h"

#include <algorithm>
#include <utility>

#include "foundation/text/exception.h"

namespace {

// The index for the vector, if it is one of the first count.
std::size_t Checked(std::int32_t index, std::int32_t count) {
    if (index < 0 || index >= count) throw MException("Index out of range.");
    return static_cast<std::size_t>(index);
}

template <typename Matches>
std::int32_t FindFirst(const std::vector<MString>& strings, Matches matches) {
    const auto found = std::ranges::find_if(strings, matches);
    return found == strings.end() ? -1 : static_cast<std::int32_t>(found - strings.begin());
}

}  // namespace

void MStringList::Insert(std::int32_t index, MString text) {
    Checked(index, Count() + 1);
    strings.insert(strings.begin() + index, std::move(text));
}

void MStringList::Delete(std::int32_t index) {
    Checked(index, Count());
    strings.erase(strings.begin() + index);
}

MString& MStringList::operator[](std::int32_t index) { return strings[Checked(index, Count())]; }

const MString& MStringList::operator[](std::int32_t index) const {
    return strings[Checked(index, Count())];
}

std::int32_t MStringList::Find(const MString& text) const {
    return FindFirst(strings, [&](const MString& entry) { return entry == text; });
}

std::int32_t MStringList::FindNoCase(const MString& text) const {
    return FindFirst(strings, [&](const MString& entry) { return entry.CompareNoCase(text) == 0; });
}
