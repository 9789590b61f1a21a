// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The sinc read as the formula says it, one cell after the other in 64 bits: what the fast variants
// are compared with and measured against.
//
// Ranges   cell 0 .. length - 1, fraction 0 .. 1; the window wraps around the line
double LiteralSincSum(const float* line, int length, int cell, double fraction);
float LiteralSincRead(const float* line, int length, int cell, double fraction);
