// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/streams/stream_support.h"

// A folder of its own for each case, sound files in it, and the real program run there.

struct SoundData {
    int rate = 44100;
    int channels = 1;
    int format = 0;              // libsndfile's word
    std::vector<float> samples;  // interleaved

    std::size_t FrameCount() const { return samples.size() / static_cast<std::size_t>(channels); }
};

struct RenderResult {
    int exitCode = -1;  // -1 where a signal ended the program
    int signal = 0;
    long maxResidentKilobytes = 0;
    std::string out;
    std::string err;
};

class RenderFolder : public testing::Test {
public:
    using Arguments = std::vector<std::string>;

    RenderResult Render(const Arguments& arguments,
                        std::optional<std::uint64_t> largestFile = std::nullopt);
    // In two halves, for what happens in between.
    pid_t Start(const Arguments& arguments,
                std::optional<std::uint64_t> largestFile = std::nullopt);
    RenderResult Finish(pid_t process);

    // Expects success and reads the output.
    SoundData Rendered(Arguments arguments, const std::string& output);

    void WriteSound(const std::string& name, const SoundData& sound);
    SoundData ReadSound(const std::string& name);
    // Two partials on each channel, of other frequencies, at about -10 dBFS; float WAV. No sample
    // is near enough to 0 for the denormal guard to change it.
    static SoundData Tones(double seconds, int channels = 1, int rate = 44100);
    static float LargestDifference(const SoundData& a, const SoundData& b);

    std::string Bytes(const char* name) { return own.Content(name); }
    // Every name in the folder, sorted, hidden ones included.
    std::vector<std::string> Names();

private:
    const TestFolder own;
    const TestFolder logs;  // apart, so that Names has the program's files only

public:
    const std::filesystem::path& folder = own.path;
};
