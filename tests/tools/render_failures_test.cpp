// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "tools/render_folder.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

class RenderFailures : public RenderFolder {
protected:
    void SetUp() override {
        WriteSound("in.wav", Tones(0.2, 2));
        std::ofstream(folder / "out.wav") << "precious";
    }

    // The other one is the input.
    void ExpectNothingTouched() {
        EXPECT_EQ(Bytes("out.wav"), "precious");
        EXPECT_EQ(Names().size(), 2u);
    }
};

}  // namespace

TEST_F(RenderFailures, AreOnePlainSentenceWithTheRightExitCode) {
    std::ofstream(folder / "text.wav") << "no sound at all";
    std::ofstream(folder / "other") << "<preset/>";
    const std::string other = std::string("--plugin=") + OTHER_PLUGIN;
    std::filesystem::create_directory(folder / "folder.wav");
    mkfifo((folder / "pipe.wav").c_str(), 0600);
    WriteSound("wide.wav", Tones(0.01, 9));
    WriteSound("quad.wav", Tones(0.01, 4));
    WriteSound("slow.wav", Tones(0.1, 1, 999));
    const struct {
        Arguments arguments;
        int exitCode;
        const char* text;
    } cases[] = {
        {{}, 2, "No input file is given"},
        {{"in.wav", "out.wav", "--loud"}, 2, "--loud"},
        {{"in.wav", "out.wav", "--set", "Rate"}, 2, "--set takes PARAMETER=VALUE, not 'Rate'"},
        {{"in.wav", "out.wav", "--block=0"}, 2, "whole number from 1 to 65536 or 'random'"},
        {{"in.wav", "out.wav", "--position=0"}, 2, "--tempo"},
        {{"in.wav", "out.wav", "--channel-mode=Lefft"}, 2, "mode 'Lefft'; the nearest is 'Left'"},
        {{"quad.wav", "out.wav", "--channel-mode=L"}, 1, "as 'Left': it has 4 channels"},
        {{"in.wav", "out.wav", "--automate=Rate=0:1,x"}, 1, "0 to 1 or a text"},
        {{"in.wav", "out.wav", "--automate=Rate=x:1"}, 2, "SECONDS:VALUE,..., not 'x:1'"},
        {{"in.wav", "out.wav", "--automate=Rate=2:1,1:0"}, 2, "'1:0' can't stand there"},
        {{"in.wav", "out.wav", "--automate=Rate=0:1.1"}, 1, "positions from 0 to 1 or a text"},
        {{"in.wav", "out.wav", "--automate=Voices=0:11"}, 1, "positions from 0 to 1 and a whole"},
        {{"in.wav", "out.wav", "--automate=24=0:1", "--automate=Rate=0:1"}, 2, "a second time"},
        {{"in.wav", "out.mp3"}, 2, "'out.mp3': its name must end in .wav, .flac"},
        {{"none.wav", "out.wav"}, 1, "Cannot read 'none.wav': No such file"},
        {{"text.wav", "out.wav"}, 1, "Cannot read 'text.wav' as audio"},
        {{"folder.wav", "out.wav"}, 1, "'folder.wav': it is a folder"},
        {{"wide.wav", "out.wav"}, 1, "9 channels, and 8 is the most"},
        {{"slow.wav", "out.wav"}, 1, "its rate is 999 Hz, and 1000 Hz is the least"},
        {{"in.wav", "none/out.wav"}, 1, "Cannot write 'none/out.wav': No such file"},
        {{"in.wav", "folder.wav"}, 1, "Cannot write 'folder.wav': Is a directory"},
        {{"in.wav", "pipe.wav"}, 1, "'pipe.wav': it is not a regular file"},
        {{"in.wav", "big.aiff", "--tail=86400"}, 1, "AIFF holds 4 GiB at most"},
        {{"in.wav", "out.wav", "--set=Raet=1"}, 1, "no parameter 'Raet'; the nearest is 'Rate'"},
        {{"in.wav", "out.wav", "--set=22=1"}, 1, "no parameter '22'"},  // a heading
        {{"in.wav", "out.wav", "--set=Band 7 Rate=1"}, 1, "the nearest is 'Band 1 Rate'"},
        {{"in.wav", "out.wav", "--set=Dry/wet=2"}, 1, "'Dry/wet' takes 0 to 1 or a text"},
        {{"in.wav", "out.wav", "--set=Delay=0.1s"}, 1, "not '0.1s'"},
        {{"in.wav", "out.wav", "--set=Delay=501 ms"}, 1, "'Delay' takes 0 to 0.5 or a text"},
        {{"in.wav", "out.wav", "--set=MaxFreq=15 kHz"}, 1, "such as '20.0 Hz', not '15 kHz'"},
        {{"in.wav", "out.wav", "--set=synctype=Swing"}, 1, "'Straight', 'Triplets', 'Dotted'"},
        {{"in.wav", "out.wav", "--plugin=none"}, 1, "load 'none': No such file or directory.\n"},
        {{"in.wav", "out.wav", "--plugin=text.wav"}, 1, "is not a plug-in that can be loaded: "},
        {{"in.wav", "out.wav", "--state-in=none"}, 1, "Cannot read 'none'.\n"},
        {{"in.wav", "out.wav", "--state-in=text.wav"},
         1,
         "'text.wav' is no state of the plug-in: "},
        {{"in.wav", "out.wav", "--state-in=other"}, 1, "'other' is no state of the plug-in.\n"},
        {{"in.wav", "out.wav", "--param=Rate=fast"},
         1,
         "'Band 1 - Rate' takes positions from 0 to"},
        {{"in.wav", "out.wav", "--param=Raet=1"}, 1, "'Raet'; the nearest is 'Rate'"},
        {{"in.wav", "out.wav", other, "--set=Rate=1"}, 1, "unit of 'Rate' is not known"},
        {{"in.wav", "out.wav", "--crossover=30dB/oct"},
         2,
         "crossover '30dB/oct'; the nearest is '"},
        {{"in.wav", "out.wav", "--protection=none"}, 2, "protection 'none'; the nearest is '"},
        {{"in.wav", "out.wav", "--bands=7"}, 2, "whole number from 1 to 6"},
    };
    const std::vector<std::string> names = Names();
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.arguments));
        const RenderResult result = Render(c.arguments);
        EXPECT_EQ(result.exitCode, c.exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, StartsWith("quillorea-render: "));
        EXPECT_THAT(result.err, HasSubstr(c.text));
        EXPECT_THAT(result.err, testing::EndsWith(".\n"));
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1);
    }
    EXPECT_EQ(Names(), names);
    EXPECT_EQ(Bytes("out.wav"), "precious");
}

TEST_F(RenderFailures, LeaveNoOutputWhereTheSpaceRunsOut) {
    WriteSound("in.wav", Tones(2, 2));
    for (const char* output : {"out.wav", "out.flac", "out.aiff", "out.ogg"}) {
        // With the first bytes, which leaves room for the complaint only, and in the middle.
        for (const std::uint64_t space : {1000U, 20000U}) {
            SCOPED_TRACE(std::string(output) + ' ' + std::to_string(space));
            const RenderResult result = Render({"in.wav", output}, space);
            EXPECT_EQ(result.exitCode, 1);
            EXPECT_THAT(result.err, HasSubstr("': File too large.\n"));
            ExpectNothingTouched();
        }
    }
    // With the last bytes: two seconds of two channels, four bytes a sample, without a header.
    EXPECT_EQ(Render({"in.wav", "out.wav", "--tail=0"}, 2 * 44100 * 2 * 4).exitCode, 1);
    ExpectNothingTouched();
}

TEST_F(RenderFailures, LeaveNoOutputAfterAnInterrupt) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t process = Start({"in.wav", "out.wav", "--tail=86400"});
        for (int i = 0; i < 10000 && Names().size() == 2; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        kill(process, signal);
        const RenderResult result = Finish(process);
        EXPECT_EQ(result.signal, signal);
        EXPECT_EQ(result.out, "");
        ExpectNothingTouched();
    }
}

TEST_F(RenderFailures, LeaveNoOutputWhereTheInputIsDamaged) {
    SoundData sound = Tones(2, 2);
    sound.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    WriteSound("in.wav", sound);
    std::filesystem::resize_file(folder / "in.wav", Bytes("in.wav").size() / 2);
    EXPECT_EQ(Render({"in.wav", "out.wav"}).exitCode, 1);
    ExpectNothingTouched();
}
