// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Tolerances and guards of the signal path, by name.

// Values of a parameter that differ by less are the same.
inline constexpr double kSameParameter = 1e-50;

// Gains, and steps of gains, that differ by less are the same.
inline constexpr double kSameGain = 1e-20;

// Added to signals and filter coefficients: far below hearing (-300 dB), far above the subnormal
// range that decaying feedback would otherwise reach. The 32-bit float nearest to 1e-15; 64-bit
// arithmetic takes that same number, 1.0000000036274937e-15.
inline constexpr float kDenormalGuard = 1e-15f;
