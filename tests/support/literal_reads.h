// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The reads of a line as their formulas say them, one cell after the other: what the fast variants
// are compared with and measured against. The sinc one sums in 64 bits.
//
// Ranges   cell 0 .. length - 1, fraction 0 .. 1; the window wraps around the line
double LiteralSincSum(const float* line, int length, int cell, double fraction);
float LiteralSincRead(const float* line, int length, int cell, double fraction);
float LiteralCubicRead(const float* line, int length, int cell, double fraction);
