// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <iterator>

#include "parameters/values/value_index.h"

// A value that is an enumerator. Who owns an enumeration names its entries:
//
//     inline constexpr const char* kFadeNames[] = {"Linear", "Smooth"};
//     template <>
//     struct MEnumNames<Fade> : MEnumNameTable<kFadeNames> {};
//
//     MValueEnum<Fade> value(MValueRef(&model.fade));

// Has kCount and GetName(index).
template <typename Enumeration>
struct MEnumNames;

template <const auto& names>
struct MEnumNameTable {
    static constexpr int kCount = static_cast<int>(std::size(names));
    static MString GetName(int index) { return names[index]; }
};

template <typename Enumeration>
class MValueEnum : public MValueIndex<Enumeration> {
public:
    static_assert(sizeof(Enumeration) == sizeof(std::int32_t));

    explicit MValueEnum(const MValueRef& source = {}, Enumeration defaultEntry = Enumeration())
        : MValueIndex<Enumeration>(source, static_cast<int>(defaultEntry)) {}

    int GetItemCount() const override { return Names::kCount; }

protected:
    MString GetEntry(int index) const override { return Names::GetName(index); }

private:
    using Names = MEnumNames<Enumeration>;
};
