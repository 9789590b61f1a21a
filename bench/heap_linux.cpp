// SPDX-License-Identifier: GPL-3.0-or-later
#include "heap.h"

#include <malloc.h>

// Large blocks are mapped apart from the heaps.
std::size_t HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
