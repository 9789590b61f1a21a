// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "effect/chorus_driver.h"
#include "foundation/text/exception.h"
#include "support/allocation_trap.h"

// The chorus as an effect among others: its list, its commands, its threads.

namespace {

using P = ReferenceSettings;

struct RefusingLock : MLock {
    int Acquire(std::uint32_t) override { return 1; }
    void Release() override { ADD_FAILURE() << "released without being held"; }
};

struct NotingLock : MLock {
    int Acquire(std::uint32_t timeout) override {
        const int answer = MLock::Acquire(timeout);
        held = true;
        return answer;
    }
    std::atomic<bool> held = false;
};

}  // namespace

// Stored state and host automation rest on places, identifiers and ranges.
TEST(ChorusParameters, KeepTheirPlacesAndTheirFlags) {
    ChorusDriver engine((Settings(2, 48000, false)));
    ASSERT_EQ(engine.host->descriptor->parameterCount, P::kCount);
    for (int p = 0; p < P::kCount; ++p) {
        const ReferenceParameter& expected = P::Parameters()[p];
        SCOPED_TRACE(expected.name);
        const ParameterRecord& record = engine.Record(p);
        EXPECT_EQ(record.name.ToUtf8(), expected.name);
        EXPECT_EQ(record.identifier.ToUtf8(), expected.identifier);
        EXPECT_NEAR(record.min, expected.min, 1e-12);
        EXPECT_NEAR(record.max, expected.max, 1e-12);
        EXPECT_NEAR(record.defaultValue, expected.defaultValue, 1e-12);
        EXPECT_EQ(static_cast<int>(record.law), expected.law);
        for (const auto& [letter, flag] : {std::pair('u', ParameterFlag::kUpdates),
                                           {'r', ParameterFlag::kRandomizes},
                                           {'s', ParameterFlag::kSmoothed},
                                           {'m', ParameterFlag::kMain}})
            EXPECT_EQ(record.Has(flag), expected.flags.find(letter) != std::string::npos) << letter;
        EXPECT_EQ(record.Has(ParameterFlag::kGroupBits), p == 9);
    }
    EXPECT_EQ(engine.Record(P::kSpreadMode).options.at(6).ToUtf8(), "Haas (32 ms)");
    EXPECT_EQ(engine.Record(P::kSyncLength).options.at(14).ToUtf8(), "1 / 128");
    EXPECT_EQ(engine.Record(P::kSyncType).options.at(2).ToUtf8(), "Dotted");
}

TEST(Chorus, TellsLatencyTailAndSilence) {
    ChorusDriver engine(Settings(2, 48000, true));
    // Dry line, twice the longest way and 39 taps, and a reserve.
    EXPECT_EQ(engine.Send(PluginCommand::kGetTailLength), 18 + 2 * (4800 + 24000 + 32) + 39 + 2048);
    EXPECT_EQ(engine.Send(PluginCommand::kGetLatency), 18);

    engine.Prepare(Settings(2, 1000, false));
    constexpr int kLine = 2 * (100 + 500 + 32) + 5;
    EXPECT_EQ(engine.Send(PluginCommand::kGetTailLength), 1 + kLine + 2048);
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 1);
    Audio impulse = Silence(2, kLine);
    impulse[1][0] = 1e-19f;
    engine.Rendered(impulse);
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 0);
    engine.Rendered(Silence(2, 1));
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 1);
}

TEST(Chorus, TellsItsHostWhenRateStopsCounting) {
    ChorusDriver engine(Settings(2, 48000, false));
    int told = 0;
    engine.host->owner = &told;
    engine.host->SetCallback(MAudioEffectPluginHost::Callback::OnStateChanged,
                             [](MAudioEffectPluginHost& host, PluginArguments&) {
                                 return std::intptr_t{++*static_cast<int*>(host.owner)};
                             });
    const std::tuple<Change, bool, int> rows[] = {
        {{P::kRate, 0}, true, 0},    {{P::kSync, 1}, false, 1}, {{P::kSync, 1}, false, 1},
        {{P::kVoices, 3}, false, 1}, {{P::kSync, 0}, true, 2},  {{P::kSpread, 0}, true, 2}};
    for (const auto& [change, enabled, count] : rows) {
        engine.Set(change.first, change.second);
        EXPECT_EQ(engine.Record(P::kRate).Has(ParameterFlag::kEnabled), enabled);
        EXPECT_EQ(told, count);
    }
}

TEST(Chorus, RaisesWhenItsLockIsRefused) {
    ChorusDriver engine(Settings(2, 48000, false));
    RefusingLock refusing;
    engine.host->descriptor->lock = &refusing;
    for (const auto& command : std::vector<std::function<void()>>{
             [&] { engine.Send(PluginCommand::kParameterChanged, -1); },
             [&] { engine.Send(PluginCommand::kReset); },
             [&] { engine.Rendered(Silence(2, 8)); }}) {
        try {
            command();
            ADD_FAILURE() << "nothing was raised";
        } catch (const MException& raised) {
            EXPECT_STREQ(raised.what(), "Could not acquire mutex.");
        }
    }
    engine.host->descriptor->lock = nullptr;  // an effect that stands alone
    EXPECT_GT(Peak(engine.Rendered(Noise(2, 100, 0.5f))), 0.1);
}

TEST(Chorus, AllocatesNothingAfterPrepare) {
    {
        AllocationTrap trap("The trap's own check");
        delete new volatile int(1);
        EXPECT_GE(trap.Calls(), 2) << "the trap is blind";
        trap.Forgive();
    }
    for (int choice = 0; choice < 6; ++choice) {
        const int channels = choice % 3 == 2 ? 8 : 1 + choice % 3;
        ChorusDriver engine(
            Settings(channels, 192000, choice >= 3, {{P::kVoices, 10}, {P::kSync, 1}}));
        Audio audio = Noise(channels, 700, 0.5f);
        const std::vector<const float*> inputs = ReadPointers(audio);
        const std::vector<float*> outputs = WritePointers(audio);
        AllocationTrap trap("Process or Update");
        engine.Process(inputs.data(), outputs.data(), 700);
        for (int mode : {0, 6, 2, 5, 1, 4, 6, 3, 0}) {
            engine.Set(P::kSpreadMode, mode);
            engine.Set(P::kVoices, 1 + mode);
            engine.Set(P::kMinFrequency, 1.4 + 0.1 * mode);
            for (int index : {P::kDryWet, P::kVoiceTremolo, P::kSaturation})
                engine.Set(index, 0.1 * mode);
            for (int count : {1, 63, 700})
                engine.Process(inputs.data(), outputs.data(), count, {120, 1.0 * mode});
        }
    }
}

// Everything that may come on another thread while blocks run, changes of quality included. The
// outputs stay numbers; the thread sanitizer and the address sanitizer see the rest.
TEST(Chorus, SurvivesChangesOnAnotherThread) {
    ChorusDriver engine(Settings(2, 44100, false));
    std::atomic<bool> done = false;
    std::thread editor([&] {
        std::uint32_t seed = 1;
        for (int round = 0; !done; ++round) {
            seed = seed * 1664525u + 1013904223u;
            const int index = static_cast<int>((seed >> 8) % P::kCount);
            const ReferenceParameter& range = P::Parameters()[index];
            double value = range.min + (range.max - range.min) * (seed >> 24) / 255;
            if (engine.Record(index).type != ParameterType::Float) value = std::round(value);
            engine.Set(index, value);
            switch (round % 16) {
                case 1:
                    engine.host->plugin->RequestUpdate();
                    break;
                case 5:
                    engine.Send(PluginCommand::kRandomize, round % 32 == 5 ? 0.5 : 1.0);
                    break;
                case 9:
                    engine.Send(PluginCommand::kReset);
                    break;
            }
            engine.highQuality = round / 64 % 2;
        }
    });
    const Audio input = Noise(2, 97, 0.5f);
    Audio output = input;
    for (int block = 0; block < 1500; ++block) {
        engine.host->plugin->UpdateIfNeeded();
        engine.Process(ReadPointers(input).data(), WritePointers(output).data(), 97,
                       {100, 0.1 * block});
        EXPECT_LT(Peak(output), 1e3) << block;
    }
    done = true;
    editor.join();
}

// A block of ten seconds: deleted too early, it would end in freed memory and without its last
// sample.
TEST(Chorus, IsDeletedOnlyAfterARunningBlock) {
    ChorusDriver engine(Settings(1, 48000, true));
    NotingLock lock;
    engine.host->descriptor->lock = &lock;
    const int sampleCount = 480000;
    const Audio input = Noise(1, sampleCount, 0.5f);
    Audio output = Constant(1, sampleCount, 99);
    std::atomic<bool> over = false;
    std::thread audio([&, effect = engine.host->plugin] {
        const TransportInfo transport;
        const std::vector<const float*> inputs = ReadPointers(input);
        const std::vector<float*> outputs = WritePointers(output);
        PluginArguments arguments(&transport, inputs.data(), outputs.data(), sampleCount);
        effect->Dispatch(PluginCommand::kProcess, arguments);
        over = true;
    });
    while (!lock.held && !over) std::this_thread::yield();
    EXPECT_TRUE(lock.held);
    engine.host.reset();
    EXPECT_NE(output[0].back(), 99);
    audio.join();
}
