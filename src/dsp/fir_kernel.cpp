// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/fir_kernel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

#include "foundation/objects/tolerances.h"

namespace {

// Width of the main lobe of the windowed kernel: what turns a transition into a length.
constexpr double kLengthPerTransition = 180;
constexpr double kTransitionScale = 14.357078426905355;

// Modified Bessel function of the first kind and order 0 by its power series (Abramowitz and
// Stegun, 9.6.12), whose terms are all positive: exact to rounding for the arguments of a window.
double BesselI0(double x) {
    const double quarter = x * x / 4;
    double term = 1;
    double sum = 1;
    for (int k = 1; term > sum * 1e-17; ++k) {
        term *= quarter / (static_cast<double>(k) * k);
        sum += term;
    }
    return sum;
}

// J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", 1974. The
// centre is at length / 2, half a sample behind that of the taps: it is meant. The table has room.
void MakeKaiser(FirWindow& window, int length) {
    if (window.kind == FirWindow::kKaiser && window.length == length) return;
    window.kind = FirWindow::kKaiser;
    window.length = length;
    const double attenuation = window.attenuation;
    const double beta = attenuation >= 20 ? (attenuation - 8.7) * 0.1102 : 0;
    const double top = BesselI0(beta);
    const double square = static_cast<double>(length) * length;
    for (int i = 0; i <= length / 2; ++i) {
        const double distance = i - length / 2.0;
        const double inside = 1 - 4 * distance * distance / square;
        const auto value = static_cast<float>(BesselI0(beta * std::sqrt(inside)) / top);
        window.table[i] = value;
        if (i > 0) window.table[length - i] = value;
    }
}

int ActiveLength(const LowPassDesign& design, int fullLength) {
    if (!(design.transition > 0)) return fullLength;
    const double wanted =
        kLengthPerTransition / (design.transition / design.sampleRate * kTransitionScale);
    return wanted < fullLength ? static_cast<int>(wanted) | 1 : fullLength;
}

float* ActiveTaps(FirKernel& kernel) {
    return kernel.taps.Data() + kernel.fullLength / 2 - kernel.activeLength / 2;
}

// product = first * second; the values at both ends are real.
void MultiplyPacked(const float* first, const float* second, float* product, int fftSize) {
    product[0] = first[0] * second[0];
    product[1] = first[1] * second[1];
    VecMultiplyComplex(first + 2, second + 2, product + 2, fftSize / 2 - 1);
}

}  // namespace

void DesignLowPass(FirKernel& kernel, const LowPassDesign& design) {
    kernel.fullLength = std::min(design.length | 1, FirKernel::kMaxTaps);
    kernel.activeLength = ActiveLength(design, kernel.fullLength);
    kernel.taps.Reserve(kernel.fullLength);
    VecZero(kernel.taps.Data(), kernel.fullLength);

    const float fc = std::min(1.0f, static_cast<float>(2 * design.frequency / design.sampleRate));
    float* const centre = kernel.taps.Data() + kernel.fullLength / 2;
    centre[0] = fc;
    for (int i = 1; i <= kernel.activeLength / 2; ++i) {
        const double angle = i * static_cast<double>(fc) * std::numbers::pi;
        centre[i] = centre[-i] = static_cast<float>(std::sin(angle) / (i * std::numbers::pi));
    }

    kernel.window.table.Reserve(kernel.fullLength);
    MakeKaiser(kernel.window, kernel.activeLength);
    float* const taps = ActiveTaps(kernel);
    for (int i = 0; i < kernel.activeLength; ++i) taps[i] *= kernel.window.table[i];
}

void TakeComplement(FirKernel& kernel, const FirKernel& source) {
    kernel.fullLength = source.fullLength;
    kernel.activeLength = source.activeLength;
    kernel.taps.Reserve(kernel.fullLength);
    VecCopy(source.taps.Data(), kernel.taps.Data(), kernel.fullLength);
    VecScaleInPlace(-1, ActiveTaps(kernel), kernel.activeLength);
    kernel.taps[kernel.fullLength / 2] += 1;
}

void PrepareTransform(FirKernel& kernel, int fftSize) {
    if (kernel.fftSize == fftSize) return;
    const int order = std::countr_zero(static_cast<unsigned>(fftSize));
    FftSpec* spec = nullptr;
    FftCreate(&spec, order, kFftUnscaled, 0);
    FftHolder transform(spec);
    int workBytes = 0;
    FftWorkSize(spec, &workBytes);
    kernel.work.Reserve(workBytes);
    kernel.spectrum.Reserve(fftSize);
    VecZero(kernel.spectrum.Data(), fftSize);
    kernel.transform = std::move(transform);
    kernel.order = order;
    kernel.fftSize = fftSize;
    kernel.fftScale = 1.0f / static_cast<float>(fftSize);
}

void ComputeSpectrum(FirKernel& kernel, int fftSize) {
    PrepareTransform(kernel, fftSize);
    VecCopy(kernel.taps.Data(), kernel.spectrum.Data(), kernel.fullLength);
    VecZero(kernel.spectrum.Data() + kernel.fullLength, fftSize - kernel.fullLength);
    FftForward(kernel.spectrum.Data(), kernel.transform.get(), kernel.work.Data());
    VecAddConstant(kDenormalGuard, kernel.spectrum.Data(), fftSize);
}

void MultiplySpectrum(FirKernel& kernel, const FirKernel& other) {
    float* const spectrum = kernel.spectrum.Data();
    MultiplyPacked(spectrum, other.spectrum.Data(), spectrum, kernel.fftSize);
}

void TransformBlock(const FirKernel& kernel, float* block, float* spectrum) {
    FftForwardTo(block, spectrum, kernel.transform.get());
    VecAddConstant(kDenormalGuard, spectrum, kernel.fftSize);
}

void FilterSpectrum(const FirKernel& kernel, const float* spectrum, float* block) {
    alignas(64) float product[FirKernel::kMaxFftSize + 2];
    MultiplyPacked(spectrum, kernel.spectrum.Data(), product, kernel.fftSize);
    FftInverseTo(product, block, kernel.transform.get());
    const float factor = kernel.normalise ? kernel.gain * kernel.fftScale : kernel.gain;
    if (std::abs(factor - 1) >= kSameGain) VecScaleInPlace(factor, block, kernel.fftSize);
}
