// SPDX-License-Identifier: GPL-3.0-or-later

// Audio on one thread while the host does on others whatever it may do there.

#include <atomic>
#include <thread>

#include "hosts/suite/built_plugin.h"

namespace {

using Threads = Suite;
FOR_BOTH_INTERFACES(Threads);

const std::string kTwoBands = StateOf("BandCount=\"2\"", "Voices=\"3\"");
const std::string kDryBands = StateOf("BandCount=\"2\"", "Depth=\"0\"");

// Blocks on a thread of their own until the object goes.
class AudioThread {
public:
    explicit AudioThread(BuiltPlugin& plugin)
        : thread([this, &plugin] {
              const Audio input = Noise(2, 512, 0.25f);
              for (int i = 0; !isDone; ++i) {
                  const Audio sound =
                      plugin.Run(input, {64 + i % 64}, [&](HostedBlock& block, int) {
                          block.changes.push_back(
                              {static_cast<std::uint32_t>(i) % ParameterCount(), 0, i % 11 / 10.0});
                      });
                  EXPECT_LT(Peak(sound), 1e6);  // of gains by chance
                  ++blocks;
              }
          }) {}
    ~AudioThread() {
        isDone = true;
        thread.join();
    }
    void WaitForBlocks(int more) const {
        for (const int end = blocks + more; blocks < end;) std::this_thread::yield();
    }

private:
    std::atomic<bool> isDone = false;
    std::atomic<int> blocks = 0;
    std::thread thread;
};

}  // namespace

TEST_P(Threads, MayAskForAndSetStatesAndParametersWhileAudioRuns) {
    BuiltPlugin plugin(GetParam(), kDryBands);
    const std::string whole = plugin->State();  // that one leaves out the limits
    const std::uint32_t count = ParameterCount();
    {
        const AudioThread audio(plugin);
        std::thread other([&] {
            for (int i = 0; i < 10; ++i) EXPECT_FALSE(plugin->State().empty());
        });
        for (int i = 0; i < 20; ++i) {
            audio.WaitForBlocks(1);
            if (i % 4 == 0) {
                EXPECT_TRUE(plugin->SetState(i % 8 == 0 ? StateOf("") : kTwoBands));
            }
            if (i % 5 == 0) plugin->SetState("<settings");
            for (std::uint32_t id = i % 3; id < count; id += 7) {
                plugin->SetPosition(id, i / 20.0);
                EXPECT_GE(plugin->Position(id), 0);
                plugin->TextAt(id, 0.5);
            }
            EXPECT_GE(plugin->Latency(), 0);
            EXPECT_GE(plugin->TailLength(), 0);
        }
        other.join();
    }
    plugin.Flush({});  // what the host still holds back
    plugin->SetState(whole);
    plugin->Activate(false);
    plugin->Activate(true);
    const Audio input = Noise(2, 3000, 0.25f);
    EXPECT_EQ(plugin.Run(input), BuiltPlugin(GetParam(), kDryBands).Run(input));
}

TEST_P(Threads, HaveAPluginEach) {
    const Audio input = Noise(2, 4000, 0.25f);
    const Audio expected = BuiltPlugin(GetParam(), kTwoBands).Run(input);
    const FreshLibrary fresh;  // whose first two instances are made at once
    const auto library = fresh.Open(GetParam());
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 5; ++i) {
                BuiltPlugin plugin(*library, kTwoBands);
                EXPECT_EQ(plugin.Run(input), expected);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}
