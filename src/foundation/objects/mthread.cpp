// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/mthread.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <utility>

#include "foundation/objects/thread_priority.h"
#include "foundation/objects/timed_wait.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::uint32_t kUnloadWaitMilliseconds = 500;

std::atomic<bool> unloading = false;

// Nothing that a subclass raises leaves the thread, where it would end the host.
template <typename Body>
bool Completes(Body body) noexcept {
    try {
        body();
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace

// What a system thread and those who wait for it share, so that neither needs the object for it.
class MThread::Life {
public:
    // On the thread. Whoever waits for the end may destroy the object from then on.
    void Begin() {
        std::unique_lock lock(mutex);
        systemThread = CurrentSystemThread();
        changed.notify_all();
        changed.wait(lock, [this] { return resumed; });
    }
    void End() { Set(ended); }

    // A thread that has ended accepts everything.
    bool SetPriority(Priority priority) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return systemThread != 0; });
        const int relative = kPriorities[static_cast<std::size_t>(priority)].relative;
        return ended || SetSystemThreadPriority(systemThread, relative);
    }
    void Resume() { Set(resumed); }
    bool WaitForEnd(std::uint32_t timeoutMilliseconds) {
        std::unique_lock lock(mutex);
        return WaitUntilTrue(changed, lock, timeoutMilliseconds, [this] { return ended; });
    }

private:
    void Set(bool& flag) {
        const std::lock_guard lock(mutex);
        flag = true;
        changed.notify_all();
    }

    std::mutex mutex;
    std::condition_variable changed;
    long systemThread = 0;  // under mutex, like the rest; 0 until the thread is there
    bool resumed = false;
    bool ended = false;
};

MThread::~MThread() {
    TakeAutoDelete();
    Finish();
}

void MThread::Start(Priority priority) {
    std::shared_ptr<Life> started;
    {
        MLocker lock(startLock);
        if (life == nullptr) Create();
        started = life;
    }
    if (!started->SetPriority(priority)) throw MException("Could not set thread priority.");
    started->Resume();
    // An auto-deleting object may be gone by now.
}

void MThread::Create() {
    const auto fresh = std::make_shared<Life>();
    try {
        handle = std::thread([this, fresh] {
            fresh->Begin();
            Work(fresh);
            fresh->End();
        });
    } catch (const std::system_error&) {
        throw MException("Could not create system thread.");
    }
    life = fresh;
    exitCode = kUnfinished;
}

void MThread::Work(const std::shared_ptr<Life>& own) {
    if (IsTerminating()) return Publish(own, 0);
    std::int32_t code = kUnfinished;
    Completes([&] { code = Run(); });
    Publish(own, code);
    const bool told = Completes([&] {
        OnFinished();
        if (processor == nullptr) return;
        onFinished.Post(*processor, {this, code});
        processor->Wake();
    });
    if (!told) return Publish(own, kUnfinished);
    if (!TakeAutoDelete()) return;
    Forget(own);
    delete this;
}

// Whether the caller is to delete the object: one of its threads at most is.
bool MThread::TakeAutoDelete() {
    MLocker lock(stateLock);
    return std::exchange(autoDelete, false);
}

// One that was reaped has no exit code any more.
void MThread::Publish(const std::shared_ptr<Life>& own, std::int32_t code) {
    MLocker lock(startLock);
    if (life == own) exitCode = code;
}

// Nobody waits for this one any more: it has ended, or deletes the object and must not wait for
// itself.
void MThread::Forget(const std::shared_ptr<Life>& own) {
    MLocker lock(startLock);
    std::erase(leftBehind, own);
    if (life != own) return;
    handle.detach();
    life = nullptr;
}

void MThread::RequestTerminate() {
    std::shared_ptr<Life> current;
    std::size_t sleepers = 1;
    {
        MLocker lock(startLock);
        current = life;
        sleepers += leftBehind.size();
    }
    {
        MLocker lock(stateLock);
        terminate = true;
    }
    for (; sleepers > 0; --sleepers) wakeSemaphore.Release();
    if (current != nullptr) current->Resume();
}

bool MThread::IsTerminating() {
    MLocker lock(stateLock);
    return terminate;
}

bool MThread::Wait(std::uint32_t timeoutMilliseconds) {
    const std::shared_ptr<Life> awaited = CurrentLife();
    if (awaited == nullptr) return true;
    const bool forced = unloading;
    if (forced) timeoutMilliseconds = std::min(timeoutMilliseconds, kUnloadWaitMilliseconds);
    const bool ended = awaited->WaitForEnd(timeoutMilliseconds);
    Reap(awaited, ended);
    return ended || forced;
}

void MThread::Reap(const std::shared_ptr<Life>& awaited, bool ended) {
    MLocker lock(startLock);
    if (life != awaited) return;  // another one who waited was quicker
    if (ended) {
        handle.join();
    } else {
        leftBehind.push_back(life);
        handle.detach();
    }
    life = nullptr;
    exitCode = kReaped;
    MLocker state(stateLock);
    terminate = false;
}

void MThread::Finish() {
    RequestTerminate();
    while (const std::shared_ptr<Life> left = LeftBehind()) {
        left->WaitForEnd(kInfinite);
        Forget(left);
    }
    if (const std::shared_ptr<Life> current = CurrentLife()) {
        current->WaitForEnd(kInfinite);
        Reap(current, true);
    }
    MLocker lock(stateLock);
    terminate = false;
}

std::shared_ptr<MThread::Life> MThread::LeftBehind() {
    MLocker lock(startLock);
    return leftBehind.empty() ? nullptr : leftBehind.back();
}

std::shared_ptr<MThread::Life> MThread::CurrentLife() {
    MLocker lock(startLock);
    return life;
}

void MThread::SetUnloading(bool on) { unloading = on; }
