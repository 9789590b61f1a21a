// SPDX-License-Identifier: GPL-3.0-or-later
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#ifdef DLFO_EH_SEGMENT_TYPE

namespace {

int Thrower(int depth) {
    if (depth == 0) throw std::out_of_range("deep");
    return Thrower(depth - 1) + 1;
}

TEST(UnwindLookup, FindsTheObjectOfACodeAddressWithItsTable) {
    for (void* address :
         {reinterpret_cast<void*>(&Thrower), reinterpret_cast<void*>(&std::abort)}) {
        dl_find_object found;
        ASSERT_EQ(0, _dl_find_object(address, &found));
        EXPECT_LE(found.dlfo_map_start, address);
        EXPECT_GT(found.dlfo_map_end, address);
        // The header of a table begins with its version, which is 1.
        EXPECT_EQ(1, *static_cast<const std::uint8_t*>(found.dlfo_eh_frame));
    }
}

TEST(UnwindLookup, KnowsNoObjectOfDataOnTheStackOrOfNothing) {
    std::array<int, 4> local{};
    dl_find_object found;
    EXPECT_EQ(-1, _dl_find_object(local.data(), &found));
    EXPECT_EQ(-1, _dl_find_object(nullptr, &found));
}

// libgcc is linked into this program, as it is into the shared library.
TEST(UnwindLookup, CarriesAnExceptionToItsHandler) { EXPECT_THROW(Thrower(20), std::out_of_range); }

}  // namespace

#endif
