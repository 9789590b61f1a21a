// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/signals.h"

#include <algorithm>
#include <cmath>
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
    for (std::vector<float>& channel : audio) {
        std::fill_n(channel.begin() + sampleCount / 2, sampleCount / 4, 0.0f);
        channel[sampleCount * 5 / 8] = peak;
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
            largest = std::max(largest, std::isfinite(difference) ? difference : HUGE_VAL);
        }
    }
    return largest;
}
