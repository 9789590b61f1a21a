// SPDX-License-Identifier: GPL-3.0-or-later

// This file is compiled once for each processor below; foreach_target.h includes it again and again
// with other target attributes, under which the compiler vectorises plain loops.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL)
#define HWY_DISABLE_PCLMUL_AES
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/vectors_wide.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "dsp/vectors_variants.h"

#if HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
HWY_BEFORE_NAMESPACE();
namespace {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::ScalableTag<float>;
using Floats = hn::Vec<Tag>;

Floats Product(Floats x, Floats y) {
    const Floats minusForReal = hn::OddEven(hn::Zero(Tag()), hn::SignBit(Tag()));
    const Floats crossed = hn::Mul(hn::DupOdd(x), hn::Reverse2(Tag(), y));
    return hn::Add(hn::Mul(hn::DupEven(x), y), hn::Xor(crossed, minusForReal));
}

void MultiplyComplex(int pairs, const float* first, const float* second, float* destination) {
    constexpr int kLanes = static_cast<int>(hn::MaxLanes(Tag()));
    int i = 0;
    for (; i + kLanes <= 2 * pairs; i += kLanes)
        hn::StoreU(Product(hn::LoadU(Tag(), first + i), hn::LoadU(Tag(), second + i)), Tag(),
                   destination + i);
    const auto left = hn::FirstN(Tag(), static_cast<std::size_t>(2 * pairs - i));
    const Floats last =
        Product(hn::MaskedLoad(left, Tag(), first + i), hn::MaskedLoad(left, Tag(), second + i));
    hn::BlendedStore(last, left, Tag(), destination + i);
}

#include "dsp/vectors_inl.h"
}  // namespace HWY_NAMESPACE
}  // namespace
HWY_AFTER_NAMESPACE();

#if HWY_TARGET == HWY_AVX2
const VectorLoops kAvx2VectorLoops = HWY_NAMESPACE::MakeLoops("AVX2");
#else
const VectorLoops kAvx512VectorLoops = HWY_NAMESPACE::MakeLoops("AVX-512");
#endif
#endif
