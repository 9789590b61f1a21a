// SPDX-License-Identifier: GPL-3.0-or-later

// The sound of the bands against the slow version of them.

#include <cmath>
#include <random>
#include <sstream>

#include "hosts/suite/built_plugin.h"
#include "support/reference_bands.h"

namespace {

using Sound = Suite;
FOR_BOTH_INTERFACES(Sound);

using Reference = ReferenceBands;

const Reference kSounds[] = {
    {{1000}, Reference::Analog, 0},
    {{200, 2000}, Reference::Analog, 1, 44100},
    {{3000, 300, 5000}, Reference::Analog, 2, 96000},  // taken as they are
    {{100, 500, 2000, 8000}, Reference::Analog, 4},
    {{100, 300, 1000, 3000, 8000}, Reference::Analog, 5, 44100},
    {{900}, Reference::Linear, 1, 96000},
    {{200, 900, 4000}, Reference::Hybrid},
};

// What no parameter moves. The effects are to let the dry sound through.
std::string StateFor(const Reference& sound, const Reference::Block& block) {
    const std::size_t bands = sound.limits.size() + 1;
    std::ostringstream text;
    text.precision(15);
    const auto add = [&](const auto& key, auto value) { text << key << "=\"" << value << "\" "; };
    std::string mute, bypass;
    for (std::size_t b = 0; b < bands; ++b) {
        mute += block.mute[b] ? '1' : '0';
        bypass += block.bypass[b] ? '1' : '0';
        if (b > 0) add("Limit" + std::to_string(b - 1), std::log10(sound.limits[b - 1]));
    }
    add("BandCount", bands);
    add("Mute", mute);
    add("BandBypass", bypass);
    add("CrossoverMode", sound.mode);
    add("LinearPhaseCrossover", sound.kind != Reference::Analog);
    add("LinearPhaseCrossoverFixedQ", sound.kind == Reference::Hybrid);
    add("DryWet0", sound.choice == Reference::Dry);
    add("DryWet100", sound.choice == Reference::Wet);
    add("DryWetAffectsInputGain", sound.choice != Reference::NotGain);
    add("DryWetAffectsInputPan", sound.choice != Reference::NotPan);
    add("MaxLFOBlockSize", 2048);  // parameters move in one ramp over a block
    return StateOf(text.str(), "Depth=\"0\"");
}

Reference::Block Drawn(int sampleCount, std::minstd_rand& draw) {
    const auto between = [&](double low, double high) {
        return low + (high - low) * (draw() % 10001) / 10000;
    };
    Reference::Block block{sampleCount, between(-6, 6), between(-6, 6), between(0, 1), {}, {}, {},
                           {}};
    for (int b = 0; b < 6; ++b) {
        block.gain[b] = between(-9, 9);
        block.pan[b] = between(-1, 1);
        block.mute[b] = b % 3 == 2;
        block.bypass[b] = b % 4 == 3;
    }
    return block;
}

std::vector<HostedChange> ChangesTo(const Reference::Block& block) {
    const auto ofGain = [](double decibels) { return (decibels + 24) / 48; };
    std::vector<HostedChange> changes = {{IDOf("Dry/wet"), 0, block.dryWet},
                                         {IDOf("Input gain"), 0, ofGain(block.input)},
                                         {IDOf("Output gain"), 0, ofGain(block.output)}};
    for (int b = 0; b < 6; ++b) {
        const std::string number = std::to_string(b + 1);
        changes.push_back({IDOf("Band gain " + number), 0, ofGain(block.gain[b])});
        changes.push_back({IDOf("Band panorama " + number), 0, (block.pan[b] + 1) / 2});
    }
    return changes;
}

}  // namespace

TEST_P(Sound, IsThatOfTheSlowVersion) {
    std::minstd_rand draw;
    for (Reference sound : kSounds) {
        const int late = sound.kind == Reference::Analog ? 0 : 3072;
        sound.effectDelay = 9;  // of the dry sound of a new instance in stereo
        std::fill_n(sound.level, 6, 1.0);
        for (int choice = 0; choice < 5; ++choice) {
            if (late > 0 && choice % 2 == 1) continue;  // the slow version is really slow there
            SCOPED_TRACE(testing::Message() << sound.limits.size() << " " << choice);
            sound.choice = static_cast<Reference::Choice>(choice);
            std::vector<Reference::Block> blocks;
            for (const int count : {late + 100, 700, 500}) blocks.push_back(Drawn(count, draw));
            BuiltPlugin plugin(GetParam(), StateFor(sound, blocks[0]), sound.sampleRate);
            plugin.Flush(ChangesTo(blocks[0]));
            plugin->Activate(false);
            plugin->Activate(true);
            std::size_t b = 0;
            const auto move = [&](HostedBlock& block, int) {
                block.changes = ChangesTo(blocks[b++]);
            };
            const Audio input = Noise(2, late + 1300, 0.25f);
            const Audio output = plugin.Run(input, {late + 100, 700, 500}, move);
            // Samples are rounded at six places on their way, at levels of up to 2; VST 2 tells
            // positions in 32 bits.
            EXPECT_LT(LargestDifference(output, sound.Run(input, blocks)), 4e-6);
        }
    }
}
