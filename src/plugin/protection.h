// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "foundation/text/mstring.h"

// "Modulator & automation protection": how many samples pass at the most between two updates of a
// parameter that moves. It cuts blocks and does nothing else to the sound.
//
// Threads  any

struct ProtectionRecord {
    const char* name;
    const char* description;
    int subBlock;  // samples
};

// From the coarsest to the finest.
inline constexpr std::array<ProtectionRecord, 5> kProtections = {{
    {"Minimal protection", "Minimal quality, minimal CPU hit.", 2048},
    {"Normal protection", "Normal quality, average CPU hit, usually good enough.", 256},
    {"High protection", "High quality, higher CPU hit.", 32},
    {"Very high protection", "Very high quality, very high CPU hit, artifacts very rare.", 8},
    {"Extreme protection",
     "Maximum quality, extreme CPU hit, artifacts caused only by digital audio limitations.", 1},
}};

inline constexpr int kDefaultProtection = 32;
inline constexpr int kProtectionOfOldStates = 256;  // of those that do not tell one

// The coarsest of the table that updates at least as often as asked for.
int NearestProtection(int subBlock);

// An entry of the menu that offers the table, styled.
MString ProtectionText(const ProtectionRecord& protection);
