// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Interrupts by the person or the system: asked for between blocks, so that files are cleaned up.

// Unwinds the renderer after an interrupt.
struct Interrupted {};

// Watches for interrupts (Ctrl-C, a request to end, a closed terminal) from here on. One that the
// parent has chosen to ignore stays ignored.
void WatchInterrupts();

// Throws Interrupted once one has come.
void ThrowIfInterrupted();

// Ends the process the way the interrupt would have.
[[noreturn]] void EndAsInterrupted();
