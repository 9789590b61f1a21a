// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/shape_table.h"

#include <cmath>
#include <numbers>

namespace {

// A quarter cycle mirrored, so that the zeros and the symmetries are exact.
float SinePoint(int i) {
    constexpr int kHalf = ShapeTable::kPoints / 2;
    if (i >= kHalf) return -SinePoint(i - kHalf);
    const int quarter = i <= kHalf / 2 ? i : kHalf - i;
    return static_cast<float>(std::sin(quarter * std::numbers::pi / kHalf));
}

}  // namespace

ShapeTable::ShapeTable() { Fill(SinePoint); }
