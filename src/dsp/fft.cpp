// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/fft.h"

#include <fftw3.h>

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

namespace {

constexpr int kSmallestOrder = 1;
constexpr int kLargestOrder = 16;

struct PlanReleaser {
    void operator()(fftwf_plan plan) const { fftwf_destroy_plan(plan); }
};
using PlanHolder = std::unique_ptr<fftwf_plan_s, PlanReleaser>;

struct ArrayReleaser {
    void operator()(float* array) const { fftwf_free(array); }
};
using ArrayHolder = std::unique_ptr<float[], ArrayReleaser>;

// Both directions of one size, between samples and n / 2 + 1 complex numbers of another array. Each
// may use up what it reads.
struct Plans {
    fftwf_plan forward;
    fftwf_plan inverse;
};

// Guards the planner, which is one for the process, and the plans it has made.
std::mutex planLock;
Plans plansOfOrders[kLargestOrder + 1];

fftwf_complex* Complex(float* array) { return reinterpret_cast<fftwf_complex*>(array); }

Plans MakePlans(int n) {
    const auto size = static_cast<std::size_t>(n);
    const ArrayHolder samples(fftwf_alloc_real(size));
    const ArrayHolder spectrum(fftwf_alloc_real(size + 2));
    if (samples == nullptr || spectrum == nullptr) throw std::bad_alloc();
    constexpr unsigned kFlags = FFTW_ESTIMATE | FFTW_DESTROY_INPUT;
    PlanHolder forward(fftwf_plan_dft_r2c_1d(n, samples.get(), Complex(spectrum.get()), kFlags));
    PlanHolder inverse(fftwf_plan_dft_c2r_1d(n, Complex(spectrum.get()), samples.get(), kFlags));
    if (forward == nullptr || inverse == nullptr) throw std::bad_alloc();
    return {forward.release(), inverse.release()};
}

Plans PlansOfOrder(int order) {
    const std::lock_guard guard(planLock);
    Plans& plans = plansOfOrders[order];
    if (plans.forward == nullptr) plans = MakePlans(1 << order);
    return plans;
}

// Arrays of another alignment than those that were planned for go through a copy.
bool IsAligned(float* array) { return fftwf_alignment_of(array) == 0; }

constexpr std::uintptr_t kWorkAlignment = 64;

}  // namespace

class FftSpec {
public:
    explicit FftSpec(int order) : n(1 << order), plans(PlansOfOrder(order)) {}

    int WorkBytes() const {
        return static_cast<int>(kWorkAlignment - 1 + (SpectrumFloats() + Size()) * sizeof(float));
    }

    void ForwardTo(float* samples, float* spectrum) const {
        fftwf_execute_dft_r2c(plans.forward, samples, Complex(spectrum));
        spectrum[1] = spectrum[n];  // both ends are real
    }

    void InverseTo(float* spectrum, float* samples) const {
        spectrum[n] = spectrum[1];
        spectrum[1] = spectrum[n + 1] = 0;
        fftwf_execute_dft_c2r(plans.inverse, Complex(spectrum), samples);
    }

    void Forward(float* array, void* work) const {
        float* const spectrum = Spectrum(work);
        float* const samples = IsAligned(array) ? array : spectrum + SpectrumFloats();
        if (samples != array) VecCopy(array, samples, n);
        ForwardTo(samples, spectrum);
        VecCopy(spectrum, array, n);
    }

    void Inverse(float* array, void* work) const {
        float* const spectrum = Spectrum(work);
        float* const samples = IsAligned(array) ? array : spectrum + SpectrumFloats();
        VecCopy(array, spectrum, n);
        InverseTo(spectrum, samples);
        if (samples != array) VecCopy(samples, array, n);
    }

private:
    std::size_t Size() const { return static_cast<std::size_t>(n); }
    // n / 2 + 1 complex numbers, and what keeps the samples behind them aligned.
    std::size_t SpectrumFloats() const { return Size() + kWorkAlignment / sizeof(float); }

    float* Spectrum(void* work) const {
        const auto address = reinterpret_cast<std::uintptr_t>(work);
        const std::uintptr_t ahead = (0 - address) % kWorkAlignment;
        return reinterpret_cast<float*>(static_cast<std::byte*>(work) + ahead);
    }

    int n;
    Plans plans;
};

VecStatus FftCreate(FftSpec** spec, int order, int flags, int) {
    if (spec == nullptr) return kVecNullPointer;
    if (order < kSmallestOrder || order > kLargestOrder || flags != kFftUnscaled)
        return kVecBadLength;
    *spec = new FftSpec(order);
    return kVecDone;
}

VecStatus FftWorkSize(const FftSpec* spec, int* bytes) {
    if (spec == nullptr || bytes == nullptr) return kVecNullPointer;
    *bytes = spec->WorkBytes();
    return kVecDone;
}

VecStatus FftForward(float* array, const FftSpec* spec, void* work) {
    if (array == nullptr || spec == nullptr || work == nullptr) return kVecNullPointer;
    spec->Forward(array, work);
    return kVecDone;
}

VecStatus FftInverse(float* array, const FftSpec* spec, void* work) {
    if (array == nullptr || spec == nullptr || work == nullptr) return kVecNullPointer;
    spec->Inverse(array, work);
    return kVecDone;
}

VecStatus FftForwardTo(float* samples, float* spectrum, const FftSpec* spec) {
    if (samples == nullptr || spectrum == nullptr || spec == nullptr) return kVecNullPointer;
    spec->ForwardTo(samples, spectrum);
    return kVecDone;
}

VecStatus FftInverseTo(float* spectrum, float* samples, const FftSpec* spec) {
    if (spectrum == nullptr || samples == nullptr || spec == nullptr) return kVecNullPointer;
    spec->InverseTo(spectrum, samples);
    return kVecDone;
}

VecStatus FftRelease(FftSpec* spec) {
    if (spec == nullptr) return kVecNullPointer;
    delete spec;
    return kVecDone;
}
