// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/mthread.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>

#include "foundation/objects/elsewhere.h"
#include "foundation/objects/thread_priority.h"

namespace {

struct Worker : MThread {
    explicit Worker(std::function<std::int32_t(Worker&)> body) : body(std::move(body)) {}
    ~Worker() override { Finish(); }
    std::int32_t Run() override { return body(*this); }
    void OnFinished() override { finishing(); }
    using MThread::wakeSemaphore;

    std::function<std::int32_t(Worker&)> body;
    std::function<void()> finishing = [] {};
};

struct Listener : MEventTarget, MEventProcessor {
    void Wake() override { woken.Release(); }
    void OnEnd(const MOnThreadNotifyParams& params) { seen = params; }
    MSemaphore woken;
    MOnThreadNotifyParams seen;
};

int NiceValue() { return getpriority(PRIO_PROCESS, static_cast<id_t>(CurrentSystemThread())); }

// Ends with 0 where a user without rights is refused a priority, given another, and at last refused
// a thread.
[[noreturn]] void StartAsNobody() {
    constexpr rlimit kNone{};
    bool good = setuid(65534) == 0 || geteuid() != 0;
    setrlimit(RLIMIT_NICE, &kNone);
    const int normal = NiceValue();
    int nice = -1;
    {
        Worker resumed([&](Worker&) { return nice = NiceValue(); });
        Worker suspended([&](Worker&) { return nice = -1; });
        for (Worker* worker : {&resumed, &suspended})
            good &= Raised([&] { worker->Start(MThread::Priority::High); }) ==
                    "Could not set thread priority.";
        resumed.Start(MThread::Priority::Lowest);
        good &= resumed.Wait(kInfinite) && NiceValue() == normal;
        setrlimit(RLIMIT_NPROC, &kNone);
        good &= Raised([&] { resumed.Start(); }) == "Could not create system thread.";
    }
    std::_Exit(good && nice == std::min(normal + 2, 19) ? 0 : 1);
}

}  // namespace

TEST(Thread, RunsTellsItsEndAndStartsAgain) {
    const auto raise = []() -> std::int32_t { throw std::runtime_error("x"); };
    for (const std::int32_t code : {40, -1, 0}) {  // runs, raises, raises behind Run
        Listener listener;
        Worker worker([&](Worker& self) { return code < 0 ? raise() : self.ExitCode() + 41; });
        if (code == 0) worker.finishing = raise;
        worker.SetProcessor(&listener);
        worker.onFinished.Connect<&Listener::OnEnd>(&listener);
        EXPECT_TRUE(worker.Wait(kInfinite));
        for (int run = 0; run < 2; ++run) {
            worker.Start();
            EXPECT_TRUE(code == 0 || listener.woken.Acquire(kInfinite) == 0);
            worker.Start();  // there already
            EXPECT_TRUE(worker.Wait(kInfinite));
            EXPECT_EQ(worker.ExitCode(), -2);
            listener.Process();
            EXPECT_EQ(listener.seen.thread, code == 0 ? nullptr : &worker);
            EXPECT_EQ(std::exchange(listener.seen, {}).exitCode, code);
        }
    }
}

TEST(Thread, OutlivesNeitherItsObjectNorAWaitThatGaveUp) {
    std::atomic<int> ended = 0;
    MSemaphore begun;
    {
        Worker worker([&](Worker& self) {
            begun.Release();
            while (!self.IsTerminating()) (void)self.wakeSemaphore.Acquire(kInfinite);
            return ++ended;
        });
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
    }
    EXPECT_EQ(ended, 3);
}

TEST(Thread, AnAutoDeletingObjectDiesOnceWithAllThatRan) {
    auto kept = std::make_shared<std::promise<void>>();  // by the object alone
    const std::future<void> gone = kept->get_future();
    MSemaphore release;
    auto* worker =
        new Worker([&, kept = std::move(kept)](Worker&) { return release.Acquire(kInfinite); });
    worker->SetAutoDelete(true);
    worker->RequestTerminate();
    worker->Start();
    EXPECT_TRUE(worker->Wait(kInfinite));  // it never ran, and the object stays
    worker->Start();
    EXPECT_FALSE(worker->Wait(1));
    worker->Start();
    for (int i = 0; i < 2; ++i) release.Release();
    gone.wait();
}

TEST(Thread, PrioritiesAreNiceValuesAndRefusalsAreTold) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartAsNobody(), testing::ExitedWithCode(0), "");
}
