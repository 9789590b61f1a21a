// SPDX-License-Identifier: GPL-3.0-or-later
#include "renderer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <span>
#include <vector>

#include "audio_file.h"
#include "block_cutter.h"
#include "errors.h"
#include "foundation/objects/random.h"
#include "foundation/objects/tolerances.h"
#include "interrupt.h"
#include "prepared_plugin.h"
#include "progress.h"

namespace {

// Frames since there was sound, where there was none.
constexpr std::int64_t kAlways = std::int64_t{1} << 40;

// Longer than the tail gets, whatever the parameters move to: to judge the output's size by, and
// what is heard of one that does not end.
constexpr int kLongestTailSeconds = 2;

// A block's samples as files have them and as the plug-in has them.
class BlockBuffers {
public:
    BlockBuffers(int channels, int largestBlock)
        : channels(static_cast<std::size_t>(channels)),
          interleaved(this->channels * static_cast<std::size_t>(largestBlock)),
          planes(2 * interleaved.size()) {
        for (std::size_t c = 0; c < this->channels; ++c) {
            inputs[c] = planes.data() + c * static_cast<std::size_t>(largestBlock);
            outputs[c] = inputs[c] + interleaved.size();
        }
    }

    std::span<float> Interleaved(int frames) {
        return std::span(interleaved).first(static_cast<std::size_t>(frames) * channels);
    }

    void SplitInputs(int frames) {
        const float* sample = interleaved.data();
        for (int i = 0; i < frames; ++i)
            for (std::size_t c = 0; c < channels; ++c) inputs[c][i] = *sample++;
    }

    void JoinOutputs(int frames) {
        float* sample = interleaved.data();
        for (int i = 0; i < frames; ++i)
            for (std::size_t c = 0; c < channels; ++c) *sample++ = outputs[c][i];
    }

    // At the end of the block. A sample that is no number is taken as 0.
    int QuietFrames(int frames) {
        const std::span<const float> samples = Interleaved(frames);
        const auto loud = std::find_if(samples.rbegin(), samples.rend(),
                                       [](float x) { return std::abs(x) > kDenormalGuard; });
        return static_cast<int>(static_cast<std::size_t>(loud - samples.rbegin()) / channels);
    }

    ChannelPointers inputs{};
    ChannelPointers outputs{};

private:
    std::size_t channels;
    std::vector<float> interleaved;
    std::vector<float> planes;
};

class Renderer {
public:
    Renderer(const RenderOptions& options, AudioReader& reader, PluginRunner& plugin);

    // Once.
    RenderReport Run();

private:
    void RenderInput();
    void RenderTail();
    void RenderSilence(std::int64_t frames);
    void RenderBlock(int frames);
    std::int64_t TailFrames() const;
    PluginRunner::Transport TransportNow() const;

    const RenderOptions& options;
    AudioReader& reader;
    PluginRunner& plugin;
    int latency;
    std::int64_t quietFrames = kAlways;  // at the end of what was read
    AudioWriter writer;
    BlockCutter cutter;
    BlockBuffers buffers;
    Progress progress;

    std::int64_t doneFrames = 0;  // through the plug-in
    std::int64_t leadingFrames;   // still to be left out
    RenderReport report;
};

std::int64_t SumIfKnown(std::int64_t fileFrames, std::int64_t more) {
    return fileFrames > 0 ? fileFrames + more : 0;
}

std::int64_t LongestTail(const RenderOptions& options, int rate) {
    return std::llround(options.tailSeconds.value_or(kLongestTailSeconds) * rate);
}

Renderer::Renderer(const RenderOptions& options, AudioReader& reader, PluginRunner& plugin)
    : options(options),
      reader(reader),
      plugin(plugin),
      latency(plugin.Latency()),
      writer(options.output, reader.Rate(), reader.Channels(),
             SumIfKnown(reader.FrameCount(), LongestTail(options, reader.Rate()))),
      cutter(options.blockSize),
      buffers(reader.Channels(), cutter.Largest()),
      progress(SumIfKnown(reader.FrameCount(), TailFrames() + latency)),
      leadingFrames(latency) {}

RenderReport Renderer::Run() {
    const auto start = std::chrono::steady_clock::now();
    RenderInput();
    RenderTail();
    writer.Finish();
    report.elapsedSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.rate = reader.Rate();
    report.clips = writer.Clips();
    return report;
}

void Renderer::RenderInput() {
    while (const int frames = reader.Read(buffers.Interleaved(cutter.Next()))) {
        report.input.Add(buffers.Interleaved(frames));
        const int quiet = buffers.QuietFrames(frames);
        quietFrames = quiet < frames ? quiet : quietFrames + quiet;
        buffers.SplitInputs(frames);
        RenderBlock(frames);
    }
}

void Renderer::RenderTail() {
    const std::int64_t tail = TailFrames();
    RenderSilence(latency + tail);
}

std::int64_t Renderer::TailFrames() const {
    if (options.tailSeconds) return std::llround(*options.tailSeconds * reader.Rate());
    const int longest = kLongestTailSeconds * reader.Rate();
    return std::max<std::int64_t>(plugin.TailLength(longest) - quietFrames, 0);
}

void Renderer::RenderSilence(std::int64_t frames) {
    while (frames > 0) {
        const int size = static_cast<int>(std::min<std::int64_t>(cutter.Next(), frames));
        std::ranges::fill(buffers.Interleaved(size), 0.0F);
        buffers.SplitInputs(size);
        RenderBlock(size);
        frames -= size;
    }
}

void Renderer::RenderBlock(int frames) {
    ThrowIfInterrupted();
    plugin.Process(TransportNow(), buffers.inputs, buffers.outputs, frames);
    buffers.JoinOutputs(frames);
    doneFrames += frames;

    const std::int64_t skipped = std::min<std::int64_t>(leadingFrames, frames);
    leadingFrames -= skipped;
    const std::span<const float> heard = buffers.Interleaved(frames).subspan(
        static_cast<std::size_t>(skipped) * static_cast<std::size_t>(reader.Channels()));
    report.output.Add(heard);
    report.frameCount += frames - skipped;
    writer.Write(heard);
    progress.Show(doneFrames);
}

PluginRunner::Transport Renderer::TransportNow() const {
    constexpr double kSecondsPerMinute = 60;
    if (options.position < 0) return {options.tempo, -1};
    const double seconds = static_cast<double>(doneFrames) / reader.Rate();
    return {options.tempo, options.position + seconds * options.tempo / kSecondsPerMinute};
}

}  // namespace

RenderReport RenderFile(const RenderOptions& options) {
    AudioReader reader(options.input);
    PreparedPlugin prepared(options, reader.Channels(), reader.Rate());
    if (!options.stateOut.empty()) prepared.SaveState(options.stateOut);
    return Renderer(options, reader, prepared.Runner()).Run();
}
