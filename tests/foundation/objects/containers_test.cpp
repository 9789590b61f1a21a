// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "foundation/objects/array_queue.h"
#include "foundation/objects/elsewhere.h"
#include "foundation/objects/mlist.h"
#include "foundation/objects/random.h"

// Asked for more than there is, the sanitizers' allocators end the process unless told otherwise.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

TEST(GrowingBuffer, GrowsByTheRuleKeepsItsCellsAndZeroesFreshOnes) {
    GrowingBuffer<int> buffer;
    int capacity = 0;
    for (const auto& [count, wanted] : {std::pair{0, 0},
                                        {1, 1},
                                        {2, 2},
                                        {3, 4},
                                        {4, 4},
                                        {5, 8},
                                        {3, 8},
                                        {100, 128},
                                        {-1, 128},
                                        {129, 256}}) {
        EXPECT_EQ(buffer.Reserve(count), wanted != capacity);
        ASSERT_EQ(buffer.Capacity(), wanted);
        for (; capacity < wanted; ++capacity)
            ASSERT_EQ(std::exchange(buffer[capacity], capacity + 1), 0);
    }
    EXPECT_TRUE(buffer.SetCapacity(5));
    EXPECT_THROW(buffer.Reserve((1 << 30) + 1), std::bad_alloc);
    ASSERT_EQ(buffer.Capacity(), 8);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(buffer[i], i + 1);
}

TEST(List, KeepsItsOrderAndTheCapacityOfItsCount) {
    int items[6];
    MList<int, 2> list;
    std::vector<int*> expected;
    const auto check = [&] {
        constexpr int kCapacities[] = {0, 1, 2, 4, 4, 8, 8};
        EXPECT_TRUE(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
        EXPECT_EQ(list.Capacity(), kCapacities[expected.size()]);
        for (const int index : {-1, list.Count()})
            EXPECT_EQ(Raised([&] { list.Delete(index); }), "Index out of range.");
        EXPECT_EQ(Raised([&] { list.Insert(list.Count() + 1, items); }), "Index out of range.");
    };
    for (const int place : {0, 0, 1, 3, 2, 0}) {
        int* const item = &items[list.Count()];
        list.Insert(place, item);
        expected.insert(expected.begin() + place, item);
        check();
    }
    for (const int place : {2, 4, 0, 2, 1, 0}) {
        EXPECT_TRUE(list.Remove(expected[place]));
        expected.erase(expected.begin() + place);
        check();
    }
    EXPECT_FALSE(list.Remove(items));
}

TEST(ArrayQueue, EqualsASlowQueueUnderRandomUse) {
    MArrayQueue<std::shared_ptr<int>> queue;
    std::deque<std::shared_ptr<int>> slow;
    MRandomSequence random{99};
    std::shared_ptr<int> kinds[] = {std::make_shared<int>(1), std::make_shared<int>(2)};
    std::shared_ptr<int> values[20];
    for (int round = 0; round < 5000; ++round) {
        const int count = random.Next() % 20;
        for (auto& value : values) value = kinds[random.Next() % 2];
        if (const int action = random.Next() % 8; action < 3) {
            queue.Push(values, count);
            queue.PushCopies(values[0], 2);
            slow.insert(slow.end(), values, values + count);
            slow.insert(slow.end(), 2, values[0]);
        } else if (action == 3) {
            for (int left = queue.Remove(values[0], count); left > 0; --left)
                slow.erase(std::find(slow.begin(), slow.end(), values[0]));
        } else if (action == 4) {
            queue.Trim(count);
        } else if (count > static_cast<int>(slow.size())) {
            ASSERT_EQ(Raised([&] { queue.Drop(count); }), "Not enough data in the queue.");
        } else {
            queue.Pull(values, count);
            ASSERT_TRUE(std::equal(values, values + count, slow.begin()));
            slow.erase(slow.begin(), slow.begin() + count);
        }
        ASSERT_EQ(queue.Length(), static_cast<int>(slow.size()));
    }
    queue.Clear();
    slow.clear();
    std::fill(std::begin(values), std::end(values), nullptr);
    EXPECT_EQ(kinds[0].use_count(), 1);  // what has left is let go of
}

// By hand from seed 0: 2531011 / 65536 = 38.6; 2531011 * 214014 mod 2^32 = 505908858, / 65536 =
// 7719.5.
TEST(Random, ThreadsDrawFromOneSequence) {
    SetRandomSeed(0);
    EXPECT_DOUBLE_EQ(RandomUnit(), 38.0 / 32767);
    EXPECT_EQ(NextRandom(), 7719);
    OnThreads(4, [](int) {
        for (int i = 0; i < 5000; ++i) NextRandom();
    });
    MRandomSequence sequence;
    for (int i = 0; i < 2 + 4 * 5000; ++i) sequence.Next();
    EXPECT_EQ(NextRandom(), sequence.Next());
}
