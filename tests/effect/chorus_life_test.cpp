// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

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

}  // namespace

// Stored state and host automation rest on places, identifiers and ranges.
TEST(ChorusParameters, KeepTheirPlacesAndTheirFlags) {
    ChorusDriver engine((Settings(2, 48000, false)));
    ASSERT_EQ(engine.host->descriptor->parameterCount, P::kCount);
    for (int p = 0; p < P::kCount; ++p) {
        const ReferenceParameter& expected = P::Parameters()[static_cast<std::size_t>(p)];
        const ParameterRecord& record = engine.Record(p);
        const std::string flags = expected.flags;
        const auto has = [&](char flag) { return flags.find(flag) != std::string::npos; };
        EXPECT_EQ(record.name.ToUtf8(), expected.name);
        EXPECT_EQ(record.identifier.ToUtf8(), expected.identifier);
        EXPECT_NEAR(record.min, expected.min, 1e-12) << expected.name;
        EXPECT_NEAR(record.max, expected.max, 1e-12) << expected.name;
        EXPECT_NEAR(record.defaultValue, expected.defaultValue, 1e-12) << expected.name;
        EXPECT_EQ(static_cast<int>(record.law), expected.law) << expected.name;
        EXPECT_EQ(record.Has(ParameterFlag::kUpdates), has('u')) << expected.name;
        EXPECT_EQ(record.Has(ParameterFlag::kRandomizes), has('r')) << expected.name;
        EXPECT_EQ(record.Has(ParameterFlag::kSmoothed), has('s')) << expected.name;
        EXPECT_EQ(record.Has(ParameterFlag::kMain), has('m')) << expected.name;
        EXPECT_EQ(record.Has(ParameterFlag::kGroupBits), p == 9) << expected.name;
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
                                 ++*static_cast<int*>(host.owner);
                                 return std::intptr_t{0};
                             });
    const struct {
        int index;
        double value;
        bool enabled;
        int told;
    } rows[] = {{P::kRate, 0, true, 0},    {P::kSync, 1, false, 1}, {P::kSync, 1, false, 1},
                {P::kVoices, 3, false, 1}, {P::kSync, 0, true, 2},  {P::kSpread, 0, true, 2}};
    for (const auto& row : rows) {
        engine.Set(row.index, row.value);
        EXPECT_EQ(engine.Record(P::kRate).Has(ParameterFlag::kEnabled), row.enabled);
        EXPECT_EQ(told, row.told);
    }
}

TEST(Chorus, RaisesWhenItsLockIsRefused) {
    ChorusDriver engine(Settings(2, 48000, false));
    RefusingLock refusing;
    engine.host->descriptor->lock = &refusing;
    for (int code :
         {PluginCommand::kParameterChanged, PluginCommand::kProcess, PluginCommand::kReset}) {
        try {
            const Audio input = Silence(2, 8);
            Audio output = input;
            if (code == PluginCommand::kProcess)
                engine.Process(ReadPointers(input).data(), WritePointers(output).data(), 8);
            else
                engine.Send(code, -1);
            ADD_FAILURE() << "nothing was raised by " << code;
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
    for (int channels : {1, 2, 8}) {
        for (bool highQuality : {false, true}) {
            ChorusDriver engine(
                Settings(channels, 192000, highQuality, {{P::kVoices, 10}, {P::kSync, 1}}));
            Audio audio = Noise(channels, 700, 0.5f);
            const std::vector<const float*> inputs = ReadPointers(audio);
            const std::vector<float*> outputs = WritePointers(audio);
            engine.Process(inputs.data(), outputs.data(), 700);
            AllocationTrap trap("Process or Update");
            for (int mode : {0, 6, 2, 5, 1, 4, 6, 3, 0}) {
                engine.Set(P::kSpreadMode, mode);
                engine.Set(P::kVoices, 1 + mode);
                engine.Set(P::kDryWet, 0.2 * mode);
                engine.Set(P::kVoiceTremolo, 0.1 * mode);
                engine.Set(P::kSaturation, 0.1 * mode);
                engine.Set(P::kMinFrequency, 1.4 + 0.1 * mode);
                for (int count : {1, 63, 700})
                    engine.Process(inputs.data(), outputs.data(), count, {120, 1.0 * mode});
            }
        }
    }
}

TEST(Chorus, RandomisesItselfButNotItsFilters) {
    ChorusDriver engine(Settings(2, 48000, false, {{P::kMinFrequency, 2}}));
    engine.Send(PluginCommand::kRandomize, 1.0);
    EXPECT_EQ(engine.Record(P::kMinFrequency).Get(), 2);
    EXPECT_NE(engine.Record(P::kRange).Get(), 0.01);
    // Randomising has run Update: a second one changes nothing of the sound.
    const Audio input = Programme(2, 2000, 0.5f);
    ReferenceSettings now = Settings(2, 48000, false);
    for (int p = 0; p < P::kCount; ++p) now[p] = engine.Record(p).Get();
    ChorusDriver fresh(now);
    engine.Rendered(Silence(2, 1), 1);
    fresh.Rendered(Silence(2, 1), 1);
    EXPECT_LT(LargestDifference(engine.Rendered(input), fresh.Rendered(input)), 1e-6);
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
            const ReferenceParameter& range = P::Parameters()[static_cast<std::size_t>(index)];
            double value = range.min + (range.max - range.min) * (seed >> 24) / 255;
            if (engine.Record(index).type != ParameterType::Float) value = std::round(value);
            engine.Set(index, value);
            if (round % 16 == 1) engine.host->plugin->RequestUpdate();
            if (round % 16 == 5) engine.Send(PluginCommand::kRandomize, 0.5);
            if (round % 16 == 9) engine.Send(PluginCommand::kRandomize, 1.0);
            if (round % 16 == 13) engine.Send(PluginCommand::kReset, -1);
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

TEST(Chorus, IsDeletedOnlyAfterARunningBlock) {
    auto engine = std::make_unique<ChorusDriver>(Settings(2, 48000, false));
    std::atomic<bool> held = false, over = false, deletedEarly = false;
    std::thread audio([&] {  // stands for Process, which holds the lock for a whole block
        MLocker running(engine->lock);
        held = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        over = true;
    });
    while (!held) std::this_thread::yield();
    engine->host.reset();
    deletedEarly = !over;
    audio.join();
    EXPECT_FALSE(deletedEarly);
}
