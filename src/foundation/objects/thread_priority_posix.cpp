// SPDX-License-Identifier: GPL-3.0-or-later
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include "foundation/objects/thread_priority.h"

long CurrentSystemThread() { return gettid(); }

// A thread starts with the scheduling of the one that made it, which may be a host's audio thread:
// the policy is put back in any case. Linux keeps a nice value for each thread; the first thread's
// is what the process was started with, and normal. Raising it is free to all, lowering it takes a
// right that only 0, which is tried here, does without.
bool SetSystemThreadPriority(long thread, int relative) {
    const sched_param ordinary{};
    sched_setscheduler(static_cast<pid_t>(thread), SCHED_OTHER, &ordinary);
    const int normal = getpriority(PRIO_PROCESS, static_cast<id_t>(getpid()));
    const int nice = normal - relative;
    return setpriority(PRIO_PROCESS, static_cast<id_t>(thread), nice) == 0 || relative == 0;
}
