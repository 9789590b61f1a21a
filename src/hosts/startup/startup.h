// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "foundation/module/library_context.h"
#include "foundation/module/module.h"

// Brings up what the process has once: the module with its resources and settings. The first entry
// that makes an instance does it, so that a scan of the library alone starts nothing and reads no
// file.
//
// Threads  any; one lock serialises all of them
// Memory   what is made stays until the process ends
// Errors   false or null where there was no memory; the next call tries again

// Makes theModule where there is none. Whether there is one now.
bool InitLattenkitSubSystems();

// The library's side of MModule::DLLLoaded: shares what the caller has, and makes a module under
// the caller's name where there is none. A module that is there already keeps what it shares, since
// it is in use. Null without a context too.
MModule* EnterLattenkitLibrary(const LibraryContext* context);

// A container of resources that is linked into the library.
struct ResourceBlock {
    const std::uint8_t* data;  // null: there is none
    std::int32_t size;
};
using ResourceBlocks = std::array<ResourceBlock, 2>;

// The library's own, and the default style.
extern const ResourceBlocks kLinkedResources;

// Adds them to the module's. One that is broken is told to the module and left out. False where
// there was no memory.
bool MLoadGlobalResources(MModule& module, const ResourceBlocks& blocks = kLinkedResources);

// The module of this platform, not initialised.
std::unique_ptr<MModule> MakePlatformModule();
