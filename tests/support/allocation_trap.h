// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

// Fails the running test when the thread that made the trap takes or frees memory while the trap
// lives.
//
//     AllocationTrap trap("Process");
//     effect.Process(...);
//
// Threads  counts the calls of its own thread only; traps of one thread do not nest
// Method   the program's malloc family is replaced by one that counts; under a sanitizer, which
//          has its own, its allocation hooks count
class AllocationTrap {
public:
    explicit AllocationTrap(std::string what);
    AllocationTrap(const AllocationTrap&) = delete;
    AllocationTrap& operator=(const AllocationTrap&) = delete;
    ~AllocationTrap();

    // What was counted so far. A test that expects calls takes them off with Forgive.
    std::int64_t Calls() const;
    void Forgive();

private:
    std::string what;
};

// Has every allocation of this thread fail behind the first ones, as long as it lives.
//
//     AllocationLimit limit(10);   // the eleventh fails
//     plugin = CreateProductPlugin();
//
// Threads  those of the trap; a trap and a limit do not see each other
// Method   as the trap's, but that sanitizers let nobody fail: nothing does then
class AllocationLimit {
public:
    explicit AllocationLimit(std::int64_t allocations);
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit();

    static bool IsSupported();
    // How many blocks were taken and not freed so far.
    std::int64_t Kept() const;
};
