// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <utility>

#ifdef TRAP_BY_HOOKS
#include <sanitizer/allocator_interface.h>
#endif

namespace {

thread_local bool armed = false;
thread_local std::int64_t calls = 0;

inline void Count() {
    if (armed) ++calls;
}

thread_local bool limited = false;
thread_local std::int64_t allowed = 0;  // allocations, while limited
thread_local std::int64_t kept = 0;     // blocks, while limited

// Installed once, before any trap is armed; the hooks cannot be taken away.
void InstallHooks() {
#ifdef TRAP_BY_HOOKS
    static const int installed = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) { Count(); }, [](const volatile void*) { Count(); });
    ASSERT_NE(installed, 0);
#endif
}

}  // namespace

#ifndef TRAP_BY_HOOKS
namespace {

// What an allocation gives that is not refused.
template <typename Allocate>
inline void* Take(Allocate allocate) {
    Count();
    if (!limited) return allocate();
    if (allowed == 0) return nullptr;
    --allowed;
    ++kept;
    return allocate();
}

}  // namespace

// The C library's own entries behind the ones that are replaced here. operator new of the C++
// library calls malloc, so that it is counted too.
#pragma GCC visibility push(default)
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t size) {
    return Take([size] { return __libc_malloc(size); });
}

// A new thread takes memory so.
void* calloc(std::size_t count, std::size_t size) {
    return Take([count, size] { return __libc_calloc(count, size); });
}

// A new place for a block is a block that is kept and one that is not.
void* realloc(void* block, std::size_t size) {
    void* const moved = Take([block, size] { return __libc_realloc(block, size); });
    if (limited && block != nullptr && moved != nullptr) --kept;
    return moved;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Take([alignment, size] { return __libc_memalign(alignment, size); });
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block) {
    if (block != nullptr) Count();
    if (limited && block != nullptr) --kept;
    __libc_free(block);
}
}
#pragma GCC visibility pop
#endif

AllocationTrap::AllocationTrap(std::string newWhat) : what(std::move(newWhat)) {
    InstallHooks();
    calls = 0;
    armed = true;
}

AllocationTrap::~AllocationTrap() {
    armed = false;
    EXPECT_EQ(calls, 0) << what << " took or freed memory";
}

std::int64_t AllocationTrap::Calls() const { return calls; }

void AllocationTrap::Forgive() { calls = 0; }

AllocationLimit::AllocationLimit(std::int64_t allocations) {
    allowed = allocations;
    kept = 0;
    limited = true;
}

AllocationLimit::~AllocationLimit() { limited = false; }

bool AllocationLimit::IsSupported() {
#ifdef TRAP_BY_HOOKS
    return false;
#else
    return true;
#endif
}

std::int64_t AllocationLimit::Kept() const { return kept; }
