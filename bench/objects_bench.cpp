// SPDX-License-Identifier: GPL-3.0-or-later
// Notifications through a processor, and what a hold costs that nobody else asks for, beside the
// standard mutex.
#include <benchmark/benchmark.h>

#include <mutex>

#include "foundation/objects/erw_lock.h"
#include "foundation/objects/event.h"
#include "foundation/objects/event_params.h"

namespace {

struct Counter : MEventTarget {
    void OnNotify(const MOnNotifyParams&) { ++count; }
    int count = 0;
};

// Argument: the notifications that are pending when the processor is drained.
void PostAndProcess(benchmark::State& state, bool reserved) {
    const int pending = static_cast<int>(state.range(0));
    Counter counter;
    MEventProcessor processor;
    MEvent<MOnNotifyParams> event;
    event.Connect<&Counter::OnNotify>(&counter);
    if (reserved) {
        event.Reserve(pending);
        processor.Reserve(pending);
    }
    for (auto _ : state) {
        for (int i = 0; i < pending; ++i) event.Post(processor, {});
        processor.Process();
    }
    benchmark::DoNotOptimize(counter.count);
    state.SetItemsProcessed(state.iterations() * pending);
}

void Send(benchmark::State& state) {
    Counter counter;
    MEvent<MOnNotifyParams> event;
    event.Connect<&Counter::OnNotify>(&counter);
    for (auto _ : state) event.Send({});
    benchmark::DoNotOptimize(counter.count);
}

void Synchronize(benchmark::State& state, std::uint32_t mode) {
    MERWLock lock;
    for (auto _ : state) {
        MSynchronizer hold(&lock, mode);
        benchmark::ClobberMemory();
    }
}

void SynchronizeWithinAHold(benchmark::State& state) {
    MERWLock lock;
    MSynchronizer outer(&lock, MSynchronizer::kRead);
    for (auto _ : state) {
        MSynchronizer hold(&lock, MSynchronizer::kRead);
        benchmark::ClobberMemory();
    }
}

template <typename Mutex>
void LockStandard(benchmark::State& state) {
    Mutex mutex;
    for (auto _ : state) {
        const std::lock_guard hold(mutex);
        benchmark::ClobberMemory();
    }
}

void Lock(benchmark::State& state) {
    MLock lock;
    for (auto _ : state) {
        MLocker hold(lock);
        benchmark::ClobberMemory();
    }
}

}  // namespace

BENCHMARK_CAPTURE(PostAndProcess, Reserved, true)->Arg(1)->Arg(64);
BENCHMARK_CAPTURE(PostAndProcess, Unreserved, false)->Arg(1)->Arg(64);
BENCHMARK(Send);
BENCHMARK(LockStandard<std::mutex>);
BENCHMARK(LockStandard<std::recursive_mutex>);
BENCHMARK(Lock);
BENCHMARK_CAPTURE(Synchronize, ReadYielding, MSynchronizer::kRead);
BENCHMARK_CAPTURE(Synchronize, Read, MSynchronizer::kRead | MSynchronizer::kNoYield);
BENCHMARK_CAPTURE(Synchronize, Write, MSynchronizer::kWrite | MSynchronizer::kNoYield);
BENCHMARK(SynchronizeWithinAHold);
