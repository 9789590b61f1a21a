// SPDX-License-Identifier: GPL-3.0-or-later
#include "renderer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <span>
#include <vector>

#include "audio_file.h"
#include "block_cutter.h"
#include "effect_runner.h"
#include "foundation/objects/random.h"
#include "interrupt.h"
#include "progress.h"

namespace {

// How often a second the tail is asked whether it is over; each answer looks at all delay lines.
constexpr int kSilenceChecks = 10;

// A block's samples as files have them and as the effect has them.
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

    std::array<float*, MAudioEffectPlugin::kSlotsPerBus> inputs{};
    std::array<float*, MAudioEffectPlugin::kSlotsPerBus> outputs{};

private:
    std::size_t channels;
    std::vector<float> interleaved;
    std::vector<float> planes;
};

class Renderer {
public:
    Renderer(const RenderOptions& options, AudioReader& reader, EffectRunner& effect,
             std::int64_t maxTail);

    // Once.
    RenderReport Run();

private:
    void RenderInput();
    void RenderTail();
    void RenderSilence(std::int64_t frames);
    void RenderBlock(int frames);
    TransportInfo TransportNow() const;

    const RenderOptions& options;
    AudioReader& reader;
    EffectRunner& effect;
    std::int64_t maxTail;
    int latency;
    AudioWriter writer;
    BlockCutter cutter;
    BlockBuffers buffers;
    Progress progress;

    std::int64_t doneFrames = 0;  // through the effect
    std::int64_t leadingFrames;   // still to be left out
    RenderReport report;
};

std::int64_t SumIfKnown(std::int64_t fileFrames, std::int64_t more) {
    return fileFrames > 0 ? fileFrames + more : 0;
}

Renderer::Renderer(const RenderOptions& options, AudioReader& reader, EffectRunner& effect,
                   std::int64_t maxTail)
    : options(options),
      reader(reader),
      effect(effect),
      maxTail(maxTail),
      latency(effect.Latency()),
      writer(options.output, reader.Rate(), reader.Channels(),
             SumIfKnown(reader.FrameCount(), maxTail)),
      cutter(options.blockSize, effect.MaxBlock()),
      buffers(reader.Channels(), cutter.Largest()),
      progress(SumIfKnown(reader.FrameCount(), maxTail + latency)),
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
        buffers.SplitInputs(frames);
        RenderBlock(frames);
    }
}

void Renderer::RenderTail() {
    RenderSilence(latency);
    if (options.tailSeconds) return RenderSilence(maxTail);
    const std::int64_t interval = reader.Rate() / kSilenceChecks;
    for (std::int64_t done = 0; done < maxTail && !effect.IsSilent(); done += interval)
        RenderSilence(std::min(interval, maxTail - done));
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
    effect.Process(TransportNow(), buffers.inputs.data(), buffers.outputs.data(), frames);
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

TransportInfo Renderer::TransportNow() const {
    constexpr double kSecondsPerMinute = 60;
    constexpr int kBarQuarters = 4;
    TransportInfo transport;
    transport.tempo = options.tempo;
    if (options.position < 0) return transport;
    const double seconds = static_cast<double>(doneFrames) / reader.Rate();
    transport.position = options.position + seconds * options.tempo / kSecondsPerMinute;
    transport.barStart = std::floor(transport.position / kBarQuarters) * kBarQuarters;
    transport.timeSigNumerator = 4;
    transport.timeSigDenominator = 4;
    return transport;
}

}  // namespace

RenderReport RenderFile(const RenderOptions& options) {
    EffectRunner effect;
    const std::vector<ParameterSetting> settings =
        ReadSettings(effect.Descriptor(), options.settings);
    AudioReader reader(options.input);
    if (options.seed) SetRandomSeed(*options.seed);
    effect.Start({.channels = reader.Channels(),
                  .rate = reader.Rate(),
                  .highQuality = options.highQuality,
                  .randomize = options.randomize,
                  .settings = settings});
    const std::int64_t maxTail = options.tailSeconds
                                     ? std::llround(*options.tailSeconds * reader.Rate())
                                     : effect.TailLength();
    return Renderer(options, reader, effect, maxTail).Run();
}
