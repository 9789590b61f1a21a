// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <functional>
#include <random>
#include <thread>
#include <tuple>

#include "effect/chorus_driver.h"
#include "effect/fennir_audio_effect_plugin.h"
#include "foundation/text/exception.h"
#include "foundation/xml/attribute.h"
#include "support/allocation_trap.h"

// The chorus as an effect among others: its answers, its commands, its threads.

namespace {

using P = ReferenceSettings;

struct TestLock : MLock {
    int Acquire(std::uint32_t timeout) override {
        if (refuses) return 1;
        const int answer = MLock::Acquire(timeout);
        held = true;
        return answer;
    }
    bool refuses = false;
    std::atomic<bool> held = false;
};

}  // namespace

TEST(ChorusDriver, SeesWhatTakesMemory) {
    AllocationTrap trap("The trap's own check");
    delete new volatile int(1);
    EXPECT_GE(trap.Calls(), 2) << "the trap is blind";
    trap.Forgive();
}

// Blocks of memory after one preparation after the other.
std::int64_t BlocksAfter(std::initializer_list<int> channelCounts) {
    FennirAudioEffectPlugin effect;
    const AllocationLimit limit(1000);
    for (const int channels : channelCounts) {
        effect.Prepare(channels, 48000);
        effect.Update();
    }
    return limit.Kept();
}

TEST(Chorus, OwnsNothingForChannelsThatAreNotInUse) {
    if (!AllocationLimit::IsSupported()) GTEST_SKIP();
    EXPECT_EQ(BlocksAfter({8, 2}), BlocksAfter({2}));
    EXPECT_EQ(BlocksAfter({1}), 2) << "a line and the dry signal's";
    EXPECT_EQ(BlocksAfter({8, 0}), 0);
}

TEST(Chorus, TellsLatencyTailAndSilence) {
    ChorusDriver engine({2, 48000, true});
    // Dry line, twice the longest way and 39 taps, and a reserve.
    EXPECT_EQ(engine.Send(PluginCommand::kGetTailLength), 18 + 2 * (4800 + 24000 + 32) + 39 + 2048);
    EXPECT_EQ(engine.Send(PluginCommand::kGetLatency), 18);

    engine.Prepare({2, 1000, false});
    constexpr int kLine = 2 * (100 + 500 + 32) + 5;
    EXPECT_EQ(engine.Send(PluginCommand::kGetLatency), 0);
    EXPECT_EQ(engine.Send(PluginCommand::kGetTailLength), 1 + kLine + 2048);
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 1);
    Audio impulse = Silence(2, kLine);
    impulse[1][0] = 1e-19f;
    engine.Rendered(impulse);
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 0);
    engine.Rendered(Silence(2, 1));
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 1);
    engine.Rendered(Constant(2, 1, std::nanf("")));
    EXPECT_EQ(engine.Send(PluginCommand::kIsSilent), 0);
}

// A Haas line, filters and the dry line of the sinc read hold sound too.
TEST(Chorus, IsSilentOnceCleared) {
    ChorusDriver engine(Settings(2, 8000, true, {{P::kSpreadMode, 6}, {P::kMinFrequency, 2.5}}));
    EXPECT_GT(Peak(engine.Rendered(Noise(2, 5000, 0.5f))), 0.1);
    engine.host->Effect()->Clear();
    EXPECT_EQ(Peak(engine.Rendered(Silence(2, 9000))), 0);
}

TEST(Chorus, TellsItsHostWhenRateStopsCounting) {
    ChorusDriver engine({});
    int told = 0;
    engine.host->owner = &told;
    engine.host->SetCallback(MAudioEffectPluginHost::Callback::OnStateChanged,
                             [](MAudioEffectPluginHost& host, PluginArguments&) {
                                 return std::intptr_t{++*static_cast<int*>(host.owner)};
                             });
    for (const auto& [index, value, enabled, count] : {std::tuple(P::kRate, 0, true, 0),
                                                       {P::kSync, 1, false, 1},
                                                       {P::kVoices, 3, false, 1},
                                                       {P::kSync, 0, true, 2},
                                                       {P::kSpread, 0, true, 2}}) {
        engine.Set(index, value);
        EXPECT_EQ(engine.Record(P::kRate).Has(ParameterFlag::kEnabled), enabled);
        EXPECT_EQ(told, count);
    }
}

TEST(Chorus, SoundsTheSameFromItsTree) {
    ChorusDriver from({}), to({});
    for (int p = 0; p < P::kCount; ++p) from.Record(p).Set(from.Record(p).max * 0.7);
    from.Send(PluginCommand::kParameterChanged, -1);
    MAttribute tree;
    EXPECT_EQ(from.Send(PluginCommand::kStore, &tree), 0);
    EXPECT_EQ(to.Send(PluginCommand::kLoad, &tree), 0);
    EXPECT_FALSE(to.Record(P::kRate).Has(ParameterFlag::kEnabled)) << "the lock holds at once";
    EXPECT_EQ(from.Rendered(Noise(2, 999, 0.5f)), to.Rendered(Noise(2, 999, 0.5f)));
    EXPECT_EQ(to.Send(PluginCommand::kLoad, static_cast<MAttribute*>(nullptr)), -1);
}

TEST(Chorus, RaisesWhenItsLockIsRefused) {
    ChorusDriver engine({});
    TestLock lock;
    lock.refuses = true;
    engine.host->descriptor->lock = &lock;
    MAudioEffectPlugin& effect = *engine.host->Effect();
    for (const std::function<void()>& command :
         {std::function<void()>([&] { effect.Update(); }),
          {[&] { effect.Reset(nullptr); }},
          {[&] { effect.Clear(); }},
          {[&] { effect.Load(nullptr); }},
          {[&] { effect.Process({}, nullptr, nullptr, 8); }}})
        EXPECT_THAT(command, testing::ThrowsMessage<MException>("Could not acquire mutex."));
    engine.host->descriptor->lock = nullptr;  // an effect that stands alone
    EXPECT_GT(Peak(engine.Rendered(Noise(2, 100, 0.5f))), 0.1);
}

// Everything that may come on another thread while blocks run, changes of quality included. The
// outputs stay numbers; the thread sanitizer and the address sanitizer see the rest.
TEST(Chorus, SurvivesChangesOnAnotherThread) {
    ChorusDriver engine({2, 44100, false});
    std::atomic<bool> done = false;
    std::thread editor([&] {
        std::minstd_rand generator;
        for (int round = 0; !done; ++round) {
            const int index = static_cast<int>(generator() % P::kCount);
            engine.Set(index, engine.Record(index).ValueAt(generator() % 256 / 255.0));
            if (round % 16 == 1) engine.host->plugin->RequestUpdate();
            if (round % 16 == 5) engine.Send(PluginCommand::kRandomize, round % 32 == 5 ? 0.5 : 1);
            if (round % 16 == 9) engine.Send(PluginCommand::kReset);
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
    ChorusDriver engine({1, 48000, true});
    TestLock lock;
    engine.host->descriptor->lock = &lock;
    const Audio input = Noise(1, 480000, 0.5f);
    Audio output = Constant(1, 480000, 99);
    std::thread audio([&, effect = engine.host->Effect()] {
        effect->Process({}, ReadPointers(input).data(), WritePointers(output).data(), 480000);
    });
    while (!lock.held) std::this_thread::yield();
    engine.host.reset();
    EXPECT_NE(output[0].back(), 99);
    audio.join();
}
