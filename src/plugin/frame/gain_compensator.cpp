// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/gain_compensator.h"

#include <algorithm>
#include <cmath>

#include "dsp/vectors.h"

using MAudioFilters::FilterMemory;
using MAudioFilters::FilterType;

namespace {

constexpr double kWindowSeconds = 0.4;  // of the momentary loudness of ITU-R BS.1770
constexpr int kHoldSeconds = 2;
constexpr double kSilentPower = 1e-10;  // -100 dB
constexpr double kSmallestGain = 0.01;
constexpr double kLargestGain = 100;

// Fitted to the curve of ITU-R BS.1770-4, tables 1 and 2.
constexpr double kShelfHertz = 1501.5;
constexpr double kShelfQ = 0.7072;
constexpr double kShelfDecibels = 4;
constexpr double kHighPassHertz = 38.05;
constexpr double kHighPassQ = 0.5;
constexpr double kHighPassLevel = 0.00216;  // decimal logarithm of a factor

}  // namespace

void MovingSum::Prepare(int newLength) {
    length = std::max(newLength, 1);
    window.Reserve(length);
    VecZeroDouble(window.Data(), length);
    index = 0;
    sum = fresh = 0;
}

void MovingSum::Push(const double* values, int count) {
    if (count >= length) {
        values += count - length;
        count = length;
        index = 0;
        fresh = 0;
    }
    double* const cells = window.Data();
    for (int i = 0; i < count; ++i) {
        sum += values[i] - cells[index];
        fresh += values[i];
        cells[index] = values[i];
        if (++index < length) continue;
        sum = fresh;
        index = 0;
        fresh = 0;
    }
    sum = std::max(sum, 0.0);
}

void MGainCompensator::Prepare(int rate, int channels, int inputDelay) {
    filters[0].Set(FilterType::HighShelf, kShelfHertz, rate, kShelfQ, kShelfDecibels);
    filters[1].Set(FilterType::HighPass, kHighPassHertz, rate, kHighPassQ, 0);
    const double level = std::pow(10, kHighPassLevel);
    filters[1].b0 *= level;
    filters[1].b1 *= level;
    filters[1].b2 *= level;

    for (Side* const side : {&input, &output}) {
        side->memory = {};
        side->sum.Prepare(static_cast<int>(kWindowSeconds * rate));
    }
    delayed = inputDelay > 0;
    for (int c = 0; delayed && c < std::min(channels, kMaxChannels); ++c) {
        const auto channel = static_cast<std::size_t>(c);
        delays[channel].Resize(inputDelay);
        delays[channel].Clear();
    }
    gain = 0;
    holdSamples = kHoldSeconds * rate;
}

void MGainCompensator::Reserve(int blockSize) {
    power.Reserve(blockSize);
    shifted.Reserve(blockSize);
}

void MGainCompensator::AnalyseInput(const float* const* inputs, int count, int channels) {
    channels = std::min(channels, kMaxChannels);
    Reserve(count);
    VecZeroDouble(power.Data(), count);
    for (int c = 0; c < channels; ++c) {
        const auto channel = static_cast<std::size_t>(c);
        const float* samples = inputs[c];
        if (delayed) {
            delays[channel].Exchange(samples, shifted.Data(), count);
            samples = shifted.Data();
        }
        AddPower(samples, count, input.memory[channel]);
    }
    PushPower(input, count, channels);
}

void MGainCompensator::Apply(float* const* outputs, int count, int channels) {
    channels = std::min(channels, kMaxChannels);
    Reserve(count);
    VecZeroDouble(power.Data(), count);
    for (int c = 0; c < channels; ++c)
        AddPower(outputs[c], count, output.memory[static_cast<std::size_t>(c)]);
    PushPower(output, count, channels);

    double target = TargetGain();
    if (holdSamples > 0) {
        target = std::min(target, 1.0);
        holdSamples -= count;
    }
    const float step = static_cast<float>((target - gain) / count);
    // A buffer that stands for several channels is scaled once.
    float* const* const end = outputs + channels;
    for (float* const* each = outputs; each != end; ++each)
        if (std::find(outputs, each, *each) == each)
            VecRamp(static_cast<float>(gain), step, *each, count);
    gain = target;
}

double MGainCompensator::TargetGain() const {
    const double power = output.MeanPower();
    if (power < kSilentPower) return 1;
    return std::clamp(std::sqrt(input.MeanPower() / power), kSmallestGain, kLargestGain);
}

// Adds the squares of the filtered samples to the block's power.
void MGainCompensator::AddPower(const float* samples, int count, Memory& memory) {
    double* const powers = power.Data();
    if (!filtered) {
        for (int i = 0; i < count; ++i) powers[i] += static_cast<double>(samples[i]) * samples[i];
        return;
    }
    const auto shelf = filters[0];
    const auto highPass = filters[1];
    Memory local = memory;
    for (int i = 0; i < count; ++i) {
        const double y = highPass.RunSample(shelf.RunSample(samples[i], local[0]), local[1]);
        powers[i] += y * y;
    }
    memory = local;
}

void MGainCompensator::PushPower(Side& side, int count, int channels) {
    const double share = channels > 0 ? 1.0 / channels : 0;
    double* const powers = power.Data();
    for (int i = 0; i < count; ++i) powers[i] *= share;
    side.sum.Push(powers, count);
    if (std::isfinite(side.sum.Sum())) return;
    // The filters would never get over it.
    side.memory = {};
    side.sum.Prepare(side.sum.Length());
}
