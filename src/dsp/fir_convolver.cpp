// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/fir_convolver.h"

namespace {

void SetHop(FirStream& stream, int hop) {
    if (stream.hop == hop) return;
    stream.overlap.Reserve(hop);
    stream.output.Reserve(hop);
    stream.hop = hop;
    ResetStream(stream);
}

void ConvolveHop(FirStream& stream, FirKernel& kernel) {
    const int hop = stream.hop;
    alignas(64) float block[FirKernel::kMaxFftSize];
    stream.input.Pull(block, hop);
    VecZero(block + hop, hop);
    FilterBlock(kernel, block);
    VecAdd(stream.overlap.Data(), block, hop);
    stream.output.Push(block, hop);
    VecCopy(block + hop, stream.overlap.Data(), hop);
}

}  // namespace

void ReserveStream(FirStream& stream, int hop, int maxCount) {
    SetHop(stream, hop);
    stream.input.Reserve(hop - 1 + maxCount);
    stream.output.Reserve(hop + maxCount);
}

void ResetStream(FirStream& stream) {
    VecZero(stream.overlap.Data(), stream.hop);
    stream.input.Clear();
    stream.output.Clear();
    stream.output.PushCopies(0, stream.hop);
}

void RunStream(FirStream& stream, FirKernel& kernel, const float* source, float* destination,
               int count) {
    SetHop(stream, kernel.fftSize / 2);
    stream.input.Push(source, count);
    while (stream.input.Length() >= stream.hop) ConvolveHop(stream, kernel);
    stream.output.Pull(destination, count);
}
