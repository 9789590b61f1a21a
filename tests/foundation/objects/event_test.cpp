// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/objects/callback.h"
#include "foundation/objects/event_params.h"
#include "support/allocation_trap.h"

namespace {

using NoteEvent = MEvent<MOnItemParams<int>>;

// Its handlers are members of a class which is no target.
class Writer {
public:
    Writer(std::string& log, char name) : log(log), name(name) {}
    virtual ~Writer() = default;
    virtual void OnNote(const MOnItemParams<int>& note) {
        log += name + std::to_string(note.item) + ' ';
    }
    void OnShortcut(const MOnKeyboardShortcutParams&) { log += name; }

private:
    std::string& log;
    char name;
};

class Listener : public MEventTarget, public Writer {
public:
    using Writer::Writer;
};

// Listeners a to d are connected to one event; b does something once while its handler runs.
struct Scene {
    struct Acting : Listener {
        explicit Acting(Scene& scene) : Listener(scene.log, 'b'), scene(scene) {}
        void OnNote(const MOnItemParams<int>& note) override {
            Scene& told = scene;
            Listener::OnNote(note);
            if (told.action != nullptr) std::exchange(told.action, nullptr)(told);
        }
        Scene& scene;
    };

    Scene() {
        for (Listener* listener : {a.get(), b.get(), c.get(), d.get()}) Connect(listener);
    }
    void Connect(Listener* listener) { event->Connect<&Writer::OnNote>(listener); }
    void Post(int value) { event->Post(processor, {nullptr, value}); }
    std::string Process() {
        processor.Process();
        return std::exchange(log, {});
    }

    std::string log;
    void (*action)(Scene&) = nullptr;
    MEventProcessor processor;
    std::unique_ptr<NoteEvent> event = std::make_unique<NoteEvent>();
    std::unique_ptr<Listener> a = std::make_unique<Listener>(log, 'a');
    std::unique_ptr<Listener> b = std::make_unique<Acting>(*this);
    std::unique_ptr<Listener> c = std::make_unique<Listener>(log, 'c');
    std::unique_ptr<Listener> d = std::make_unique<Listener>(log, 'd');
    Listener late{log, 'e'};
};

}  // namespace

TEST(Event, HandlersMayChangeEverythingDuringDelivery) {
    const struct {
        const char* what;
        void (*action)(Scene&);
        const char* first;   // the notification during which b acts
        const char* second;  // the next one
    } cases[] = {
        {"connects", [](Scene& s) { s.Connect(&s.late); }, "a1 b1 c1 d1 ", "a2 b2 c2 d2 e2 "},
        {"connects itself again", [](Scene& s) { s.Connect(s.b.get()); }, "a1 b1 c1 d1 ",
         "a2 b2 c2 d2 b2 "},
        {"disconnects one before it", [](Scene& s) { s.event->Disconnect(s.a.get()); },
         "a1 b1 c1 d1 ", "b2 c2 d2 "},
        {"disconnects itself", [](Scene& s) { s.event->Disconnect(s.b.get()); }, "a1 b1 c1 d1 ",
         "a2 c2 d2 "},
        {"disconnects the next", [](Scene& s) { s.event->Disconnect(s.c.get()); }, "a1 b1 d1 ",
         "a2 b2 d2 "},
        {"replaces one", [](Scene& s) { s.event->Disconnect(s.c.get()), s.Connect(s.c.get()); },
         "a1 b1 d1 ", "a2 b2 d2 c2 "},
        {"destroys targets", [](Scene& s) { s.a.reset(), s.d.reset(); }, "a1 b1 c1 ", "b2 c2 "},
        {"destroys itself", [](Scene& s) { s.b.reset(); }, "a1 b1 c1 d1 ", "a2 c2 d2 "},
        {"sends",
         [](Scene& s) {
             s.event->Send({nullptr, 7});
         },
         "a1 b1 a7 b7 c7 d7 c1 d1 ", "a2 b2 c2 d2 "},
        {"disconnects and sends",
         [](Scene& s) {
             s.event->Disconnect(s.a.get()), s.event->Send({nullptr, 7});
         },
         "a1 b1 b7 c7 d7 c1 d1 ", "b2 c2 d2 "},
        {"destroys the event within a further delivery",
         [](Scene& s) {
             s.action = [](Scene& inner) { inner.event.reset(); };
             s.event->Send({nullptr, 7});
         },
         "a1 b1 a7 b7 ", ""},
    };
    for (const auto& each : cases) {
        for (const bool posted : {false, true}) {
            SCOPED_TRACE(std::string(each.what) + (posted ? ", posted" : ", sent"));
            Scene scene;
            for (int value : {1, 2}) {
                if (value == 1) scene.action = each.action;
                if (scene.event == nullptr) break;
                if (posted) {
                    scene.Post(value);
                } else {
                    scene.event->Send({nullptr, value});
                }
                EXPECT_EQ(scene.Process(), value == 1 ? each.first : each.second);
            }
        }
    }
}

TEST(Event, NotificationsArriveInTheOrderOfPosting) {
    Scene scene;
    NoteEvent other;
    other.Connect<&Writer::OnNote>(&scene.late);
    scene.event->Disconnect(scene.d.get());
    scene.action = [](Scene& s) { s.Post(4); };
    scene.Post(1);
    other.Post(scene.processor, {nullptr, 2});
    scene.Post(3);
    EXPECT_EQ(scene.Process(), "a1 b1 c1 e2 a3 b3 c3 a4 b4 c4 ");
    EXPECT_EQ(scene.Process(), "");
}

TEST(Event, WhatDiesBeforeProcessingIsLeftOut) {
    Scene scene;
    auto dying = std::make_unique<NoteEvent>();
    dying->Connect<&Writer::OnNote>(&scene.late);
    for (int value : {1, 2}) {
        dying->Post(scene.processor, {nullptr, value});
        scene.Post(value);
    }
    dying.reset();
    scene.c.reset();
    EXPECT_EQ(scene.Process(), "a1 b1 d1 a2 b2 d2 ");

    auto processor = std::make_unique<MEventProcessor>();
    scene.event->Post(*processor, {nullptr, 3});
    scene.Post(4);  // behind the first one, on the same processor
    processor.reset();
    scene.Post(5);
    EXPECT_EQ(scene.Process(), "a5 b5 d5 ");
    scene.Post(6);
    scene.event->ClearQueue();
    EXPECT_EQ(scene.Process(), "");
}

TEST(Event, ProcessOneDeliversTheOldestOrRaises) {
    Scene scene;
    scene.Post(1);
    scene.Post(2);
    scene.event->ProcessOne();
    EXPECT_EQ(std::exchange(scene.log, {}), "a1 b1 c1 d1 ");
    EXPECT_EQ(scene.Process(), "a2 b2 c2 d2 ");
    try {
        scene.event->ProcessOne();
        FAIL();
    } catch (const MException& error) {
        EXPECT_STREQ(error.what(), "Index out of range.");
    }
}

TEST(Event, AHandlerThatRaisesSkipsTheRestOfItsNotification) {
    Scene scene;
    scene.action = [](Scene&) { throw std::runtime_error("b"); };
    scene.Post(1);
    scene.Post(2);
    EXPECT_THROW(scene.processor.Process(), std::runtime_error);
    scene.event->Disconnect(scene.a.get());  // no delivery is left that would be told
    EXPECT_EQ(scene.Process(), "a1 b1 b2 c2 d2 ");
}

TEST(Event, PostTakesNoMemoryWithinTheReserve) {
    struct Counter : MEventTarget {
        void OnText(const MOnStringParams& params) { count += params.text.Length(); }
        int count = 0;
    } counter;
    MEventProcessor processor;
    MEvent<MOnStringParams> event;
    event.Connect<&Counter::OnText>(&counter);
    event.Reserve(50);
    processor.Reserve(50);
    const MString text = MString("learn").Append("ed");
    AllocationTrap trap("Post and Process");
    for (int round = 0; round < 5; ++round) {
        for (int i = 0; i < 50; ++i) event.Post(processor, {nullptr, text});
        processor.Process();
    }
    EXPECT_EQ(counter.count, 5 * 50 * 7);
}

TEST(Event, ThreadsPostWhileTheirEventsLiveAndDie) {
    struct Counter : MEventTarget {
        void OnNote(const MOnItemParams<int>& note) {
            inOrder = inOrder && note.item == count[0];
            ++count[0];
        }
        void OnDying(const MOnItemParams<int>&) { ++count[1]; }
        bool inOrder = true;
        int count[2] = {};
    } counter;
    constexpr int kNotes = 3000;
    MEventProcessor processor;
    NoteEvent lasting;
    lasting.Connect<&Counter::OnNote>(&counter);
    std::atomic<int> running = 2;
    std::thread poster([&] {
        for (int i = 0; i < kNotes; ++i) lasting.Post(processor, {nullptr, i});
        --running;
    });
    std::thread killer([&] {
        for (int i = 0; i < kNotes; ++i) {
            NoteEvent dying;
            dying.Connect<&Counter::OnDying>(&counter);
            for (int value = 0; value < 3; ++value) dying.Post(processor, {nullptr, value});
        }
        --running;
    });
    while (running > 0) processor.Process();
    poster.join();
    killer.join();
    processor.Process();
    EXPECT_TRUE(counter.inOrder);
    EXPECT_EQ(counter.count[0], kNotes);
    EXPECT_LE(counter.count[1], 3 * kNotes);
}

TEST(EventTarget, MayDieWhileItsEventsDieElsewhere) {
    for (int round = 0; round < 500; ++round) {
        std::string log;
        std::vector<std::unique_ptr<NoteEvent>> events(4);
        std::vector<std::unique_ptr<Listener>> targets(4);
        for (auto& event : events) event = std::make_unique<NoteEvent>();
        for (auto& target : targets) {
            target = std::make_unique<Listener>(log, 'x');
            for (auto& event : events) event->Connect<&Writer::OnNote>(target.get());
        }
        std::thread other([&events] { events.clear(); });
        targets.clear();
        other.join();
    }
}

TEST(Event, CallsOnlyTheHandlersOfTheShortcut) {
    std::string log;
    Listener open(log, 'o');
    Listener save(log, 's');
    MEvent<MOnKeyboardShortcutParams, MKeyboardShortcut> pressed;
    pressed.Connect<&Writer::OnShortcut>(&open, {'O', 16});
    pressed.Connect<&Writer::OnShortcut>(&save, {'S', 16});
    pressed.Connect<&Writer::OnShortcut>(&save, {'S', 16 | 64});
    for (const MKeyboardShortcut& shortcut :
         {MKeyboardShortcut{'S', 16}, {'O', 0}, {'O', 16}, {'S', 80}})
        pressed.Send({nullptr, shortcut});
    EXPECT_EQ(log, "sos");
}

TEST(Callback, CallsItsOneHandlerAndDeletesWhatItOwns) {
    struct Owned : Listener {
        Owned(std::string& log, char name) : Listener(log, name), end(log) {}
        ~Owned() override { end += "gone "; }
        std::string& end;
    };
    std::string log;
    Listener first(log, 'a');
    MCallback<MOnItemParams<int>> callback;
    callback.Call({nullptr, 1});
    callback.Connect<&Writer::OnNote>(&first);
    callback.Call({nullptr, 2});
    callback.ConnectOwned<&Writer::OnNote>(std::make_unique<Owned>(log, 'b'));
    callback.Call({nullptr, 3});
    callback.Connect<&Writer::OnNote>(&first);
    callback.Call({nullptr, 4});
    callback.Disconnect();
    EXPECT_FALSE(callback.IsConnected());
    EXPECT_EQ(log, "a2 b3 gone a4 ");
}
