// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

// Bytes that this process holds on its heap, those of its libraries among them.
std::size_t HeapBytes();
