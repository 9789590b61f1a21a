// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <vector>

#include "foundation/objects/array_queue.h"
#include "foundation/objects/flag_manager.h"
#include "foundation/objects/mlist.h"
#include "foundation/objects/random.h"
#include "support/allocation_trap.h"

namespace {

template <typename Action>
void ExpectRaises(const char* message, Action action) {
    try {
        action();
        ADD_FAILURE() << "nothing raised";
    } catch (const MException& error) {
        EXPECT_STREQ(error.what(), message);
    }
}

}  // namespace

TEST(List, KeepsItsOrderAndTheCapacityOfItsCount) {
    int items[6];
    MList<int, 2> list;
    std::vector<int*> expected;
    constexpr int kCapacities[] = {0, 1, 2, 4, 4, 8, 8};
    for (int place : {0, 0, 1, 3, 2, 0}) {
        int* const item = &items[list.Count()];
        list.Insert(place, item);
        expected.insert(expected.begin() + place, item);
        EXPECT_EQ(list.Capacity(), kCapacities[list.Count()]);
    }
    for (int place : {2, 4, 0, 2, 1, 0}) {
        EXPECT_TRUE(std::equal(list.begin(), list.end(), expected.begin(), expected.end()));
        EXPECT_EQ(list.Find(expected[place]), place);
        EXPECT_TRUE(list.Remove(expected[place]));
        expected.erase(expected.begin() + place);
        EXPECT_EQ(list.Capacity(), kCapacities[list.Count()]);
    }
    EXPECT_FALSE(list.Remove(items));
}

TEST(List, RefusesPlacesWhereNothingStands) {
    int item;
    MList<int, 2> list;
    list.Add(&item);
    for (int index : {-1, 1, 2}) {
        ExpectRaises("Index out of range.", [&] { (void)list[index]; });
        ExpectRaises("Index out of range.", [&] { list.Delete(index); });
        if (index != 1) ExpectRaises("Index out of range.", [&] { list.Insert(index, &item); });
    }
    EXPECT_EQ(list[0], &item);
    EXPECT_EQ(list.Count(), 1);
}

TEST(ArrayQueue, EqualsASlowQueueUnderRandomUse) {
    MArrayQueue<int> queue;
    std::deque<int> slow;
    MRandomSequence random{99};
    int values[20];
    for (int round = 0; round < 20000; ++round) {
        const int count = random.Next() % 20;
        const int length = static_cast<int>(slow.size());
        for (int& value : values) value = random.Next() % 8;
        switch (const int action = random.Next() % 8) {
            case 0:
                queue.Push(values, count);
                slow.insert(slow.end(), values, values + count);
                break;
            case 1:
                queue.Push(values[0]);
                queue.PushCopies(values[1], count);
                slow.push_back(values[0]);
                slow.insert(slow.end(), static_cast<std::size_t>(count), values[1]);
                break;
            case 2: {
                const int removed = queue.Remove(values[0], count);
                for (int i = 0; i < removed; ++i)
                    slow.erase(std::find(slow.begin(), slow.end(), values[0]));
                ASSERT_TRUE(removed == count ||
                            std::find(slow.begin(), slow.end(), values[0]) == slow.end());
                break;
            }
            case 3: {
                const int before = queue.Capacity();
                queue.Trim(count);
                ASSERT_EQ(queue.Capacity(),
                          std::min<std::int64_t>(before, RoundedCapacity(std::max(length, count))));
                break;
            }
            default:
                if (count > length) {
                    ExpectRaises("Not enough data in the queue.", [&] { queue.Drop(count); });
                } else if (action == 4) {
                    queue.Drop(count);
                } else {
                    queue.Pull(values, count);
                    ASSERT_TRUE(std::equal(values, values + count, slow.begin()));
                }
                if (count <= length) slow.erase(slow.begin(), slow.begin() + count);
        }
        ASSERT_EQ(queue.Length(), static_cast<int>(slow.size()));
        ASSERT_TRUE(slow.empty() || queue.Front() == slow.front());
    }
    queue.Clear();
    ExpectRaises("Not enough data in the queue.", [&] { queue.Pull(); });
}

TEST(ArrayQueue, DelaysWithoutTakingMemory) {
    MArrayQueue<float> queue;
    queue.Reserve(100 + 64);
    queue.PushCopies(0, 100);
    float block[64];
    AllocationTrap trap("a delay by a reserved queue");
    for (int start = 0; start < 6400; start += 64) {
        for (int i = 0; i < 64; ++i) block[i] = static_cast<float>(start + i + 1);
        queue.Push(block, 64);
        queue.Pull(block, 64);
        for (int i = 0; i < 64; ++i)
            ASSERT_EQ(block[i], static_cast<float>(std::max(start + i + 1 - 100, 0)));
    }
}

TEST(ArrayQueue, LetsGoOfWhatHasLeft) {
    const auto shared = std::make_shared<int>(0);
    MArrayQueue<std::shared_ptr<int>> queue;
    queue.PushCopies(shared, 9);
    queue.Pull();
    queue.Drop(1);
    queue.Trim(2);
    EXPECT_EQ(queue.Remove(shared, 3), 3);
    EXPECT_EQ(shared.use_count(), 1 + 4);
    queue.Clear();
    EXPECT_EQ(shared.use_count(), 1);
}

TEST(FlagManager, ChangesOnlyWhatIsAskedFor) {
    struct Flagged : MFlagManager<16> {
    } flagged;
    flagged.SetFlags(0x8005);
    flagged.SetFlags(0x0004, false);
    EXPECT_EQ(flagged.GetFlags(), 0x8001);
    EXPECT_TRUE(flagged.HasFlags(0x8001));
    EXPECT_FALSE(flagged.HasFlags(0x8004));
}
