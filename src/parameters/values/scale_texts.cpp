// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/scale_texts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "parameters/values/number_text.h"

namespace {

constexpr double kNone = 1e-50;  // amplitudes, pans, turns and times below are told as nothing

// The C above a' = 440 Hz in equal temperament: 440 * 2^0.25 Hz.
constexpr double kC5 = 440 * 1.189207115002721;
constexpr int kNotesPerOctave = 12;

constexpr std::array<const char*, kNotesPerOctave> kNoteNames = {"C",  "C#", "D",  "D#", "E",  "F",
                                                                 "F#", "G",  "G#", "A",  "A#", "B"};

constexpr std::array<const char*, 16> kShapeNames = {"Exponencial",  "Triangle",
                                                     "Sine power 8", "Sine power 4",
                                                     "Sine square",  "Sine",
                                                     "Harmonics",    "More harmonics",
                                                     "Disharmonics", "Sine square root",
                                                     "Sine 4-root",  "Rectangle",
                                                     "Saw",          "Full saw",
                                                     "Noise",        "Mess"};

constexpr char16_t kDegreeSign = 0xb0;

NumberText& PutNote(NumberText& out, int note, int octave) {
    return out.Put(kNoteNames[static_cast<std::size_t>(note % kNotesPerOctave)]).PutWhole(octave);
}

void PutDecibels(NumberText& out, double amplitude) {
    const double decibels = 20 * std::log10(amplitude);
    out.PutFixed(decibels, std::abs(decibels) < 10 ? 2 : 1);
}

// The number in the unit that is then told, "Hz" or "kHz".
const char* PutFrequency(NumberText& out, double hertz) {
    const double size = std::abs(hertz);
    if (size < 1e-5) {
        out.Put(u'0');
    } else if (size < 100) {
        out.PutFixed(hertz, size < 1 ? 4 : size < 10 ? 2 : 1);
    } else if (size < 10000) {
        out.PutRounded(RoundHalfUp(hertz));
    } else {
        out.PutFixed(hertz * 0.001, 1);
        return "kHz";
    }
    return "Hz";
}

std::optional<double> ReadScaled(const MString& text, double unit) {
    const std::optional<double> number = ReadNumber(text);
    if (!number) return std::nullopt;
    return *number * unit;
}

}  // namespace

MString PercentText(double fraction) {
    const int decimals = std::abs(fraction) < 0.01 ? 2 : 1;
    return NumberText().PutFixed(fraction * 100, decimals).Put(u'%').Take();
}

std::optional<double> ReadPercents(const MString& text) { return ReadScaled(text, 0.01); }

MString DecibelText(double amplitude) {
    if (std::abs(amplitude) < kNone) return "silence";
    NumberText out;
    PutDecibels(out, amplitude);
    return out.Put(" dB").Take();
}

MString DecibelNumberText(double amplitude) {
    if (std::abs(amplitude) < kNone) return "silence";
    NumberText out;
    PutDecibels(out, amplitude);
    return out.Take();
}

std::optional<double> ReadDecibels(const MString& text) {
    return std::pow(10, ReadNumber(text).value_or(0) * 0.05);
}

MString FrequencyText(double hertz) { return FrequencyCaption(hertz, " "); }

MString FrequencyCaption(double hertz, const MString& separator) {
    NumberText out;
    const char* const unit = PutFrequency(out, hertz);
    return out.Put(separator).Put(unit).Take();
}

std::optional<double> ReadFrequency(const MString& text) { return ReadNumber(text); }

MString LogFrequencyText(double logHertz) { return FrequencyText(std::pow(10, logHertz)); }

std::optional<double> ReadLogFrequency(const MString& text) {
    const std::optional<double> hertz = ReadNumber(text);
    if (!hertz || *hertz <= 0) return std::nullopt;
    return std::log10(*hertz);
}

MString PitchText(double hertz) {
    constexpr int kOctavesBelow = 100;  // keep frequencies far below C0 above 0
    const double pitch =
        kNotesPerOctave * std::log2(hertz / kC5) + 60 + kOctavesBelow * kNotesPerOctave;
    const double nearest = RoundHalfUp(pitch);
    if (!(nearest >= 0) || std::isinf(nearest)) return MString();
    const int note = static_cast<int>(nearest);
    const auto cents = static_cast<int>(RoundHalfUp((pitch - nearest) * 100));
    NumberText out;
    PutNote(out, note, note / kNotesPerOctave - kOctavesBelow).Put(" (");
    if (cents > 0) out.Put(u'+');
    return out.PutWhole(cents).Put(" cents)").Take();
}

MString NoteText(int note) {
    if (note < 0) return MString();
    NumberText out;
    return PutNote(out, note, note / kNotesPerOctave).Take();
}

MString PanText(double pan) {
    if (std::abs(pan) < kNone) return "center";
    const double percents = std::trunc(std::abs(pan) * 100);
    return NumberText().PutRounded(percents).Put(pan < 0 ? "% left" : "% right").Take();
}

MString DegreesText(double turns) {
    if (std::abs(turns) < kNone) return NumberText().Put(u'0').Put(kDegreeSign).Put(" (0%)").Take();
    NumberText out;
    out.PutRounded(RoundHalfUp(turns * 360)).Put(kDegreeSign);
    return out.Put(" (").PutFixed(turns * 100, 1).Put("%)").Take();
}

std::optional<double> ReadDegrees(const MString& text) { return ReadScaled(text, 1.0 / 360); }

MString TimeText(double seconds) {
    const double size = std::abs(seconds);
    const double milliseconds = seconds * 1000;
    if (size < kNone) return "0 ms";
    NumberText out;
    if (size < 0.01) {
        out.PutFixed(milliseconds, size < 0.0001 ? 3 : size < 0.001 ? 2 : 1);
    } else {
        out.PutRounded(RoundHalfUp(milliseconds));
    }
    return out.Put(" ms").Take();
}

std::optional<double> ReadTime(const MString& text) { return ReadScaled(text, 0.001); }

MString SignalShapeText(double position) {
    constexpr std::size_t kLast = kShapeNames.size() - 1;
    const double limited = position > 0 ? std::min<double>(position, kLast) : 0;
    const auto first = static_cast<std::size_t>(limited);
    const auto weight = static_cast<int>(RoundHalfUp((limited - static_cast<double>(first)) * 100));
    if (weight == 0) return kShapeNames[first];
    if (weight == 100) return kShapeNames[first + 1];
    NumberText out;
    out.PutWhole(100 - weight).Put("% ").Put(kShapeNames[first]).Put(", ");
    return out.PutWhole(weight).Put("% ").Put(kShapeNames[first + 1]).Take();
}
