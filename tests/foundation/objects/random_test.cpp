// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

// By hand from seed 0: 2531011 / 65536 = 38.6; 2531011 * 214014 mod 2^32 = 505908858, / 65536 =
// 7719.5. From seed 1: 2745024 / 65536 = 41.9.
static_assert([] {
    MRandomSequence sequence;
    return sequence.Next() == 38 && sequence.Next() == 7719 && sequence.seed == 505908858;
}());
static_assert(MRandomSequence{1}.Next() == 41);

TEST(Random, UnitIsTheNumberOver32767) {
    SetRandomSeed(0);
    EXPECT_DOUBLE_EQ(RandomUnit(), 38.0 / 32767);
    EXPECT_EQ(NextRandom(), 7719);
}

TEST(Random, ThreadsDrawFromOneSequence) {
    constexpr int kThreads = 4;
    constexpr int kDraws = 5000;
    SetRandomSeed(4711);
    std::vector<std::vector<int>> drawn(kThreads);
    std::vector<std::thread> threads;
    for (std::vector<int>& numbers : drawn) {
        threads.emplace_back([&numbers] {
            for (int i = 0; i < kDraws; ++i) numbers.push_back(NextRandom());
        });
    }
    for (std::thread& thread : threads) thread.join();

    std::vector<int> together;
    for (const std::vector<int>& numbers : drawn)
        together.insert(together.end(), numbers.begin(), numbers.end());
    MRandomSequence sequence{4711};
    std::vector<int> expected(kThreads * kDraws);
    std::generate(expected.begin(), expected.end(), [&] { return sequence.Next(); });
    std::sort(together.begin(), together.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(together, expected);
}
