// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The processors that SIMD variants are compiled for.
//
// Threads  any

enum class ProcessorVariant { Baseline, Avx2, Avx512 };  // from the oldest to the newest

// Whether this processor and system run a variant.
bool HasProcessorVariant(ProcessorVariant variant);

// The newest that this processor and system run.
ProcessorVariant BestProcessorVariant();
