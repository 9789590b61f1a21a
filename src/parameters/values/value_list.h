// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/string_list.h"
#include "parameters/values/value_index.h"

// A value that is the index into a list of names, which outlives it.

template <typename Entry, typename Source, typename Index>
class MValueList;

// Literals: the first one and how many there are.
template <>
class MValueList<const char*, const char* const*, int> : public MValueIndex<int> {
public:
    MValueList(const MValueRef& source, const char* const* entries, int count, int defaultIndex = 0)
        : MValueIndex(source, defaultIndex), entries(entries), count(count) {}

    int GetItemCount() const override { return count; }

protected:
    MString GetEntry(int index) const override { return entries[index]; }

private:
    const char* const* entries;
    int count;
};

// A list that may grow and shrink under the value.
template <>
class MValueList<MString, const MStringList&, int> : public MValueIndex<int> {
public:
    MValueList(const MValueRef& source, const MStringList& entries, int defaultIndex = 0)
        : MValueIndex(source, defaultIndex), entries(entries) {}

    int GetItemCount() const override { return entries.Count(); }

protected:
    MString GetEntry(int index) const override { return entries[index]; }

private:
    const MStringList& entries;
};

using MValueLiteralList = MValueList<const char*, const char* const*, int>;
using MValueStringList = MValueList<MString, const MStringList&, int>;
