// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/signals.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

Audio Silence(int channels, int sampleCount) { return Constant(channels, sampleCount, 0); }

Audio Constant(int channels, int sampleCount, float level) {
    return Audio(channels, std::vector<float>(sampleCount, level));
}

Audio Noise(int channels, int sampleCount, float peak, std::uint32_t seed) {
    Audio audio = Silence(channels, sampleCount);
    std::mt19937 generator(seed);  // its sequence is fixed by the standard
    for (std::vector<float>& channel : audio)
        for (float& sample : channel)
            sample = peak * (static_cast<float>(generator() >> 8) / 8388608.0f - 1);
    return audio;
}

Audio Programme(int channels, int sampleCount, float peak) {
    Audio audio = Noise(channels, sampleCount, peak, 7);
    const int eighth = std::max(1, sampleCount / 8);
    for (int c = 0; c < channels; ++c) {
        double phase = 0;
        for (int i = 0; i < sampleCount; ++i) {
            phase += 0.001 + 0.449 * i / sampleCount;
            const int kind = (i / eighth + c) % 4;
            if (kind == 1) audio[c][i] = peak * float(std::sin(2 * std::numbers::pi * phase));
            if (kind == 2) audio[c][i] = i % eighth == eighth / 2 ? peak : 0.0f;
        }
    }
    return audio;
}

std::vector<const float*> ReadPointers(const Audio& audio, int from) {
    std::vector<const float*> pointers;
    for (const std::vector<float>& channel : audio) pointers.push_back(channel.data() + from);
    return pointers;
}

std::vector<float*> WritePointers(Audio& audio, int from) {
    std::vector<float*> pointers;
    for (std::vector<float>& channel : audio) pointers.push_back(channel.data() + from);
    return pointers;
}

double Peak(const Audio& audio) {
    const int channels = static_cast<int>(audio.size());
    return LargestDifference(audio, Silence(channels, static_cast<int>(audio.at(0).size())));
}

double LargestDifference(const Audio& a, const Audio& b) {
    double largest = 0;
    for (std::size_t c = 0; c < a.size(); ++c) {
        for (std::size_t i = 0; i < a[c].size(); ++i) {
            const double difference = std::abs(double(a[c][i]) - double(b.at(c).at(i)));
            if (!std::isfinite(difference)) return std::numeric_limits<double>::infinity();
            largest = std::max(largest, difference);
        }
    }
    return largest;
}
