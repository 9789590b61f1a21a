// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>

#include "tools/render_folder.h"

using testing::HasSubstr;

namespace {

class RenderInterfaces : public RenderFolder {
protected:
    void SetUp() override {
        WriteSound("in.wav", Tones(0.2, 2));
        WriteSound("mono.wav", Tones(0.2, 1));
        WriteSound("wide.wav", Tones(0.2, 5));
    }

    SoundData With(Arguments arguments, const std::string& input = "in.wav") {
        arguments.insert(arguments.begin(), {input, "out.wav", "--tail=0"});
        return Rendered(arguments, "out.wav");
    }
};

}  // namespace

TEST_F(RenderInterfaces, SoundAlike) {
    const Arguments cases[] = {
        {"--set=Voices=7", "--quality=normal"},
        {"--channel-mode=Side", "--set=Depth=1.5"},
        {"--bypass"},
        {"--automate=Depth=0:0,0.1:1"},
        {"--tempo=100", "--position=330.25", "--set=sync=on", "--block=random"},
    };
    for (const Arguments& arguments : cases) {
        for (const char* input : {"in.wav", "mono.wav"}) {
            SCOPED_TRACE(testing::PrintToString(arguments) + input);
            Arguments other = arguments;
            other.push_back("--vst2");
            // Positions have 32 bits there.
            EXPECT_LT(LargestDifference(With(arguments, input), With(other, input)), 1e-5F);
        }
    }
    EXPECT_EQ(LargestDifference(With({}, "wide.wav"), With({"--vst2"}, "wide.wav")), 0);
}

TEST_F(RenderInterfaces, CarryStatesToEachOther) {
    const Arguments settings = {"--set=Voices=6",       "--channel-mode=Mid",
                                "--protection=extreme", "--bands=3",
                                "--crossover=hybrid",   "--set=Band limit 1=250 Hz"};
    Arguments storing = settings;
    storing.push_back("--state-out=state");
    const SoundData sound = With(storing);
    EXPECT_THAT(Bytes("state"), testing::AllOf(HasSubstr("<settings"), HasSubstr("Mono"),
                                               HasSubstr("MaxLFOBlockSize=\"1\"")));
    for (const char* interface : {"--bypass=false", "--vst2"})
        EXPECT_EQ(LargestDifference(sound, With({"--state-in=state", interface})), 0);
    // Without any sound to render, and through the other interface.
    EXPECT_EQ(Render({"--state-in=state", "--vst2", "--state-out=again"}).err, "");
    EXPECT_EQ(Bytes("again"), Bytes("state"));
}

TEST_F(RenderInterfaces, TellOfThePlugin) {
    for (const std::string interface : {"--bypass=false", "--vst2"}) {
        const std::string info = Render({"--info", interface}).out;
        for (const char* line : {"Name: +Quillorea\n", "Version: +0?.?1", "Latency: +18 samples\n",
                                 "Tail: +[0-9]+ samples\n", "main audio input, 2 channels\n"})
            EXPECT_THAT(info, testing::ContainsRegex(line)) << interface;
        EXPECT_THAT(Render({"--list-params", interface}).out,
                    testing::ContainsRegex("27 +27 +(Band 1|1Voices).* 0.111111 = 2\n"));
    }
}

TEST_F(RenderInterfaces, TakePositionsOfAPluginThatIsNotKnown) {
    const std::string other = std::string("--plugin=") + OTHER_PLUGIN;
    for (const char* interface : {"--bypass=false", "--vst2"}) {
        EXPECT_EQ(Render({"--list", other, interface}).out,
                  Render({"--list-params", other, interface}).out);
        // Its dry sound at position 0, without the product's -6 dB.
        EXPECT_EQ(LargestDifference(With({other, interface, "--quality=normal", "--param=1=0"}),
                                    ReadSound("in.wav")),
                  0);
    }
}
