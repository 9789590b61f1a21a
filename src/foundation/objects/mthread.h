// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/objects/event.h"
#include "foundation/objects/event_params.h"
#include "foundation/objects/lock.h"

// A thread with a life cycle: not started, running, ended, reaped, which is not started again.
//
//     std::int32_t Poller::Run() {
//         while (!IsTerminating()) {
//             Poll();
//             (void)wakeSemaphore.Acquire(10);
//         }
//         return 0;
//     }
//     Poller::~Poller() { Finish(); }   // before the fields that Run uses go
//
// No thread outlives its object: the destructor asks it to end and waits without limit. A subclass
// whose Run uses fields of its own calls Finish in its own destructor.
//
// An auto-deleting object belongs to its thread from a Start that returned on: it is deleted as the
// thread ends, and nobody else touches it. Its end-of-thread notification goes with it where the
// processor is not quicker. Where the thread was asked to end before it ran, or OnFinished or the
// posting behind it raised, the object stays, and is its owner's.
//
// While the module unloads a thread may be unable to end, and there is no safe way to force it:
// Wait then waits for half a second at most, leaves the thread detached and answers true. The
// object of such a thread must stay.
//
// Units    timeouts in milliseconds
// Threads  any; Wait and Finish not from Run
// Memory   Start allocates
// Errors   MException "Could not create system thread." and "Could not set thread priority." out
//          of Start. What Run or OnFinished raises ends there

class MThread : public MObject {
public:
    enum class Priority { Idle, Lowest, Low, Normal, High, Highest, Critical };

    struct PriorityRecord {
        const char* name;
        int relative;  // to what is normal in the process, in nice values
    };
    static constexpr std::array<PriorityRecord, 7> kPriorities = {{{"Idle", -15},
                                                                   {"Lowest", -2},
                                                                   {"Low", -1},
                                                                   {"Normal", 0},
                                                                   {"High", 1},
                                                                   {"Highest", 2},
                                                                   {"Critical", 15}}};

    // Exit code while it runs, or where Run or what comes behind it raised.
    static constexpr std::int32_t kUnfinished = -1;
    static constexpr std::int32_t kReaped = -2;  // exit code while there is no thread

    MThread() = default;
    MThread(const MThread&) = delete;
    MThread& operator=(const MThread&) = delete;
    ~MThread() override;

    // Before Start.
    void SetAutoDelete(bool on) { autoDelete = on; }
    // Where onFinished is posted to as the thread ends; null for nowhere. It must outlive the
    // thread.
    void SetProcessor(MEventProcessor* newProcessor) { processor = newProcessor; }

    // Makes the thread, or finds it there, and gives it the priority. Normal always works; where
    // the system refuses another one, the thread stands suspended until the next Start, or until it
    // is asked to end. A thread that ended but was not reaped stays as it is.
    void Start(Priority priority = Priority::Normal);
    // A thread that is asked before it started ends with 0 and never calls Run; Wait takes the wish
    // back.
    void RequestTerminate();
    bool IsTerminating();
    // Reaps the thread: afterwards there is none, whether it has ended or not. Whether it has; true
    // at once where there was none. One that has not goes on by itself, with no wish to end before
    // the next RequestTerminate; the object's destructor still waits for it.
    bool Wait(std::uint32_t timeoutMilliseconds);
    // Asks every thread of this object to end and waits without limit.
    void Finish();

    std::int32_t ExitCode() const { return exitCode; }

    // From now on, or not any more, Wait has its bound: the module is being unloaded.
    static void SetUnloading(bool on);

    MEvent<MOnThreadNotifyParams> onFinished;  // posted behind OnFinished

protected:
    // The thread's own work. The answer is the exit code.
    virtual std::int32_t Run() = 0;
    // On the thread, behind Run.
    virtual void OnFinished() {}

    MSemaphore wakeSemaphore;                // released to wake the thread
    std::atomic<std::uint32_t> pending = 0;  // for Run, beside the semaphore

private:
    class Life;

    void Create();
    void Work(const std::shared_ptr<Life>& own);
    bool TakeAutoDelete();
    void Publish(const std::shared_ptr<Life>& own, std::int32_t code);
    void Forget(const std::shared_ptr<Life>& own);
    void Reap(const std::shared_ptr<Life>& awaited, bool ended);
    std::shared_ptr<Life> CurrentLife();
    std::shared_ptr<Life> LeftBehind();

    MMutex startLock;                               // before stateLock
    std::thread handle;                             // under startLock
    std::shared_ptr<Life> life;                     // of the thread behind handle; under startLock
    std::vector<std::shared_ptr<Life>> leftBehind;  // reaped before their end; under startLock
    std::atomic<std::int32_t> exitCode = kReaped;

    MLock stateLock;
    bool terminate = false;   // under stateLock
    bool autoDelete = false;  // under stateLock once started

    MEventProcessor* processor = nullptr;
};
