// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>

class MAudioPlugin;

// What host interfaces tell of a product, and how they get one. The texts live as long as the
// process.
//
// Threads  any; never changed
struct ProductInfo {
    const char* name = "";
    const char* vendor = "";
    const char* webAddress = "";
    const char* mailAddress = "";
    const char* version = "";        // "0.1.0"
    std::int32_t versionNumber = 0;  // for VST 2: grows from release to release
    std::int32_t vst2UniqueID = 0;   // four characters
    std::array<std::uint32_t, 4> vst3ClassID{};

    // Makes a new plug-in, the process's own start-up included. Raises, or answers null, where
    // there is none to be had.
    std::unique_ptr<MAudioPlugin> (*create)() = nullptr;
};
