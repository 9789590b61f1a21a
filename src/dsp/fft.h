// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "dsp/vectors.h"

// Fourier transform of real samples, in place.
//
//     FftSpec* spec = nullptr;
//     FftCreate(&spec, 12, kFftUnscaled, 0);   // 4096 samples
//     int bytes = 0;
//     FftWorkSize(spec, &bytes);
//     ...
//     FftForward(samples, spec, work);         // now the packed spectrum
//
// A packed spectrum of n samples is n floats: the value at frequency 0, the value at the Nyquist
// frequency, then n / 2 - 1 pairs of a real and an imaginary part, ascending. The forward transform
// takes exp(-2 pi i k t / n). Neither direction scales: one after the other multiplies by n.
//
// Ranges   orders 1 .. 16, that is 2 .. 65536 samples
// Threads  creation on any, several at once too; a work buffer belongs to one caller at a time, a
//          spec may serve many
// Memory   creation allocates (std::bad_alloc), release frees, nothing else does either. What is
//          made for a size stays until the process ends
// Errors   the statuses of the array primitives; kVecBadLength too for an order or flags that there
//          are not
// Method   FFTW, with plans from its estimates: the same processor gives the same results always

class FftSpec;

inline constexpr int kFftUnscaled = 8;  // the only flags there are

// The caller releases what it gets. The hint is not used.
VecStatus FftCreate(FftSpec** spec, int order, int flags, int hint);

// Size of the work buffer in bytes; it may lie at any address, and so may the samples. Those at a
// multiple of 16 bytes are spared a copy each way.
VecStatus FftWorkSize(const FftSpec* spec, int* bytes);

VecStatus FftForward(float* array, const FftSpec* spec, void* work);
VecStatus FftInverse(float* array, const FftSpec* spec, void* work);

// The same from one array into another, which is quicker. Both lie at multiples of 16 bytes, the
// spectrum has room for two more floats; what is read is used up.
VecStatus FftForwardTo(float* samples, float* spectrum, const FftSpec* spec);
VecStatus FftInverseTo(float* spectrum, float* samples, const FftSpec* spec);

VecStatus FftRelease(FftSpec* spec);

struct FftReleaser {
    void operator()(FftSpec* spec) const { FftRelease(spec); }
};
using FftHolder = std::unique_ptr<FftSpec, FftReleaser>;
