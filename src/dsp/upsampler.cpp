// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/upsampler.h"

#include "dsp/vectors.h"
#include "foundation/text/exception.h"

void MUpsampler::CheckFactor(int newFactor) const {
    constexpr int kUnsupported = 1;
    if (newFactor != 1) throw MException("Upsampling is not supported.", kUnsupported);
}

void MUpsampler::Configure(int newRate, int newFactor, bool newHighQuality) {
    CheckFactor(newFactor);
    rate = newRate;
    factor = newFactor;
    highQuality = newHighQuality;
    Reinitialise();
}

void MUpsampler::ConfigureIfChanged(int newRate, int newFactor, bool newHighQuality) {
    if (rate != newRate || factor != newFactor || highQuality != newHighQuality)
        Configure(newRate, newFactor, newHighQuality);
}

void MUpsampler::Reserve(int hostSamples) {
    input.Reserve(hostSamples * factor);
    output.Reserve(hostSamples * factor);
}

void MUpsampler::Up(const float* source, int count) {
    Reserve(count);
    if (source != nullptr) {
        VecCopy(source, input.Data(), count);
    } else {
        VecZero(input.Data(), count);
    }
    VecZero(output.Data(), count);
}

void MUpsampler::Down(float* destination, int count, Mode mode) {
    if (mode == Mode::Add) {
        VecAdd(output.Data(), destination, count);
    } else {
        VecCopy(output.Data(), destination, count);
    }
}

int MUpsampler::GetLatency() const { return 0; }

void MUpsampler::Reinitialise() {}
