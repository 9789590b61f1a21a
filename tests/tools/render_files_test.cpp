// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>

#include "tools/render_folder.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Depth 0 is the dry sound alone, and the output's gain starts at -6 dB.
const std::string kDry = "--set=Depth=0";
const std::string kUnity = "--set=Output gain=0";

using RenderedFiles = RenderFolder;

}  // namespace

TEST_F(RenderedFiles, KeepRateChannelsLengthAndSoundInEveryFormat) {
    constexpr double kStep24 = 1.0 / (1 << 23);
    constexpr double kVorbis = 0.02;    // lossy
    constexpr double kGuard = 1.1e-15;  // on samples that are 0
    constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    constexpr int kFlac24 = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    constexpr int kAiff24 = SF_FORMAT_AIFF | SF_FORMAT_PCM_24;
    constexpr int kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    const struct {
        int channels, rate, inputFormat;
        const char* output;
        int outputFormat;
        double tolerance;
    } rows[] = {
        {1, 44100, kFloatWav, "b.wav", kFloatWav, 0},
        {2, 96000, SF_FORMAT_WAV | SF_FORMAT_PCM_16, "b", kFloatWav, kGuard},
        {5, 22050, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, "b.WAV", kFloatWav, kGuard},
        {8, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_24, "b.flac", kFlac24, kStep24},
        {2, 192000, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, "b.aiff", kAiff24, kStep24},
        {6, 8000, SF_FORMAT_AIFF | SF_FORMAT_DOUBLE, "b.aif", kAiff24, kStep24},
        {2, 44100, kOgg, "b.ogg", kOgg, kVorbis},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.output);
        SoundData source = Tones(0.3, row.channels, row.rate);
        source.format = row.inputFormat;
        WriteSound("a", source);
        const SoundData input = ReadSound("a");
        for (const char* interface : {"--bypass=false", "--vst2"}) {
            const SoundData output = Rendered(
                {"a", row.output, kDry, kUnity, "--quality=normal", "--tail", "0", interface},
                row.output);
            EXPECT_EQ(output.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), row.outputFormat);
            EXPECT_EQ(output.rate, row.rate);
            EXPECT_EQ(output.channels, row.channels);
            EXPECT_LE(LargestDifference(input, output), row.tolerance) << interface;
        }
    }
}

TEST_F(RenderedFiles, LieOnTheInputHoweverTheyAreCut) {
    const SoundData input = Tones(0.4);
    WriteSound("in.wav", input);
    for (const char* quality : {"normal", "hq"}) {
        const auto cut = [&](const char* block, const std::string& setting) {
            return Rendered({"in.wav", "out.wav", "--tail=0", "--quality", quality, "--block",
                             block, setting, kUnity},
                            "out.wav")
                .samples;
        };
        const std::vector<float> whole = cut("512", "--set=Depth=1");
        for (const char* block : {"1", "7", "18", "1000", "random"}) {
            EXPECT_EQ(cut(block, "--set=Depth=1"), whole) << quality << ' ' << block;
            EXPECT_EQ(cut(block, kDry), input.samples) << quality << ' ' << block;
            EXPECT_EQ(cut(block, "--bypass"), input.samples) << quality << ' ' << block;
        }
    }
}

TEST_F(RenderedFiles, RingOnUntilTheSoundIsOver) {
    WriteSound("in.wav", Tones(0.2, 1, 8000));
    const SoundData late =
        Rendered({"in.wav", "out.wav", "--set=Depth=2", "--set=Delay=0.5"}, "out.wav");
    const std::size_t delayed = 1600 + 3900;
    ASSERT_GT(late.FrameCount(), delayed);
    EXPECT_GT(*std::max_element(late.samples.begin() + delayed, late.samples.end()), 0.01F);
    EXPECT_LT(std::abs(late.samples.back()), 1e-12F);
    EXPECT_LT(late.FrameCount(), 1600U + 2 * 8000);

    const auto length = [&](const char* tail) {
        return Rendered({"in.wav", "out.wav", tail}, "out.wav").FrameCount();
    };
    EXPECT_EQ(length("--tail=0.25"), 1600U + 2000);
    // After silence of a whole delay line nothing is left to ring on.
    SoundData ended = Tones(0.1, 1, 8000);
    ended.samples.resize(3 * 8000);
    WriteSound("in.wav", ended);
    EXPECT_EQ(length("--tail=auto"), 3U * 8000);
    WriteSound("in.wav", {44100, 2, SF_FORMAT_WAV | SF_FORMAT_PCM_16, {}});
    EXPECT_EQ(length("--tail=auto"), 0U);
}

TEST_F(RenderedFiles, MayReplaceTheInputAlsoThroughALink) {
    const SoundData input = Tones(0.5);
    WriteSound("in.wav", input);
    std::filesystem::create_symlink("in.wav", folder / "link.wav");
    const auto permissions = std::filesystem::perms(0640);
    std::filesystem::permissions(folder / "in.wav", permissions);
    const SoundData output = Rendered({"in.wav", "link.wav", "--tail=0"}, "in.wav");
    EXPECT_EQ(output.FrameCount(), input.FrameCount());
    EXPECT_GT(LargestDifference(input, output), 0.01F);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
    EXPECT_EQ(std::filesystem::status(folder / "in.wav").permissions(), permissions);
    EXPECT_THAT(Names(), ElementsAre("in.wav", "link.wav"));
}

TEST_F(RenderedFiles, AreNamedAfterTheInputAndSummedUpInOneLine) {
    // A square at half of full scale: peak and RMS are both 20 log10(0.5) = -6.02 dB.
    SoundData square = {1000, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {}};
    for (int i = 0; i < 2500; ++i) square.samples.push_back(i / 20 % 2 == 0 ? 0.5F : -0.5F);
    WriteSound("my.take.wav", square);
    const RenderResult result = Render({"my.take.wav", kDry, kUnity, "--tail=0"});
    EXPECT_THAT(result.out,
                testing::MatchesRegex("my.take-chorus.wav: 2.50 s, [0-9.]+ times faster than real "
                                      "time; in: peak -6.0 dBFS, RMS -6.0 dBFS; "
                                      "out: peak -6.0 dBFS, RMS -6.0 dBFS\n"));
    EXPECT_EQ(result.err, "");
}

TEST_F(RenderedFiles, ClipWithAWarningWhereTheFormatEndsAtFullScale) {
    WriteSound("in.wav", {44100, 1, SF_FORMAT_WAV | SF_FORMAT_FLOAT, {3, 0.25F, -2, NAN}});
    const RenderResult result = Render({"in.wav", "out.flac", kDry, kUnity, "--tail=0"});
    EXPECT_THAT(result.err, HasSubstr("clipped"));
    EXPECT_THAT(result.err, HasSubstr("1 samples of the input are no finite numbers"));
    EXPECT_THAT(ReadSound("out.flac").samples,
                testing::Pointwise(testing::FloatNear(1e-6F), std::vector<float>{1, 0.25F, -1, 0}));
}

TEST_F(RenderedFiles, TakeNoMoreMemoryWhenTheyAreLong) {
    WriteSound("short.wav", Tones(0.5, 2));
    WriteSound("long.wav", Tones(60, 2));
    const long brief = Render({"short.wav", "out.wav"}).maxResidentKilobytes;
    const long lasting = Render({"long.wav", "out.wav"}).maxResidentKilobytes;
    EXPECT_LT(lasting - brief, 6000);  // the files have 21 MB each
}
