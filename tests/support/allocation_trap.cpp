// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/allocation_trap.h"

#include <gtest/gtest.h>

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
// The C library's own entries behind the ones that are replaced here. operator new of the C++
// library calls malloc, so that it is counted too.
#pragma GCC visibility push(default)
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t size) {
    Count();
    return __libc_malloc(size);
}

void* realloc(void* block, std::size_t size) {
    Count();
    return __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    Count();
    return __libc_memalign(alignment, size);
}

void free(void* block) {
    if (block != nullptr) Count();
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
