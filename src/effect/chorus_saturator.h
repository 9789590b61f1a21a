// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>

// Soft saturation in front of the delay lines.
//
// Units    samples, 1 is full scale
// Ranges   wet 0..1, dry is 1 - wet; a shaped sample is within -1..1 before the even part is added
// Method   a rational approximation of the hyperbolic tangent, t (27 + t^2) / (27 + 9 t^2), scaled
//          so that 1 maps to 1 and everything louder stays there; then the squared difference to
//          the input is added on both half-waves alike, which gives the even harmonics
struct ChorusSaturator {
    double gain = 1;  // makes the curve meet 1 at 1
    double inputScale = 3;
    double outputScale = 1.0 / 3;
    double wet = 0;
    double dry = 1;
    double evenOrder = 1;

    void SetUp() { gain = 1 / Curve(1); }

    void SetWet(double amount) {
        wet = amount;
        dry = 1 - amount;
    }

    double Curve(double x) const {
        const double t = inputScale * x;
        return t * (27 + t * t) / (27 + 9 * t * t) * outputScale;
    }

    double Shape(double x) const {
        const double magnitude = std::abs(x);
        // A NaN takes the curve and stays one.
        const double level = magnitude >= 1 ? 1 : Curve(magnitude) * gain;
        const double odd = std::copysign(level, x);
        const double shaped = odd + (odd - x) * (odd - x) * evenOrder;
        return shaped * wet + x * dry;
    }
};
