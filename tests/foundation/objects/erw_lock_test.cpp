// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/erw_lock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>

#include "foundation/objects/elsewhere.h"
#include "foundation/objects/random.h"

namespace {

constexpr std::uint32_t kRead = MSynchronizer::kRead;
constexpr std::uint32_t kWrite = MSynchronizer::kWrite;
constexpr const char* kRefused = "Could not acquire emulated synchronization object.";

// A thread that acquires and releases when told to, and what it holds by the rules.
struct Actor {
    ~Actor() {
        task = Stops;
        told.Release();
        thread.join();
    }
    std::thread thread;
    MSemaphore told;
    enum { Acquires, Releases, Stops } task = Acquires;
    std::uint32_t mode = kRead;
    std::uint32_t timeout = 0;
    int answer = 0;
    std::atomic<bool> done = false;

    bool waits = false;
    int holds[2] = {};  // by mode
};

// Drives a few threads in step and holds what the lock answers against the rules, which are told
// here from the view of the thread that asks.
struct Play {
    Play() {
        for (Actor& actor : actors) actor.thread = std::thread([&] { Act(actor); });
    }
    void Act(Actor& actor) {
        while (actor.told.Acquire(kInfinite) == 0 && actor.task != Actor::Stops) {
            actor.answer = actor.task == Actor::Releases ? lock.Release(actor.mode)
                                                         : lock.Acquire(actor.mode, actor.timeout);
            actor.done = true;
        }
    }
    void Step(bool onlyReleases) {
        Actor& actor = actors[random.Next() % actors.size()];
        if (actor.waits) return;
        actor.mode = random.Next() % 3 == 0 ? kWrite : kRead;
        actor.timeout = random.Next() % 2 == 0 ? kInfinite : 1;
        const bool releases = onlyReleases || random.Next() % 2 == 0;
        if (releases && actor.holds[actor.mode] == 0) return;
        actor.task = releases ? Actor::Releases : Actor::Acquires;
        actor.holds[actor.mode] -= releases;
        const bool granted = !releases && MayEnter(actor);
        actor.waits = !releases && !granted && actor.timeout == kInfinite;
        actor.done = false;
        const int begun = lock.begun;
        actor.told.Release();
        while (actor.waits ? lock.begun == begun : !actor.done) std::this_thread::yield();
        if (!actor.waits) {
            ASSERT_EQ(actor.answer, releases ? IsFree() : !granted);
            actor.holds[actor.mode] += granted;
        }
        LetIn();
    }
    bool IsFree() const {
        const auto holds = [](const Actor& each) { return each.holds[0] + each.holds[1] > 0; };
        return std::none_of(actors.begin(), actors.end(), holds);
    }
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
        const auto came = [](const Actor& each) { return each.waits && each.done; };
        while (std::any_of(actors.begin(), actors.end(), mayCome)) {
            const auto in = std::find_if(actors.begin(), actors.end(), came);
            if (in == actors.end()) continue;
            ASSERT_TRUE(mayCome(*in) && in->answer == 0);
            in->waits = false;
            ++in->holds[in->mode];
        }
        ASSERT_TRUE(std::none_of(actors.begin(), actors.end(), came));
    }

    struct Lock : MERWLock {
        void BeginWait(std::uint32_t mode) override { MERWLock::BeginWait(mode), ++begun; }
        std::atomic<int> begun = 0;
    } lock;
    std::array<Actor, 4> actors;
    MRandomSequence random{7};
};

}  // namespace

TEST(ERWLock, ThreadsInStepGetWhatTheRulesSay) {
    Play play;
    for (int i = 0; (i < 4000 || !play.IsFree()) && !HasFatalFailure(); ++i) play.Step(i >= 4000);
}

TEST(ERWLock, NobodyReadsWhileAnotherWrites) {
    MERWLock lock;
    int numbers[2] = {};  // differ only while somebody writes
    OnThreads(4, [&](int t) {
        MRandomSequence random{static_cast<std::uint32_t>(t)};
        const auto nest = [&](const auto& self, int depth) -> void {
            const std::uint32_t mode = random.Next() % 3 == 0 ? kWrite : kRead;
            MSynchronizer hold(&lock, mode, random.Next() % 2 == 0 ? kInfinite : 1);
            EXPECT_EQ(numbers[0], numbers[1]);
            if (mode == kWrite) ++numbers[0];
            std::this_thread::sleep_for(std::chrono::milliseconds(random.Next() % 8 == 0 ? 2 : 0));
            if (mode == kWrite) ++numbers[1];
            if (depth == 0) return;
            const std::string refusal = Raised([&] { self(self, depth - 1); });
            EXPECT_TRUE(refusal.empty() || refusal == kRefused);
            EXPECT_EQ(numbers[0], numbers[1]);
        };
        for (int i = 0; i < 300; ++i) Raised([&] { nest(nest, 3); });
    });
    MSynchronizer none(nullptr, kWrite);
    MSynchronizer free(&lock, kWrite | MSynchronizer::kNoYield, 0);
}

TEST(ERWLock, RefusesMoreHoldsThanAThreadsWordCounts) {
    MERWLock lock;
    for (const std::uint32_t mode : {kRead, kWrite}) {
        for (int i = 0; i < 65535; ++i) ASSERT_EQ(lock.Acquire(mode, kInfinite), 0);
        EXPECT_EQ(Raised([&] { (void)lock.Acquire(mode, kInfinite); }), kRefused);
    }
    for (int i = 0; i < 2 * 65535; ++i) ASSERT_EQ(lock.Release(i % 2), i == 2 * 65535 - 1);
}
