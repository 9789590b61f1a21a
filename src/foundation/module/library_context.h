// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

class MLock;
class MModule;

// What libraries of this system that were loaded into one process share, so that objects which pass
// between them are freed by whom they were taken from, and events go to and fro.
//
// Threads  handed over under the start-up's lock

// The C library's functions of the same shape, but for a process whose first library says
// otherwise.
struct MAllocator {
    void* (*allocate)(std::size_t size);
    void* (*allocateZeroed)(std::size_t count, std::size_t size);
    void* (*reallocate)(void* block, std::size_t size);
    void (*release)(void* block);
    void* (*allocateAligned)(std::size_t alignment, std::size_t size);
};

extern MAllocator theAllocator;

struct LibraryContext {
    MAllocator allocator;
    MLock* eventLock;        // stays for ever
    const char* moduleName;  // UTF-8, the caller's; valid during the call
};

// Answers the library's module, null where it has none.
using LibraryEntry = MModule* (*)(const LibraryContext* context);

inline constexpr const char* kLibraryEntryName = "LattenkitDLLInitialize";
