// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the operating system knows and schedules threads.
//
// Threads  any; the thread that an identifier names must not have ended

// Of the calling thread; never 0.
long CurrentSystemThread();

// relative: -15 .. 15 on top of what is normal in this process. Whether the system accepted; it
// always accepts 0.
bool SetSystemThreadPriority(long thread, int relative);
