// SPDX-License-Identifier: GPL-3.0-or-later
#include "report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace {

std::string Decibels(double level) {
    if (std::isinf(level)) return "-inf";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", level);
    return text.data();
}

std::string Levels(const LevelMeter& meter) {
    return "peak " + Decibels(meter.PeakDecibels()) + " dBFS, RMS " +
           Decibels(meter.RmsDecibels()) + " dBFS";
}

}  // namespace

std::string SummaryLine(const std::string& outputPath, const RenderReport& report) {
    const double seconds = static_cast<double>(report.frameCount) / report.rate;
    const double speed = seconds / std::max(report.elapsedSeconds, 1e-6);
    std::array<char, 96> timing{};
    std::snprintf(timing.data(), timing.size(), "%.2f s, %.1f times faster than real time", seconds,
                  speed);
    return outputPath + ": " + timing.data() + "; in: " + Levels(report.input) +
           "; out: " + Levels(report.output);
}

std::string Warnings(const std::string& outputPath, const RenderReport& report) {
    std::string text;
    if (const std::uint64_t count = report.input.NonFiniteCount())
        text += "Warning: " + std::to_string(count) +
                " samples of the input are no finite numbers and were taken as 0.\n";
    const double peak = report.output.PeakDecibels();
    if (report.clips && peak > 0)
        text += "Warning: '" + outputPath + "' is clipped, since the sound goes " + Decibels(peak) +
                " dB above full scale; a .wav keeps it.\n";
    return text;
}
