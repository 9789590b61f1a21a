// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

class MSettingsStore;

// The switches of the settings window: what they are called, and where they live.
//
// Threads  any; see MSettingsStore for the user's

enum class ProductSwitch : std::size_t {
    OnlinePresetExchange,
    ShowConfirmations,
    HighQualityUpsampling,
    HighQualitySinc,  // the same flag, shown a second time
    DryWetAffectsInputGain,
    DryWetAffectsInputPan,
    AutomationCompatibilityMode,
    TabletMode,
    SurroundActivated,
};

struct ProductSwitchRecord {
    const char* key;   // of the check box
    const char* text;  // styled
    // In the user's configuration; null where it lives with each plug-in.
    const char* globalKey;
    bool standard;
};

inline constexpr std::array<ProductSwitchRecord, 9> kProductSwitches = {{
    {"enableonlinepresetexchange",
     "<p><b>Enable online preset exchange</b><p>This feature shares your presets and receives "
     "presets from other users.",
     "OnlinePresetExchange", false},
    {"showconfirmations",
     "<p><b>Show confirmations for destructive actions</b><p>Should a confirmation window be shown "
     "when reseting settings etc.?",
     "ShowConfirmations", true},
    {"hqupsampling",
     "<p><b>High-quality upsampling</b><p>Provides maximum quality when upsampling, but requires "
     "more CPU and induces latency.",
     nullptr, true},
    {"",
     "<p><b>High-quality sinc interpolation</b><p>Provides maximum audio quality, but requires "
     "more "
     "CPU and induces a little latency.",
     nullptr, true},
    {"DryWetAffectsInputGain",
     "<p><b>Dry/wet affects band gains</b><p>When enabled, input gain of all bands is affected by "
     "the dry/wet setting.",
     nullptr, true},
    {"DryWetAffectsInputPan",
     "<p><b>Dry/wet affects band panorama</b><p>When enabled, input panorama of all bands is "
     "affected by the dry/wet setting.",
     nullptr, true},
    {"automationcompatibilitymode",
     "<p><b>Automation compatibility mode</b><p>Fixes host automation assignments. Note that it is "
     "a system global setting.",
     "AutomationCompatibilityMode", true},
    {"TabletMode",
     "<p><b>Tablet mode</b><p>Enables better support for tablets at the expense of worse support "
     "for mouse.",
     "TabletMode", false},
    {"SurroundActivated",
     "<p><b>Activate surround</b><p>You may disable surround for some older hosts, which do not "
     "support surround compliant plugins.",
     "SurroundActivated", false},
}};

constexpr const ProductSwitchRecord& RecordOf(ProductSwitch which) {
    return kProductSwitches[static_cast<std::size_t>(which)];
}

// The three of "Crossover", of which one is on; in the order of CrossoverKind.
struct ProductChoiceRecord {
    const char* key;
    const char* text;
};

inline constexpr std::array<ProductChoiceRecord, 3> kCrossoverChoices = {{
    {"analogcrossover",
     "<p><b>Analog crossover</b><p>Minimum phase, fast, provides natural results."},
    {"lpcrossover", "<p><b>Linear-phase crossover</b><p>Slow, steep, induces latency."},
    {"hybridcrossover",
     "<p><b>Hybrid crossover</b><p>Slow, steepness similar to analog crossover, induces latency."},
}};

// Of the user's configuration. A change holds for instances that are made from then on, unless its
// reader asks each time. Null is a configuration without settings, which keeps none.
bool GetGlobalSwitch(const MSettingsStore* configuration, const ProductSwitchRecord& record);
void SetGlobalSwitch(MSettingsStore* configuration, const ProductSwitchRecord& record, bool on);

// "Default bands": how many a new instance has, 1 to 6. What is outside counts as the nearest.
int GetGlobalBandCount(const MSettingsStore* configuration);
void SetGlobalBandCount(MSettingsStore* configuration, int count);
