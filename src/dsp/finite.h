// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Samples that are no finite numbers: what a broken neighbour sends, and what an unstable filter
// makes.
//
// Ranges   a null array and a count below 1 hold none
// Threads  any
// Memory   none
// Method   by the exponent's bits, which holds under relaxed arithmetic too

bool AreFinite(const float* samples, int count);

// Puts 0 in their place; how many there were.
int ReplaceNonFinite(float* samples, int count);
