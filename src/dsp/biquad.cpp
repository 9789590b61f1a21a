// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/biquad.h"

template <typename Sample>
class BiquadStateT {
public:
    explicit BiquadStateT(const BiquadTaps& taps) : taps(taps) {}

    void SetTaps(const BiquadTaps& newTaps) { taps = newTaps; }

    void Run(const Sample* source, Sample* destination, int count) {
        const BiquadTaps t = taps;
        double s1 = history.s1;
        double s2 = history.s2;
        for (int i = 0; i < count; ++i) {
            const double x = source[i];
            const double y = t.b0 * x + s2;
            s2 = t.b1 * x + s1 - t.a1 * y;
            s1 = t.b2 * x - t.a2 * y;
            destination[i] = static_cast<Sample>(y);
        }
        history = {s1, s2};
    }

private:
    BiquadTaps taps;
    BiquadMemory history;
};

namespace {

template <typename Sample>
VecStatus Create(BiquadStateT<Sample>** state, const BiquadTaps* taps, int sections) {
    if (state == nullptr || taps == nullptr) return kVecNullPointer;
    if (sections != 1) return kVecBadLength;
    *state = new BiquadStateT<Sample>(*taps);
    return kVecDone;
}

template <typename Sample>
VecStatus SetTaps(const BiquadTaps* taps, BiquadStateT<Sample>* state) {
    if (taps == nullptr || state == nullptr) return kVecNullPointer;
    state->SetTaps(*taps);
    return kVecDone;
}

template <typename Sample>
VecStatus Run(const Sample* source, Sample* destination, int count, BiquadStateT<Sample>* state) {
    if (source == nullptr || destination == nullptr || state == nullptr) return kVecNullPointer;
    if (count < 1) return kVecBadLength;
    state->Run(source, destination, count);
    return kVecDone;
}

template <typename Sample>
VecStatus Release(BiquadStateT<Sample>* state) {
    if (state == nullptr) return kVecNullPointer;
    delete state;
    return kVecDone;
}

}  // namespace

VecStatus BiquadCreate(BiquadState** state, const BiquadTaps* taps, int sections, std::nullptr_t) {
    return Create(state, taps, sections);
}

VecStatus BiquadCreateDouble(BiquadStateDouble** state, const BiquadTaps* taps, int sections,
                             std::nullptr_t) {
    return Create(state, taps, sections);
}

VecStatus BiquadSetTaps(const BiquadTaps* taps, BiquadState* state) { return SetTaps(taps, state); }

VecStatus BiquadSetTapsDouble(const BiquadTaps* taps, BiquadStateDouble* state) {
    return SetTaps(taps, state);
}

VecStatus BiquadRun(const float* source, float* destination, int count, BiquadState* state) {
    return Run(source, destination, count, state);
}

VecStatus BiquadRunDouble(const double* source, double* destination, int count,
                          BiquadStateDouble* state) {
    return Run(source, destination, count, state);
}

VecStatus BiquadRelease(BiquadState* state) { return Release(state); }

VecStatus BiquadReleaseDouble(BiquadStateDouble* state) { return Release(state); }
