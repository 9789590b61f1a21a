// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

// Test signals, the same on every machine, and the channel arrays that carry them.
//
// Units    samples

using Audio = std::vector<std::vector<float>>;  // channel, sample

Audio Silence(int channels, int sampleCount);
Audio Constant(int channels, int sampleCount, float level);

// Uniform within +-peak, another sequence for each channel and seed.
Audio Noise(int channels, int sampleCount, float peak, std::uint32_t seed = 1);

// What a line should carry exactly: noise, and for the third quarter silence around an impulse.
Audio Programme(int channels, int sampleCount, float peak);

// Pointers to sample `from` of each channel.
std::vector<const float*> ReadPointers(const Audio& audio, int from = 0);
std::vector<float*> WritePointers(Audio& audio, int from = 0);

// Largest absolute sample, and the largest difference of two signals; infinite where one is not
// finite.
double Peak(const Audio& audio);
double LargestDifference(const Audio& a, const Audio& b);
