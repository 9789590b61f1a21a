// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/mthread.h"
#include "foundation/text/mlocale.h"
#include "parameters/values/value_enum.h"

// The enumerations that layout files and stored state know by name, as far as they belong to lower
// layers or to no single class of a higher one.

// How a modulator, a multiparameter or a controller moves its target around a value.
enum class MRangeMode : std::int32_t { UpAndDown, FullRange, UpOnly, DownOnly, Interval };

// What a played note does to a note controller's target.
enum class MNoteControllerMode : std::int32_t {
    Linear,
    Logarithmic,
    OnOff,
    OnOffAllOctaves,
    Switch,
    SwitchAllOctaves
};

enum class MMultiParameterMode : std::int32_t { Normal, Switch, Trigger };

// How a multiparameter's value is shown.
enum class MMultiParameterValueMode : std::int32_t { Percents, ByFirstParameter };

inline constexpr const char* kRangeModeNames[] = {"Up and down", "Full range", "Up only",
                                                  "Down only", "Interval"};
inline constexpr const char* kNoteControllerModeNames[] = {
    "Linear", "Logarithmic", "On/Off", "On/Off (all octaves)", "Switch", "Switch (all octaves)"};
inline constexpr const char* kMultiParameterModeNames[] = {"Normal", "Switch", "Trigger"};
inline constexpr const char* kMultiParameterValueModeNames[] = {"Percents", "By first parameter"};

template <>
struct MEnumNames<MRangeMode> : MEnumNameTable<kRangeModeNames> {};
template <>
struct MEnumNames<MNoteControllerMode> : MEnumNameTable<kNoteControllerModeNames> {};
template <>
struct MEnumNames<MMultiParameterMode> : MEnumNameTable<kMultiParameterModeNames> {};
template <>
struct MEnumNames<MMultiParameterValueMode> : MEnumNameTable<kMultiParameterValueModeNames> {};

template <>
struct MEnumNames<MLocale::Language> {
    static constexpr int kCount = MLocale::kLanguageCount;
    static MString GetName(int index) {
        return MLocale::GetName(static_cast<MLocale::Language>(index));
    }
};

template <>
struct MEnumNames<MLocale::Country> {
    static constexpr int kCount = MLocale::kCountryCount;
    static MString GetName(int index) {
        return MLocale::GetName(static_cast<MLocale::Country>(index));
    }
};

template <>
struct MEnumNames<MThread::Priority> {
    static constexpr int kCount = static_cast<int>(MThread::kPriorities.size());
    static MString GetName(int index) {
        return MThread::kPriorities[static_cast<std::size_t>(index)].name;
    }
};
