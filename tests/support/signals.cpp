// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/signals.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

Audio Silence(int channels, int sampleCount) { return Constant(channels, sampleCount, 0); }

Audio Constant(int channels, int sampleCount, float level) {
    return Audio(static_cast<std::size_t>(channels),
                 std::vector<float>(static_cast<std::size_t>(sampleCount), level));
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
    const int quarter = std::max(1, sampleCount / 8);
    for (std::size_t c = 0; c < audio.size(); ++c) {
        double phase = 0;
        for (int i = 0; i < sampleCount; ++i) {
            float& sample = audio[c][static_cast<std::size_t>(i)];
            phase += 0.001 + 0.449 * i / sampleCount;
            switch ((i / quarter + static_cast<int>(c)) % 4) {
                case 1:
                    sample = peak * static_cast<float>(std::sin(2 * std::numbers::pi * phase));
                    break;
                case 2:
                    sample = i % quarter == quarter / 2 ? peak : 0.0f;
                    break;
                default:
                    break;
            }
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
    return LargestDifference(
        audio, Constant(static_cast<int>(audio.size()), static_cast<int>(audio.at(0).size()), 0));
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
