// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/growing_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <utility>

// Asked for more than there is, the sanitizers' allocators end the process unless told otherwise.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

TEST(GrowingBuffer, GrowsByTheRuleAndOnlyWhenItMust) {
    GrowingBuffer<float> buffer;
    struct Step {
        int count;
        bool reallocates;
        int capacity;
    };
    constexpr Step kSteps[] = {
        {0, false, 0},    {1, true, 1},    {2, true, 2},     {3, true, 4},      {4, false, 4},
        {100, true, 128}, {5, false, 128}, {-1, false, 128}, {128, false, 128}, {129, true, 256}};
    for (const Step& step : kSteps) {
        EXPECT_EQ(buffer.Reserve(step.count), step.reallocates) << step.count;
        EXPECT_EQ(buffer.Capacity(), step.capacity) << step.count;
    }
}

TEST(GrowingBuffer, KeepsContentsAndZeroesFreshCells) {
    GrowingBuffer<int> buffer;
    buffer.Reserve(1000);
    EXPECT_TRUE(
        std::all_of(buffer.Data(), buffer.Data() + 1024, [](int cell) { return cell == 0; }));
    std::iota(buffer.Data(), buffer.Data() + 1024, 0);
    EXPECT_TRUE(buffer.SetCapacity(5));
    EXPECT_EQ(buffer.Capacity(), 8);
    EXPECT_TRUE(buffer.Reserve(1000));  // into memory that held other numbers a moment ago
    for (int i = 0; i < 1024; ++i) ASSERT_EQ(buffer[i], i < 8 ? i : 0);
    GrowingBuffer<int> moved = std::move(buffer);
    EXPECT_EQ(moved[7], 7);
    EXPECT_TRUE(moved.SetCapacity(0));
    EXPECT_EQ(moved.Data(), nullptr);
}

TEST(GrowingBuffer, FailedAllocationLeavesItUnchanged) {
    struct Megabyte {
        char bytes[1 << 20];
    };
    GrowingBuffer<Megabyte> buffer;
    buffer.Reserve(1);
    buffer[0].bytes[1] = 'x';
    EXPECT_THROW(buffer.Reserve(1 << 30), std::bad_alloc);        // 2^50 bytes
    EXPECT_THROW(buffer.Reserve((1 << 30) + 1), std::bad_alloc);  // no such capacity
    EXPECT_EQ(buffer.Capacity(), 1);
    EXPECT_EQ(buffer[0].bytes[1], 'x');
}
