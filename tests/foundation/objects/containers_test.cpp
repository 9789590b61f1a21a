// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>

#include "foundation/objects/array_queue.h"
#include "foundation/objects/elsewhere.h"
#include "foundation/objects/mlist.h"
#include "foundation/objects/random.h"

// By hand: 2531011 / 65536 = 38.6.
static_assert(MRandomSequence{0}.Next() == 38);

TEST(GrowingBuffer, ReservesByTheRuleAndZeroesFreshCells) {
    GrowingBuffer<int> buffer;
    EXPECT_TRUE(buffer.Reserve(100));
    std::fill_n(buffer.Data(), 128, 1);
    EXPECT_FALSE(buffer.Reserve(5));
    EXPECT_TRUE(buffer.SetCapacity(5));
    EXPECT_TRUE(buffer.Reserve(129));
    EXPECT_THROW(buffer.Reserve((1 << 30) + 1), std::bad_alloc);
    ASSERT_EQ(buffer.Capacity(), 256);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(buffer[i], i < 8 ? 1 : 0);
}

TEST(List, KeepsItsOrderAndTheCapacityOfItsCount) {
    int items[6];
    MList<int, 2> list;
    std::deque<int*> expected;
    constexpr int kPlaces[] = {0, 0, 1, 3, 2, 0, 2, 4, 0, 2, 1, 0};
    constexpr int kCapacities[] = {1, 2, 4, 4, 8, 8, 8, 4, 4, 2, 1, 0};
    for (int step = 0; step < 12; ++step) {
        const auto place = expected.begin() + kPlaces[step];
        if (step < 6) {
            list.Insert(kPlaces[step], &items[step]);
            expected.insert(place, &items[step]);
        } else {
            EXPECT_TRUE(list.Remove(*place));
            expected.erase(place);
        }
        EXPECT_TRUE(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
        EXPECT_EQ(list.Capacity(), kCapacities[step]);
        for (const int index : {-1, list.Count()})
            EXPECT_EQ(Raised([&] { list.Delete(index); }), "Index out of range.");
    }
}

TEST(ArrayQueue, EqualsASlowQueueUnderRandomUse) {
    MArrayQueue<std::shared_ptr<int>> queue;
    std::deque<std::shared_ptr<int>> slow;
    MRandomSequence random{99};
    const std::shared_ptr<int> kinds[] = {std::make_shared<int>(1), std::make_shared<int>(2)};
    for (int round = 0; round < 5000; ++round) {
        std::shared_ptr<int> values[20];
        const int count = random.Next() % 20;
        for (auto& value : values) value = kinds[random.Next() % 2];
        if (const int action = random.Next() % 8; action < 3) {
            queue.Push(values, count);
            queue.PushCopies(values[0], 2);
            slow.insert(slow.end(), values, values + count);
            slow.resize(slow.size() + 2, values[0]);
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
    slow.clear();
    queue.Clear();
    EXPECT_EQ(kinds[0].use_count(), 1);  // what has left is let go of
}
