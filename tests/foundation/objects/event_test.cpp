// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
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
    void OnNote(const Note& note) { outOfOrder += note.item != count++; }
    int count = 0;
    int outOfOrder = 0;
};

// Listeners a to d are connected to one event, e is not.
struct Scene {
    Scene() {
        for (Listener* each : {a.get(), b.get(), c.get(), d.get()}) Connect(each);
    }
    void Connect(Listener* listener) { event->Connect<&Writer::OnNote>(listener); }
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
    const struct {
        void (*action)(Scene&);  // b's
        const char* first;       // the notification during which b acts
        const char* second;      // the next one
    } cases[] = {
        {[](Scene& s) { s.Connect(&s.e); }, "a1 b1 c1 d1 ", "a2 b2 c2 d2 e2 "},
        {[](Scene& s) { s.event->Disconnect(s.b.get()); }, "a1 b1 c1 d1 ", "a2 c2 d2 "},
        {[](Scene& s) { s.event->Disconnect(s.c.get()), s.Connect(s.c.get()); }, "a1 b1 d1 ",
         "a2 b2 d2 c2 "},
        {[](Scene& s) { s.a.reset(), s.b.reset(), s.d.reset(); }, "a1 b1 c1 ", "c2 "},
        {[](Scene& s) { s.Post(7); }, "a1 b1 c1 d1 a7 b7 c7 d7 ", "a2 b2 c2 d2 "},
        {[](Scene& s) { s.event->Disconnect(s.a.get()), s.Send(7); }, "a1 b1 b7 c7 d7 c1 d1 ",
         "b2 c2 d2 "},
        {[](Scene& s) { s.b->action = [&s] { s.event.reset(); }, s.Send(7); }, "a1 b1 a7 b7 ", ""},
    };
    for (const auto& each : cases) {
        for (const bool posted : {false, true}) {
            SCOPED_TRACE(each.first);
            Scene scene;
            scene.b->action = [&] { each.action(scene); };
            for (int value = 1; value <= 2 && scene.event != nullptr; ++value) {
                posted ? scene.Post(value) : scene.Send(value);
                EXPECT_EQ(scene.Process(), value == 1 ? each.first : each.second);
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
    scene.Post(9);
    scene.event->ClearQueue();
    EXPECT_EQ(scene.Process(), "");
}

TEST(Event, PostTakesNoMemoryWithinTheReserve) {
    Counter counter;
    MEventProcessor processor;
    NoteEvent event;
    event.Connect<&Counter::OnNote>(&counter);
    event.Reserve(50);
    processor.Reserve(50);
    AllocationTrap trap("Post and Process");
    for (int i = 0; i < 250; ++i) {
        event.Post(processor, {nullptr, i});
        if (i % 50 == 49) processor.Process();
    }
    EXPECT_EQ(counter.count, 250);
}

TEST(Event, ThreadsPostWhileEventsAndTargetsDie) {
    Counter counter;
    MEventProcessor processor;
    NoteEvent lasting;
    lasting.Connect<&Counter::OnNote>(&counter);
    std::vector<std::unique_ptr<Counter>> targets(1000);
    std::vector<std::unique_ptr<NoteEvent>> dying(1000);
    for (int i = 0; i < 1000; ++i) {
        targets[i] = std::make_unique<Counter>();
        dying[i] = std::make_unique<NoteEvent>();
        dying[i]->Connect<&Counter::OnNote>(targets[i].get());
    }
    OnThreads(4, [&](int t) {
        for (int i = 0; i < 1000; ++i) {
            if (t == 0) lasting.Post(processor, {nullptr, i});
            if (t == 1) processor.Process();
            if (t == 2) NoteEvent().Post(processor, {nullptr, i}), dying[i].reset();
            if (t == 3) targets[i].reset();
        }
    });
    processor.Process();
    EXPECT_EQ(counter.count, 1000);
    EXPECT_EQ(counter.outOfOrder, 0);
}

TEST(Event, CallsOnlyTheHandlersOfTheShortcut) {
    std::string log;
    Listener open(log, 'o');
    Listener save(log, 's');
    MEvent<MOnKeyboardShortcutParams, MKeyboardShortcut> pressed;
    pressed.Connect<&Writer::OnShortcut>(&open, {'O', 16});
    pressed.Connect<&Writer::OnShortcut>(&save, {'S', 80});
    for (const std::uint8_t modifiers : {80, 16}) {
        for (const char key : {'S', 'O'}) pressed.Send({nullptr, {key, modifiers}});
    }
    EXPECT_EQ(log, "so");
}

TEST(Callback, CallsItsOneHandlerAndDeletesWhatItOwns) {
    std::string log;
    Listener first(log, 'a');
    MCallback<Note> callback;
    callback.Connect<&Writer::OnNote>(&first);
    callback.Call({nullptr, 2});
    callback.ConnectOwned<&Writer::OnNote>(std::make_unique<Listener>(log, 'b'));
    callback.Call({nullptr, 3});
    callback.Disconnect();  // the sanitizer finds who is not deleted
    callback.Call({nullptr, 4});
    EXPECT_EQ(log, "a2 b3 ");
}
