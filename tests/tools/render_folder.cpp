// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/render_folder.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <sndfile.hh>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <numbers>

namespace fs = std::filesystem;

namespace {

// In the child only.
void SendTo(int descriptor, const fs::path& path) {
    dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), descriptor);
}

}  // namespace

RenderResult RenderFolder::Render(const Arguments& arguments,
                                  std::optional<std::uint64_t> largestFile) {
    return Finish(Start(arguments, largestFile));
}

pid_t RenderFolder::Start(const Arguments& arguments, std::optional<std::uint64_t> largestFile) {
    std::vector<char*> texts = {const_cast<char*>(QUILLOREA_RENDER)};
    for (const std::string& argument : arguments)
        texts.push_back(const_cast<char*>(argument.data()));
    texts.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    SendTo(STDOUT_FILENO, logs.path / "out");
    SendTo(STDERR_FILENO, logs.path / "err");
    // Whoever runs the tests may ignore it, and what is ignored stays so in a new program.
    std::signal(SIGHUP, SIG_DFL);
    if (largestFile) {
        const rlimit limit = {*largestFile, *largestFile};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    }
    if (chdir(folder.c_str()) == 0) execv(QUILLOREA_RENDER, texts.data());
    _exit(127);
}

RenderResult RenderFolder::Finish(pid_t process) {
    RenderResult result;
    int status = 0;
    rusage usage = {};
    wait4(process, &status, 0, &usage);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    result.maxResidentKilobytes = usage.ru_maxrss;
    result.out = logs.Content("out");
    result.err = logs.Content("err");
    return result;
}

SoundData RenderFolder::Rendered(Arguments arguments, const std::string& output) {
    const RenderResult result = Render(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    return ReadSound(output);
}

void RenderFolder::WriteSound(const std::string& name, const SoundData& sound) {
    SndfileHandle file((folder / name).string(), SFM_WRITE, sound.format, sound.channels,
                       sound.rate);
    const auto count = static_cast<sf_count_t>(sound.samples.size());
    EXPECT_EQ(file.write(sound.samples.data(), count), count) << name << ": " << file.strError();
}

SoundData RenderFolder::ReadSound(const std::string& name) {
    SndfileHandle file((folder / name).string());
    SoundData sound = {file.samplerate(), file.channels(), file.format(), {}};
    sound.samples.resize(static_cast<std::size_t>(file.frames() * file.channels()));
    const auto count = static_cast<sf_count_t>(sound.samples.size());
    EXPECT_EQ(file.read(sound.samples.data(), count), count) << name << ": " << file.strError();
    return sound;
}

SoundData RenderFolder::Tones(double seconds, int channels, int rate) {
    SoundData sound = {rate, channels, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {}};
    const auto frames = static_cast<std::size_t>(std::lround(seconds * rate));
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = 2 * std::numbers::pi * (static_cast<double>(i) + 0.37) / rate;
        for (int c = 0; c < channels; ++c)
            sound.samples.push_back(static_cast<float>(0.2 * std::sin(turn * (220 + 40 * c)) +
                                                       0.1 * std::sin(turn * (1500 + 90 * c))));
    }
    return sound;
}

float RenderFolder::LargestDifference(const SoundData& a, const SoundData& b) {
    EXPECT_EQ(a.samples.size(), b.samples.size());
    float largest = 0;
    for (std::size_t i = 0; i < std::min(a.samples.size(), b.samples.size()); ++i)
        largest = std::max(largest, std::abs(a.samples[i] - b.samples[i]));
    return largest;
}

std::vector<std::string> RenderFolder::Names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}
