// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "foundation/objects/mthread.h"
#include "foundation/objects/thread_priority.h"
#include "foundation/text/exception.h"

namespace {

class NiceReader : public MThread {
public:
    ~NiceReader() override { Finish(); }
    std::atomic<int> nice = kNotRun;

    static constexpr int kNotRun = 100;

private:
    std::int32_t Run() override {
        nice = getpriority(PRIO_PROCESS, static_cast<id_t>(CurrentSystemThread()));
        return 0;
    }
};

bool IsRefused(NiceReader& thread) {
    try {
        thread.Start(MThread::Priority::Critical);
    } catch (const MException& error) {
        return std::strcmp(error.what(), "Could not set thread priority.") == 0;
    }
    return false;
}

// Ends with 0 where a user without rights is refused, and may then start the thread as Normal or
// destroy it.
[[noreturn]] void StartAsNobody() {
    (void)!setuid(65534);
    const rlimit none{};
    setrlimit(RLIMIT_NICE, &none);
    bool good = true;
    {
        NiceReader resumed;
        NiceReader suspended;
        good = IsRefused(resumed) && IsRefused(suspended);
        resumed.Start(MThread::Priority::Normal);
        good = resumed.Wait(kInfinite) && good && resumed.nice != NiceReader::kNotRun &&
               suspended.nice == NiceReader::kNotRun;
    }
    std::_Exit(good ? 0 : 1);
}

}  // namespace

TEST(ThreadPriority, IsTheNiceValueOfTheThreadAlone) {
    const int inherited = getpriority(PRIO_PROCESS, 0);
    for (const MThread::PriorityRecord& record : MThread::kPriorities) {
        if (-record.relative <= inherited) continue;  // may need rights
        NiceReader thread;
        thread.Start(static_cast<MThread::Priority>(&record - MThread::kPriorities.data()));
        EXPECT_TRUE(thread.Wait(kInfinite));
        EXPECT_EQ(thread.nice, -record.relative) << record.name;
    }
    EXPECT_EQ(getpriority(PRIO_PROCESS, 0), inherited);
}

TEST(ThreadPriority, ARefusedOneLeavesTheThreadSuspended) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(StartAsNobody(), testing::ExitedWithCode(0), "");
}
