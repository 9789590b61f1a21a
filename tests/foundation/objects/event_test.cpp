// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "foundation/objects/callback.h"
#include "foundation/objects/elsewhere.h"
#include "foundation/objects/event_params.h"
#include "support/allocation_trap.h"

namespace {

using Note = MOnItemParams<int>;
using NoteEvent = MEvent<Note>;

// Its handlers are members of a class which is no target. The action is done once.
struct Writer {
    Writer(std::string& log, char name) : log(log), name(name) {}
    virtual ~Writer() = default;
    void OnNote(const Note& note) {
        log += name + std::to_string(note.item) + ' ';
        if (const auto told = std::exchange(action, nullptr)) told();
    }
    void OnShortcut(const MOnKeyboardShortcutParams&) { log += name; }

    std::string& log;
    char name;
    std::function<void()> action;
};

struct Listener : MEventTarget, Writer {
    using Writer::Writer;
};

struct Counter : MEventTarget {
    void OnNote(const Note& note) { count += note.item == count; }
    int count = 0;  // of those that came in order
};

// Listeners a to d are connected to one event, e is not.
struct Scene {
    Scene() {
        for (Listener* each : {a.get(), b.get(), c.get(), d.get()}) Connect(each);
    }
    void Connect(Listener* listener) { event->Connect<&Writer::OnNote>(listener); }
    void Drop(const std::unique_ptr<Listener>& listener) { event->Disconnect(listener.get()); }
    void Post(int value) { event->Post(processor, {nullptr, value}); }
    void Send(int value) { event->Send({nullptr, value}); }
    std::string Process() {
        processor.Process();
        return std::exchange(log, {});
    }

    std::string log;
    MEventProcessor processor;
    std::unique_ptr<NoteEvent> event = std::make_unique<NoteEvent>();
    std::unique_ptr<Listener> a = std::make_unique<Listener>(log, 'a');
    std::unique_ptr<Listener> b = std::make_unique<Listener>(log, 'b');
    std::unique_ptr<Listener> c = std::make_unique<Listener>(log, 'c');
    std::unique_ptr<Listener> d = std::make_unique<Listener>(log, 'd');
    Listener e{log, 'e'};
};

}  // namespace

TEST(Event, HandlersMayChangeEverythingDuringDelivery) {
    // What b does, once, and who hears of that notification and the next one.
    const std::tuple<void (*)(Scene&), const char*, const char*> cases[] = {
        {[](Scene& s) { s.Connect(&s.e); }, "a1 b1 c1 d1 ", "a2 b2 c2 d2 e2 "},
        {[](Scene& s) { s.Drop(s.b); }, "a1 b1 c1 d1 ", "a2 c2 d2 "},
        {[](Scene& s) { s.Drop(s.c), s.Connect(s.c.get()); }, "a1 b1 d1 ", "a2 b2 d2 c2 "},
        {[](Scene& s) { s.a.reset(), s.b.reset(), s.d.reset(); }, "a1 b1 c1 ", "c2 "},
        {[](Scene& s) { s.Post(7); }, "a1 b1 c1 d1 a7 b7 c7 d7 ", "a2 b2 c2 d2 "},
        {[](Scene& s) { s.Drop(s.a), s.Send(7); }, "a1 b1 b7 c7 d7 c1 d1 ", "b2 c2 d2 "},
        {[](Scene& s) { s.b->action = [&s] { s.event.reset(); }, s.Send(7); }, "a1 b1 a7 b7 ", ""},
    };
    for (const auto& [action, first, second] : cases) {
        for (const bool posted : {false, true}) {
            Scene scene;
            scene.b->action = [&scene, act = action] { act(scene); };
            for (int value = 1; value <= 2 && scene.event != nullptr; ++value) {
                posted ? scene.Post(value) : scene.Send(value);
                EXPECT_EQ(scene.Process(), value == 1 ? first : second);
            }
        }
    }
}

TEST(Event, NotificationsArriveInTheOrderOfPostingUnlessTheirEventsDie) {
    Scene scene;
    NoteEvent other;
    auto dying = std::make_unique<NoteEvent>();
    for (NoteEvent* event : {&other, dying.get()}) event->Connect<&Writer::OnNote>(&scene.e);
    scene.Post(1);
    dying->Post(scene.processor, {nullptr, 9});
    other.Post(scene.processor, {nullptr, 2});
    scene.Post(3);
    dying.reset();
    scene.a.reset(), scene.c.reset();
    EXPECT_EQ(scene.Process(), "b1 d1 e2 b3 d3 ");
    {
        MEventProcessor shortLived;
        scene.event->Post(shortLived, {nullptr, 4});
        scene.Post(5);  // behind the first one, on the same processor
    }
    EXPECT_EQ(Raised([&] { scene.event->ProcessOne(); }), "Index out of range.");
    for (const int value : {6, 7, 8}) scene.Post(value);
    scene.event->ProcessOne();
    scene.b->action = [] { throw std::runtime_error("b"); };
    EXPECT_THROW(scene.processor.Process(), std::runtime_error);
    EXPECT_EQ(scene.Process(), "b6 d6 b7 b8 d8 ");
}

TEST(Event, ThreadsPostWithoutMemoryWhileEventsAndTargetsDie) {
    constexpr int kCount = 1000;
    Counter counter;
    MEventProcessor processor;
    NoteEvent lasting;
    lasting.Connect<&Counter::OnNote>(&counter);
    lasting.Reserve(kCount);
    processor.Reserve(2 * kCount);
    std::deque<Counter> targets(kCount);
    std::deque<NoteEvent> dying(kCount);
    for (int i = 0; i < kCount; ++i) dying[i].Connect<&Counter::OnNote>(&targets[i]);
    OnThreads(4, [&](int t) {
        AllocationTrap trap("Post within the reserve");
        for (int i = 0; i < kCount; ++i) {
            if (t == 0) lasting.Post(processor, {nullptr, i});
            if (t == 1) processor.Process();
            if (t == 2) NoteEvent().Post(processor, {nullptr, i}), dying.pop_front();
            if (t == 3) targets.pop_front();
        }
        if (t > 0) trap.Forgive();
    });
    processor.Process();
    EXPECT_EQ(counter.count, kCount);
}

TEST(Callback, CallsItsHandlerForItsShortcutAndDeletesWhatItOwns) {
    std::string log;
    Listener open(log, 'o');
    MEvent<MOnKeyboardShortcutParams, MKeyboardShortcut> event;
    MCallback<MOnKeyboardShortcutParams, MKeyboardShortcut> callback;
    event.Connect<&Writer::OnShortcut>(&open, {'O', 16});
    callback.Connect<&Writer::OnShortcut>(&open, {'O', 16});
    callback.ConnectOwned<&Writer::OnShortcut>(std::make_unique<Listener>(log, 's'), {'S', 80});
    for (const char key : {'S', 'O'}) {
        for (const std::uint8_t modifiers : {16, 80}) {
            event.Send({nullptr, {key, modifiers}});
            callback.Call({nullptr, {key, modifiers}});
        }
    }
    EXPECT_EQ(log, "so");
}
