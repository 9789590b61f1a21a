// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/fir_kernel.h"
#include "foundation/objects/array_queue.h"

// Fast convolution of a stream of any block size with a kernel: overlap-add with a hop of half the
// kernel's transform, so that the cost does not depend on the host's blocks.
//
//     ReserveStream(stream, last, 2048, 64);
//     RunStream(stream, last, kernel, in, out, 64);
//
// Units    samples; a stream is late by the hop and by half the kernel
// Ranges   every kernel that a stream runs through has the same transform
// Threads  as the owner says
// Memory   ReserveStream takes what blocks of up to maxCount samples need; running allocates only
//          where that was not called
// Errors   MException "Not enough data in the queue." out of RunStream, never after a reset;
//          std::bad_alloc

// One channel's way through one kernel. A new one is as after ResetStream and owns nothing.
struct FirStream {
    std::int32_t hop = 0;  // half the transform, once it is known
    MArrayQueue<float> input;
    MArrayQueue<float> output;
    GrowingBuffer<float> overlap;  // hop of them
};

// The samples that were transformed last and their spectrum. Streams that take turns with it are
// spared the transform of samples that the one before had too. A new one owns nothing.
struct FirInput {
    std::int32_t hop = 0;
    GrowingBuffer<float> samples;   // hop of them
    GrowingBuffer<float> spectrum;  // packed
};

void ReserveStream(FirStream& stream, FirInput& last, int hop, int maxCount);

// Back to silence; keeps its memory.
void ResetStream(FirStream& stream);

// Source and destination may be one array.
void RunStream(FirStream& stream, FirInput& last, const FirKernel& kernel, const float* source,
               float* destination, int count);
