// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event_target.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/objects/event_base.h"
#include "foundation/objects/lock.h"

namespace {

// Knows its targets and delivers nothing.
class ListedEvent : public MEventBase {
public:
    ~ListedEvent() override {
        MLocker lock(EventLock());
        for (MEventTarget* target : targets) Detach(*target);
    }
    void Connect(MEventTarget& target) {
        MLocker lock(EventLock());
        Attach(target);
        targets.push_back(&target);
    }
    void ProcessOne() override {}
    void ClearQueue() override {}
    void RemoveTarget(MEventTarget* target) override {
        MLocker lock(EventLock());
        if (std::erase(targets, target) > 0) Detach(*target);
    }

    std::vector<MEventTarget*> targets;
};

}  // namespace

TEST(EventTarget, DisconnectsFromEveryEventWhenDestroyed) {
    ListedEvent first;
    ListedEvent second;
    MEventTarget stays;
    first.Connect(stays);
    {
        MEventTarget target;
        first.Connect(target);
        second.Connect(target);
        first.Connect(target);
    }
    EXPECT_EQ(first.targets, std::vector{&stays});
    EXPECT_TRUE(second.targets.empty());
}

TEST(EventTarget, OutlivesItsEvents) {
    auto target = std::make_unique<MEventTarget>();
    ListedEvent stays;
    auto events = std::make_unique<std::vector<ListedEvent>>(9);
    for (ListedEvent& event : *events) event.Connect(*target);
    stays.Connect(*target);
    (*events)[4].RemoveTarget(target.get());
    (*events)[4].RemoveTarget(target.get());
    events.reset();
    EXPECT_EQ(stays.targets.size(), 1u);
    target.reset();
    EXPECT_TRUE(stays.targets.empty());
}

TEST(EventTarget, MayDieWhileItsEventsDieElsewhere) {
    for (int round = 0; round < 500; ++round) {
        std::vector<std::unique_ptr<ListedEvent>> events(4);
        std::vector<std::unique_ptr<MEventTarget>> targets(4);
        for (auto& event : events) event = std::make_unique<ListedEvent>();
        for (auto& target : targets) {
            target = std::make_unique<MEventTarget>();
            for (auto& event : events) event->Connect(*target);
        }
        std::thread other([&events] { events.clear(); });
        targets.clear();
        other.join();
    }
}
