// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the example that the chorus is shown with: picked chords over a soft pad, dry, four bars
// of Am7, Fmaj7, C and G6 at 120 beats a minute, 16-bit FLAC. The same bytes with every run.
//
//     quillorea-make-example resources/example/chords-and-pad.flac
//
// Units    time in seconds unless a name says samples; levels relative to full scale
// Method   strings after Karplus and Strong, with Jaffe and Smith's pick position and tuning
//          allpass (Computer Music Journal 7/2, 1983); the pad is a sum of sines

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

#include "foundation/objects/random.h"

namespace {

constexpr int kRate = 44100;
constexpr double kBeat = 0.5;
constexpr double kBar = 4 * kBeat;
constexpr double kLength = 4 * kBar + 1.5;
constexpr double kPeak = 0.3;  // room for a chorus of several voices

// MIDI keys, from the lowest up; the first is the bass.
using Chord = std::array<int, 5>;
constexpr std::array<Chord, 4> kChords = {
    {{45, 52, 60, 67, 72}, {41, 53, 57, 64, 69}, {48, 55, 60, 64, 72}, {43, 55, 59, 64, 71}}};
// The string picked at each half beat of a bar.
constexpr std::array<std::size_t, 8> kPicking = {0, 2, 3, 4, 1, 3, 4, 2};

double KeyHz(int key) { return 440 * std::exp2((key - 69) / 12.0); }

std::size_t Samples(double seconds) {
    return static_cast<std::size_t>(std::lround(seconds * kRate));
}

// Interleaved stereo.
struct Sound {
    std::vector<double> samples = std::vector<double>(2 * Samples(kLength));

    // pan -1 left .. 1 right, equal power.
    void Add(std::size_t frame, double sample, double pan) {
        const double angle = (pan + 1) * std::numbers::pi / 4;
        samples[2 * frame] += sample * std::cos(angle);
        samples[2 * frame + 1] += sample * std::sin(angle);
    }
    std::size_t FrameCount() const { return samples.size() / 2; }
};

class PluckedString {
public:
    PluckedString(double hz, MRandomSequence& noise) {
        constexpr double kLoopFilterDelay = 0.5;
        const double period = kRate / hz - kLoopFilterDelay;
        line.resize(static_cast<std::size_t>(period - 0.1));
        const double fraction = period - static_cast<double>(line.size());
        tuning = (1 - fraction) / (1 + fraction);
        // The lower string rings longer; about 2.5 s down to -60 dB at middle C.
        damping = std::pow(10.0, -3 / (2.5 * std::sqrt(261.6 / hz) * hz));
        Pick(noise);
        previous = lastSoftened = lastTuned = line.back();
    }

    double Next() {
        const double oldest = line[place];
        const double softened = damping * 0.5 * (oldest + previous);
        previous = oldest;
        const double tuned = tuning * (softened - lastTuned) + lastSoftened;
        lastSoftened = softened;
        lastTuned = tuned;
        line[place] = tuned;
        place = (place + 1) % line.size();
        return oldest;
    }

private:
    // Soft noise, without the harmonics that have a node at the pick's place; mean power 1.
    void Pick(MRandomSequence& noise) {
        constexpr double kPickPlace = 0.19;
        std::vector<double> burst(line.size());
        for (double& sample : burst) sample = noise.Next() / 16383.5 - 1;
        Soften(burst);
        Soften(burst);
        const auto shift = static_cast<std::size_t>(kPickPlace * static_cast<double>(line.size()));
        double power = 0;
        for (std::size_t i = 0; i < line.size(); ++i) {
            line[i] = burst[i] - burst[(i + line.size() - shift) % line.size()];
            power += line[i] * line[i] / static_cast<double>(line.size());
        }
        for (double& sample : line) sample /= std::sqrt(power);
    }

    // One pole at about 2 kHz, run in beforehand so that the period closes without a step.
    static void Soften(std::vector<double>& period) {
        constexpr double kSoftness = 0.75;
        double soft = 0;
        for (const double sample : period) soft += (1 - kSoftness) * (sample - soft);
        for (double& sample : period) sample = soft += (1 - kSoftness) * (sample - soft);
    }

    std::vector<double> line;
    std::size_t place = 0;
    double damping = 0;
    double tuning = 0;
    double previous = 0;
    double lastSoftened = 0;
    double lastTuned = 0;
};

void AddPluck(Sound& sound, double start, int key, double level, double pan,
              MRandomSequence& noise) {
    constexpr double kAttack = 0.002;
    PluckedString string(KeyHz(key), noise);
    const std::size_t first = Samples(start);
    for (std::size_t i = first; i < sound.FrameCount(); ++i) {
        const double attack = std::min(1.0, static_cast<double>(i - first) / (kAttack * kRate));
        sound.Add(i, level * attack * string.Next(), pan);
    }
}

void AddPicking(Sound& sound) {
    MRandomSequence noise{1};
    for (std::size_t bar = 0; bar < kChords.size(); ++bar) {
        for (std::size_t step = 0; step < kPicking.size(); ++step) {
            const std::size_t string = kPicking[step];
            const double start =
                static_cast<double>(bar) * kBar + static_cast<double>(step) * kBeat / 2;
            const double pan = -0.3 + 0.15 * static_cast<double>(string);
            AddPluck(sound, start, kChords[bar][string], step == 0 ? 1.0 : 0.7, pan, noise);
        }
    }
    // The last chord is strummed from the bass up.
    for (std::size_t string = 0; string < kChords[0].size(); ++string)
        AddPluck(sound, 4 * kBar + 0.025 * static_cast<double>(string), kChords[0][string], 0.7,
                 -0.3 + 0.15 * static_cast<double>(string), noise);
}

double PadLevel(double seconds, double length) {
    constexpr double kFade = 0.35;
    const double in = std::clamp(seconds / kFade, 0.0, 1.0);
    const double out = std::clamp((length - seconds) / kFade, 0.0, 1.0);
    return std::sin(in * std::numbers::pi / 2) * std::sin(out * std::numbers::pi / 2);
}

// One held tone: harmonics that fall off a little faster than a saw's.
void AddPadTone(Sound& sound, double start, double length, int key, double level) {
    constexpr int kHarmonics = 12;
    const double step = 2 * std::numbers::pi * KeyHz(key) / kRate;
    const std::size_t first = Samples(start);
    const std::size_t count = std::min(Samples(length), sound.FrameCount() - first);
    for (std::size_t i = 0; i < count; ++i) {
        double tone = 0;
        for (int h = 1; h <= kHarmonics; ++h)
            tone += std::sin(step * h * static_cast<double>(i)) * std::pow(h, -1.3);
        sound.Add(first + i, level * tone * PadLevel(static_cast<double>(i) / kRate, length), 0);
    }
}

void AddPad(Sound& sound) {
    constexpr double kOverlap = 0.35;
    for (std::size_t bar = 0; bar <= kChords.size(); ++bar)
        for (const int key : kChords[bar % kChords.size()])
            AddPadTone(sound, static_cast<double>(bar) * kBar, kBar + kOverlap, key, 0.22);
}

void FadeEnd(Sound& sound) {
    const std::size_t fade = Samples(0.8);
    for (std::size_t i = 0; i < fade; ++i) {
        const double gain = 0.5 - 0.5 * std::cos(std::numbers::pi * static_cast<double>(i) /
                                                 static_cast<double>(fade));
        const std::size_t frame = sound.FrameCount() - 1 - i;
        sound.samples[2 * frame] *= gain;
        sound.samples[2 * frame + 1] *= gain;
    }
}

bool Write(Sound sound, const char* path) {
    double peak = 0;
    for (const double sample : sound.samples) peak = std::max(peak, std::abs(sample));
    for (double& sample : sound.samples) sample *= kPeak / peak;

    SF_INFO info = {};
    info.samplerate = kRate;
    info.channels = 2;
    info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path, SFM_WRITE, &info);
    if (file == nullptr) return false;
    double compression = 1;
    sf_command(file, SFC_SET_COMPRESSION_LEVEL, &compression, sizeof(compression));
    const auto count = static_cast<sf_count_t>(sound.samples.size());
    const bool written = sf_write_double(file, sound.samples.data(), count) == count;
    return sf_close(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("quillorea-make-example takes one argument, the file to write.\n", stderr);
        return 2;
    }
    Sound sound;
    AddPicking(sound);
    AddPad(sound);
    FadeEnd(sound);
    if (Write(std::move(sound), argv[1])) return 0;
    std::fprintf(stderr, "quillorea-make-example: Cannot write '%s'.\n", argv[1]);
    return 1;
}
