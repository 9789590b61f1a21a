// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/erw_lock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <vector>

#include "foundation/objects/elsewhere.h"
#include "foundation/objects/random.h"

namespace {

constexpr std::uint32_t kRead = MSynchronizer::kRead;
constexpr std::uint32_t kWrite = MSynchronizer::kWrite;
constexpr const char* kRefused = "Could not acquire emulated synchronization object.";

// A thread that acquires and releases when told to, and what it holds by the rules.
struct Actor {
    void Run(MERWLock& lock, MSemaphore& arrived) {
        while (told.Acquire(kInfinite) == 0 && !stops) {
            answer = releases ? lock.Release(mode) : lock.Acquire(mode, timeout);
            done = true;
            arrived.Release();
        }
    }

    MSemaphore told;
    bool stops = false;
    bool releases = false;
    std::uint32_t mode = kRead;
    std::uint32_t timeout = 0;
    int answer = 0;
    std::atomic<bool> done = false;

    bool waits = false;
    int holds[2] = {};  // by mode
};

// Drives a few threads in step and holds what the lock answers against the rules, which are told
// here from the view of the thread that asks.
class Play {
public:
    ~Play() {
        for (Actor& actor : actors) actor.stops = true, actor.told.Release();
        for (std::thread& thread : threads) thread.join();
    }
    void Step(bool onlyReleases) {
        Actor& actor = actors[random.Next() % actors.size()];
        if (actor.waits) return;
        constexpr std::uint32_t kTimeouts[] = {0, 1, kInfinite, kInfinite};
        actor.mode = random.Next() % 3 == 0 ? kWrite : kRead;
        actor.timeout = kTimeouts[random.Next() % 4];
        actor.releases = onlyReleases || random.Next() % 2 == 0;
        if (actor.releases && actor.holds[actor.mode] == 0) return;
        actor.holds[actor.mode] -= actor.releases;
        const bool granted = !actor.releases && MayEnter(actor);
        actor.waits = !actor.releases && !granted && actor.timeout == kInfinite;
        actor.done = false;
        actor.told.Release();
        if (!actor.waits) {
            (void)arrived.Acquire(kInfinite);
            ASSERT_EQ(actor.answer, actor.releases ? IsFree() : !granted);
            actor.holds[actor.mode] += granted;
        }
        LetIn();
    }
    bool IsFree() const {
        return std::all_of(actors.begin(), actors.end(), [](const Actor& each) {
            return each.holds[kRead] + each.holds[kWrite] == 0;
        });
    }

private:
    bool MayEnter(const Actor& asking) const {
        if (asking.holds[kWrite] > 0) return true;
        if (asking.mode == kRead && asking.holds[kRead] > 0) return true;
        return std::none_of(actors.begin(), actors.end(), [&](const Actor& other) {
            const bool waitsToWrite = other.waits && other.mode == kWrite;
            const bool reads = other.holds[kRead] > 0 && !waitsToWrite;
            if (&other == &asking) return false;
            return other.holds[kWrite] > 0 || (asking.mode == kRead ? waitsToWrite : reads);
        });
    }
    // Those who wait come in as long as the rules let anybody in, and nobody else does.
    void LetIn() {
        const auto mayCome = [&](const Actor& each) { return each.waits && MayEnter(each); };
        while (std::any_of(actors.begin(), actors.end(), mayCome)) {
            (void)arrived.Acquire(kInfinite);
            const auto in = std::find_if(actors.begin(), actors.end(),
                                         [](const Actor& each) { return each.waits && each.done; });
            ASSERT_TRUE(in != actors.end() && mayCome(*in) && in->answer == 0);
            in->waits = false;
            ++in->holds[in->mode];
        }
        ASSERT_EQ(arrived.Acquire(0), 1);
    }

    MERWLock lock;
    MSemaphore arrived;
    std::array<Actor, 4> actors;
    std::vector<std::thread> threads = [this] {
        std::vector<std::thread> made;
        for (Actor& actor : actors) made.emplace_back([&] { actor.Run(lock, arrived); });
        return made;
    }();
    MRandomSequence random{7};
};

// What a lock guards: the two numbers differ only while somebody writes.
struct Guarded {
    void Nest(MRandomSequence& random, int depth) {
        constexpr std::uint32_t kTimeouts[] = {0, 1, kInfinite};
        const std::uint32_t mode = random.Next() % 3 == 0 ? kWrite : kRead;
        const std::string refusal = Raised([&] {
            MSynchronizer hold(&lock, mode, kTimeouts[random.Next() % 3]);
            EXPECT_EQ(first, second);
            if (mode == kWrite) ++first, std::this_thread::yield(), ++second;
            if (depth > 0) Nest(random, depth - 1);
            EXPECT_EQ(first, second);
        });
        EXPECT_TRUE(refusal.empty() || refusal == kRefused);
    }
    MERWLock lock;
    int first = 0;
    int second = 0;
};

}  // namespace

TEST(ERWLock, ThreadsInStepGetWhatTheRulesSay) {
    Play play;
    for (int i = 0; (i < 4000 || !play.IsFree()) && !HasFatalFailure(); ++i) play.Step(i >= 4000);
}

TEST(ERWLock, NobodyReadsWhileAnotherWrites) {
    Guarded guarded;
    OnThreads(4, [&](int t) {
        MRandomSequence random{static_cast<std::uint32_t>(t)};
        for (int i = 0; i < 500; ++i) guarded.Nest(random, random.Next() % 4);
    });
    EXPECT_GT(guarded.first, 0);
    MSynchronizer none(nullptr, kWrite);
    MSynchronizer free(&guarded.lock, kWrite | MSynchronizer::kNoYield, 0);
}

TEST(ERWLock, RefusesMoreHoldsThanAThreadsWordCounts) {
    MERWLock lock;
    for (const std::uint32_t mode : {kRead, kWrite}) {
        for (int i = 0; i < 65535; ++i) ASSERT_EQ(lock.Acquire(mode, kInfinite), 0);
        EXPECT_EQ(Raised([&] { (void)lock.Acquire(mode, kInfinite); }), kRefused);
    }
    for (int i = 0; i < 2 * 65535; ++i) ASSERT_EQ(lock.Release(i % 2), i == 2 * 65535 - 1);
}
