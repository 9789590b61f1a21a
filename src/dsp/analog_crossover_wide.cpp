// SPDX-License-Identifier: GPL-3.0-or-later

// This file is compiled once for each processor below; foreach_target.h includes it again and again
// with other target attributes. The packaged Highway's baseline is scalar emulation, so its own
// choice of variant is not used.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL)
#define HWY_DISABLE_PCLMUL_AES
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/analog_crossover_wide.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "dsp/analog_crossover_variants.h"

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
HWY_BEFORE_NAMESPACE();
namespace {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

struct Simd {
    using Tag = hn::ScalableTag<double>;
    using Doubles = hn::Vec<Tag>;
    static constexpr int kLanes = static_cast<int>(HWY_MAX_BYTES / sizeof(double));
    static constexpr int kTogether = 5;

    static Doubles Load(const double* p) { return hn::Load(Tag(), p); }
    static void Store(Doubles x, double* p) { hn::Store(x, Tag(), p); }
    static Doubles MulAdd(Doubles a, Doubles b, Doubles c) { return hn::MulAdd(a, b, c); }

    static Doubles Join(const double* const (&p)[kLanes / 2]) {
#if HWY_TARGET == HWY_AVX2
        return JoinTwo(p);
#else
        return hn::Combine(Tag(), JoinTwo(p + 2), JoinTwo(p));
#endif
    }
    static void Split(Doubles x, double* const (&p)[kLanes / 2]) {
#if HWY_TARGET == HWY_AVX2
        SplitTwo(x, p);
#else
        SplitTwo(hn::LowerHalf(FourTag(), x), p);
        SplitTwo(hn::UpperHalf(FourTag(), x), p + 2);
#endif
    }

private:
    using FourTag = hn::CappedTag<double, 4>;
    using TwoTag = hn::CappedTag<double, 2>;

    static hn::Vec<FourTag> JoinTwo(const double* const* p) {
        return hn::Combine(FourTag(), hn::LoadU(TwoTag(), p[1]), hn::LoadU(TwoTag(), p[0]));
    }
    static void SplitTwo(hn::Vec<FourTag> x, double* const* p) {
        hn::StoreU(hn::LowerHalf(TwoTag(), x), TwoTag(), p[0]);
        hn::StoreU(hn::UpperHalf(TwoTag(), x), TwoTag(), p[1]);
    }
};

#include "dsp/analog_crossover_inl.h"

}  // namespace HWY_NAMESPACE
}  // namespace

#if HWY_TARGET == HWY_AVX2
const RunAnalogLanes kAvx2AnalogLanes = HWY_NAMESPACE::RunLanes;
#else
const RunAnalogLanes kAvx512AnalogLanes = HWY_NAMESPACE::RunLanes;
#endif
HWY_AFTER_NAMESPACE();
#endif
