// SPDX-License-Identifier: GPL-3.0-or-later

// This file is compiled once for each processor below; foreach_target.h includes it again and again
// with other target attributes. The packaged Highway's baseline is scalar emulation, so its own
// choice of variant is not used.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL)
#define HWY_DISABLE_PCLMUL_AES
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/voice_reads_wide.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <cstring>

#include "dsp/shape_table.h"
#include "dsp/sinc_kernel.h"
#include "dsp/voice_reads_variants.h"

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
HWY_BEFORE_NAMESPACE();
namespace {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

struct Simd {
    using Tag = hn::ScalableTag<double>;
    using Doubles = hn::Vec<Tag>;
    using SampleTag = hn::Rebind<float, Tag>;
    static constexpr int kLanes = static_cast<int>(HWY_MAX_BYTES / sizeof(double));

    static Doubles Zero() { return hn::Zero(Tag()); }
    static Doubles Weights(const double* p) { return hn::Load(Tag(), p); }
    static Doubles Samples(const float* p) {
        return hn::PromoteTo(Tag(), hn::LoadU(SampleTag(), p));
    }
#if HWY_TARGET == HWY_AVX2
    // One sample is left over: a plain load is cheaper than a masked one.
    static Doubles LastSamples(const float* p) { return Doubles{_mm256_cvtps_pd(_mm_load_ss(p))}; }
#else
    static Doubles LastSamples(const float* p) {
        const auto left = hn::FirstN(SampleTag(), SincKernel::kTaps % kLanes);
        return hn::PromoteTo(Tag(), hn::MaskedLoad(left, SampleTag(), p));
    }
#endif
    static Doubles Broadcast(double x) { return hn::Set(Tag(), x); }
    static Doubles Add(Doubles a, Doubles b) { return hn::Add(a, b); }
    static Doubles Multiply(Doubles a, Doubles b) { return hn::Mul(a, b); }
    static Doubles MulAdd(Doubles a, Doubles b, Doubles c) { return hn::MulAdd(a, b, c); }
    static void Sum4(Doubles a, Doubles b, Doubles c, Doubles d, double* out) {
        const FourTag four;
        const auto ab = AddPairs(ToFour(a), ToFour(b));
        const auto cd = AddPairs(ToFour(c), ToFour(d));
        hn::StoreU(hn::Add(hn::ConcatLowerLower(four, cd, ab), hn::ConcatUpperUpper(four, cd, ab)),
                   four, out);
    }

private:
    using FourTag = hn::CappedTag<double, 4>;
    using Four = hn::Vec<FourTag>;

#if HWY_TARGET == HWY_AVX3
    static Four ToFour(Doubles x) {
        return hn::Add(hn::LowerHalf(FourTag(), x), hn::UpperHalf(FourTag(), x));
    }
#else
    static Four ToFour(Doubles x) { return x; }
#endif
    // a0 + a1, b0 + b1, a2 + a3, b2 + b3
    static Four AddPairs(Four a, Four b) {
        return hn::Add(hn::InterleaveLower(FourTag(), a, b), hn::InterleaveUpper(FourTag(), a, b));
    }
};

#include "dsp/voice_loops_inl.h"
#include "dsp/voice_reads_inl.h"

}  // namespace HWY_NAMESPACE
}  // namespace

#if HWY_TARGET == HWY_AVX2
const VoiceReads kAvx2VoiceReads = HWY_NAMESPACE::MakeReads("AVX2");
#else
const VoiceReads kAvx512VoiceReads = HWY_NAMESPACE::MakeReads("AVX-512");
#endif
HWY_AFTER_NAMESPACE();
#endif
