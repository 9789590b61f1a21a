// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/fir_convolver.h"

#include <cstddef>
#include <cstring>

#include "foundation/objects/tolerances.h"

namespace {

void SetHop(FirStream& stream, int hop) {
    if (stream.hop == hop) return;
    stream.overlap.Reserve(hop);
    stream.output.Reserve(hop);
    stream.hop = hop;
    ResetStream(stream);
}

// Starts from silence, whose spectrum is the guard alone.
void SetHop(FirInput& last, int hop) {
    if (last.hop == hop) return;
    last.samples.Reserve(hop);
    last.spectrum.Reserve(2 * hop + 2);
    VecZero(last.samples.Data(), hop);
    VecFill(kDenormalGuard, last.spectrum.Data(), 2 * hop);
    last.hop = hop;
}

// Transforms the first half of block, the other being silence.
void TransformHop(FirInput& last, const FirKernel& kernel, float* block) {
    const int hop = last.hop;
    const std::size_t bytes = static_cast<std::size_t>(hop) * sizeof(float);
    if (std::memcmp(last.samples.Data(), block, bytes) == 0) return;
    VecCopy(block, last.samples.Data(), hop);
    VecZero(block + hop, hop);
    TransformBlock(kernel, block, last.spectrum.Data());
}

void ConvolveHop(FirStream& stream, FirInput& last, const FirKernel& kernel) {
    const int hop = stream.hop;
    alignas(64) float block[FirKernel::kMaxFftSize];
    stream.input.Pull(block, hop);
    TransformHop(last, kernel, block);
    FilterSpectrum(kernel, last.spectrum.Data(), block);
    VecAdd(stream.overlap.Data(), block, hop);
    stream.output.Push(block, hop);
    VecCopy(block + hop, stream.overlap.Data(), hop);
}

}  // namespace

void ReserveStream(FirStream& stream, FirInput& last, int hop, int maxCount) {
    SetHop(stream, hop);
    SetHop(last, hop);
    stream.input.Reserve(hop - 1 + maxCount);
    stream.output.Reserve(hop + maxCount);
}

void ResetStream(FirStream& stream) {
    VecZero(stream.overlap.Data(), stream.hop);
    stream.input.Clear();
    stream.output.Clear();
    stream.output.PushCopies(0, stream.hop);
}

void RunStream(FirStream& stream, FirInput& last, const FirKernel& kernel, const float* source,
               float* destination, int count) {
    SetHop(stream, kernel.fftSize / 2);
    SetHop(last, stream.hop);
    stream.input.Push(source, count);
    while (stream.input.Length() >= stream.hop) ConvolveHop(stream, last, kernel);
    stream.output.Pull(destination, count);
}
