// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/mthread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "foundation/text/exception.h"

namespace {

class Worker : public MThread {
public:
    using MThread::wakeSemaphore;

    explicit Worker(std::function<std::int32_t(Worker&)> body) : body(std::move(body)) {}
    ~Worker() override {
        Finish();
        if (atEnd != nullptr) atEnd->Release();
    }

    std::function<std::int32_t(Worker&)> body;
    std::function<void()> finished = [] {};
    MSemaphore* atEnd = nullptr;

private:
    std::int32_t Run() override { return body(*this); }
    void OnFinished() override { finished(); }
};

std::int32_t WaitToBeTold(Worker& worker) {
    while (!worker.IsTerminating()) (void)worker.wakeSemaphore.Acquire(kInfinite);
    return 3;
}

struct WakingProcessor : MEventProcessor {
    void Wake() override { woken.Release(); }
    MSemaphore woken;
};

struct EndListener : MEventTarget {
    void OnEnd(const MOnThreadNotifyParams& params) { seen = params; }
    MOnThreadNotifyParams seen{nullptr, 0};
};

}  // namespace

TEST(Thread, RunsTellsItsEndAndStartsAgain) {
    int runs = 0;  // ordered by Start and Wait
    Worker worker([&](Worker& self) {
        EXPECT_EQ(self.ExitCode(), -1);
        return 40 + ++runs;
    });
    WakingProcessor processor;
    EndListener listener;
    worker.SetProcessor(&processor);
    worker.onFinished.Connect<&EndListener::OnEnd>(&listener);
    EXPECT_TRUE(worker.Wait(kInfinite));
    for (int run : {1, 2}) {
        worker.Start();
        ASSERT_EQ(processor.woken.Acquire(kInfinite), 0);
        worker.Start();  // ended, but not reaped
        EXPECT_EQ(worker.ExitCode(), 40 + run);
        EXPECT_TRUE(worker.Wait(kInfinite));
        EXPECT_EQ(worker.ExitCode(), -2);
        processor.Process();
        EXPECT_EQ(listener.seen.thread, &worker);
        EXPECT_EQ(listener.seen.exitCode, 40 + run);
    }
    EXPECT_EQ(runs, 2);
}

TEST(Thread, ToldToEndBeforeItStartsNeverRuns) {
    std::atomic<int> runs = 0;
    Worker worker([&](Worker& self) {
        ++runs;
        return WaitToBeTold(self);
    });
    worker.RequestTerminate();
    worker.Start();
    EXPECT_TRUE(worker.Wait(kInfinite));
    EXPECT_EQ(runs, 0);
    worker.Start();
    EXPECT_FALSE(worker.IsTerminating());
    worker.RequestTerminate();
    EXPECT_TRUE(worker.Wait(kInfinite));
    EXPECT_LE(runs, 1);
}

TEST(Thread, OutlivesNeitherItsObjectNorAWaitThatGaveUp) {
    std::atomic<int> ended = 0;
    MSemaphore begun;
    {
        Worker worker([&](Worker& self) {
            begun.Release();
            const std::int32_t code = WaitToBeTold(self);
            ++ended;
            return code;
        });
        for (int i = 0; i < 3; ++i) {
            worker.Start();
            EXPECT_EQ(begun.Acquire(kInfinite), 0);
            if (i == 2) break;
            EXPECT_FALSE(worker.Wait(5));
            EXPECT_EQ(worker.ExitCode(), -2);
        }
        EXPECT_EQ(ended, 0);
    }
    EXPECT_EQ(ended, 3);
}

TEST(Thread, KeepsWhatIsRaisedToItself) {
    const struct {
        std::function<std::int32_t(Worker&)> body;
        bool finishingRaises;
        std::int32_t code;
        bool notifies;
    } cases[] = {
        {[](Worker&) -> std::int32_t { throw MException("x"); }, false, -1, true},
        {[](Worker&) -> std::int32_t { throw std::runtime_error("x"); }, false, -1, true},
        {[](Worker&) { return 7; }, true, -1, false},
    };
    for (const auto& each : cases) {
        WakingProcessor processor;
        EndListener listener;
        Worker worker(each.body);
        MSemaphore finishing;
        worker.finished = [&] {
            finishing.Release();
            if (each.finishingRaises) throw std::runtime_error("x");
        };
        worker.SetProcessor(&processor);
        worker.onFinished.Connect<&EndListener::OnEnd>(&listener);
        worker.Start();
        EXPECT_EQ(finishing.Acquire(kInfinite), 0);
        EXPECT_TRUE(worker.Wait(kInfinite));
        processor.Process();
        EXPECT_EQ(listener.seen.thread, each.notifies ? &worker : nullptr);
        EXPECT_EQ(listener.seen.exitCode, each.notifies ? each.code : 0);
    }
}

TEST(Thread, AnAutoDeletingObjectDiesHoweverItsThreadEnds) {
    for (const std::string how :
         {"ran", "raised", "finishing raised", "never ran", "left behind"}) {
        SCOPED_TRACE(how);
        MSemaphore gone;
        MSemaphore release;
        auto* worker = new Worker([&, how](Worker&) -> std::int32_t {
            if (how == "raised") throw std::runtime_error("x");
            if (how == "left behind") return release.Acquire(kInfinite);
            return 0;
        });
        worker->atEnd = &gone;
        if (how == "finishing raised") worker->finished = [] { throw std::runtime_error("x"); };
        worker->SetAutoDelete(true);
        if (how == "never ran") worker->RequestTerminate();
        worker->Start();
        if (how == "left behind") {
            EXPECT_FALSE(worker->Wait(1));
            release.Release();
        }
        EXPECT_EQ(gone.Acquire(kInfinite), 0);
    }
}

TEST(Thread, UnloadingWaitsNoLongerThanItsBound) {
    MSemaphore release;
    Worker stuck([&](Worker&) { return release.Acquire(kInfinite); });
    stuck.Start();
    MThread::SetUnloading(true);
    EXPECT_FALSE(stuck.Wait(kInfinite));
    MThread::SetUnloading(false);
    release.Release();
}
