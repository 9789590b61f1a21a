// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/mthread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

#include "foundation/objects/elsewhere.h"
#include "foundation/objects/thread_priority.h"

namespace {

struct Worker : MThread {
    explicit Worker(std::function<std::int32_t(Worker&)> body) : body(std::move(body)) {}
    ~Worker() override {
        Finish();
        atEnd();
    }
    std::int32_t Run() override { return body(*this); }
    void OnFinished() override { finishing(); }
    // Until it is asked to end.
    std::int32_t Idle() {
        while (!IsTerminating()) (void)wakeSemaphore.Acquire(kInfinite);
        return 3;
    }

    std::function<std::int32_t(Worker&)> body;
    std::function<void()> finishing = [] {};
    std::function<void()> atEnd = [] {};
};

struct Listener : MEventTarget, MEventProcessor {
    void Wake() override { woken.Release(); }
    void OnEnd(const MOnThreadNotifyParams& params) { seen = params; }
    MSemaphore woken;
    MOnThreadNotifyParams seen;
};

int NiceValue() { return getpriority(PRIO_PROCESS, static_cast<id_t>(CurrentSystemThread())); }

std::string StartRaises(Worker& worker, MThread::Priority priority) {
    return Raised([&] { worker.Start(priority); });
}

// Ends with 0 where a user without rights is refused a priority, and then a thread.
[[noreturn]] void StartAsNobody() {
    constexpr auto kNoPriority = "Could not set thread priority.";
    constexpr auto kNoThread = "Could not create system thread.";
    constexpr rlimit kNone{};
    bool good = setuid(65534) == 0 || geteuid() != 0;
    setrlimit(RLIMIT_NICE, &kNone);
    int runs = 0;
    {
        Worker resumed([&](Worker&) { return ++runs; });
        Worker suspended([&](Worker&) { return ++runs; });
        good &= StartRaises(resumed, MThread::Priority::Critical) == kNoPriority;
        good &= StartRaises(suspended, MThread::Priority::High) == kNoPriority;
        resumed.Start(MThread::Priority::Normal);
        good &= resumed.Wait(kInfinite);
        setrlimit(RLIMIT_NPROC, &kNone);
        good &= StartRaises(resumed, MThread::Priority::Normal) == kNoThread && resumed.Wait(0);
    }
    std::_Exit(good && runs == 1 ? 0 : 1);
}

}  // namespace

TEST(Thread, RunsTellsItsEndAndStartsAgain) {
    const auto raise = []() -> std::int32_t { throw std::runtime_error("x"); };
    for (const std::string how : {"runs", "raises", "raises at the end"}) {
        SCOPED_TRACE(how);
        Listener listener;
        Worker worker(
            [&](Worker& self) { return how == "raises" ? raise() : 41 + self.ExitCode(); });
        if (how == "raises at the end") worker.finishing = raise;
        worker.SetProcessor(&listener);
        worker.onFinished.Connect<&Listener::OnEnd>(&listener);
        EXPECT_TRUE(worker.Wait(kInfinite));
        for (int run = 0; run < 2; ++run) {
            worker.Start();
            const bool told = how != "raises at the end";
            EXPECT_TRUE(!told || listener.woken.Acquire(kInfinite) == 0);
            worker.Start();  // there already
            EXPECT_TRUE(worker.Wait(kInfinite));
            EXPECT_EQ(worker.ExitCode(), -2);
            listener.Process();
            EXPECT_EQ(listener.seen.thread, told ? &worker : nullptr);
            EXPECT_EQ(listener.seen.exitCode, !told ? 0 : how == "runs" ? 40 : -1);
            listener.seen = {};
        }
    }
}

TEST(Thread, ToldToEndBeforeItStartsNeverRuns) {
    Worker worker([](Worker& self) { return ADD_FAILURE(), self.Idle(); });
    worker.SetAutoDelete(true);  // the object stays, as nothing ran
    worker.RequestTerminate();
    worker.Start();
    EXPECT_TRUE(worker.Wait(kInfinite));
    EXPECT_FALSE(worker.IsTerminating());
}

TEST(Thread, OutlivesNeitherItsObjectNorAWaitThatGaveUp) {
    std::atomic<int> ended = 0;
    MSemaphore begun;
    {
        Worker worker([&](Worker& self) { return begun.Release(), self.Idle(), ++ended; });
        for (const bool unloading : {false, true}) {
            worker.Start();
            EXPECT_EQ(begun.Acquire(kInfinite), 0);
            MThread::SetUnloading(unloading);
            EXPECT_EQ(worker.Wait(unloading ? kInfinite : 5), unloading);
            EXPECT_EQ(worker.ExitCode(), -2);
        }
        MThread::SetUnloading(false);
        worker.Start();
        EXPECT_EQ(begun.Acquire(kInfinite), 0);
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 3);
}

TEST(Thread, AnAutoDeletingObjectDiesOnceWithAllItsThreads) {
    MSemaphore gone;
    MSemaphore release;
    auto* worker = new Worker([&](Worker&) { return release.Acquire(kInfinite); });
    worker->atEnd = [&] { gone.Release(); };
    worker->SetAutoDelete(true);
    worker->Start();
    EXPECT_FALSE(worker->Wait(1));
    worker->Start();
    for (int i = 0; i < 2; ++i) release.Release();
    EXPECT_EQ(gone.Acquire(kInfinite), 0);
}

TEST(Thread, PriorityIsTheNiceValueOfTheThreadAlone) {
    const int normal = NiceValue();
    int nice = 0;
    Worker worker([&](Worker&) { return nice = NiceValue(); });
    for (const auto& [priority, relative] : {std::pair{MThread::Priority::Idle, -15},
                                             {MThread::Priority::Low, -1},
                                             {MThread::Priority::Normal, 0}}) {
        worker.Start(priority);
        EXPECT_TRUE(worker.Wait(kInfinite));
        EXPECT_EQ(nice, std::min(normal - relative, 19));
    }
    EXPECT_EQ(NiceValue(), normal);
}

TEST(Thread, RefusalsOfTheSystemAreTold) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartAsNobody(), testing::ExitedWithCode(0), "");
}
