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
