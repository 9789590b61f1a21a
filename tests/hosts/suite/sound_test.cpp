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

using Settings = ReferenceBandSettings;
using Kind = ReferenceBands::Kind;

constexpr int kEffectDelay = 9;  // of the dry sound of a new instance in stereo

const ReferenceBands kSounds[] = {
    {48000, {1000}, Kind::Analog, 0, kEffectDelay},
    {44100, {200, 2000}, Kind::Analog, 1, kEffectDelay},
    {96000, {3000, 300, 5000}, Kind::Analog, 2, kEffectDelay},  // limits as they are
    {48000, {100, 500, 2000, 8000}, Kind::Analog, 4, kEffectDelay},
    {44100, {100, 300, 1000, 3000, 8000}, Kind::Analog, 5, kEffectDelay},
    {96000, {900}, Kind::Linear, 1, kEffectDelay},
    {48000, {200, 900, 4000}, Kind::Hybrid, 1, kEffectDelay},
};

std::string Attribute(const std::string& key, auto value) {
    std::ostringstream text;
    text.precision(12);
    text << std::fixed << key << "=\"" << value << "\" ";
    return text.str();
}

std::string StateFor(const ReferenceBands& sound, const Settings& settings) {
    const std::size_t bands = sound.limits.size() + 1;
    std::string mute, bypass, text;
    for (std::size_t b = 0; b < bands; ++b) {
        mute += settings.bands[b].mute ? '1' : '0';
        bypass += settings.bands[b].bypass ? '1' : '0';
        text += Attribute("Gain" + std::to_string(b), settings.bands[b].gain) +
                Attribute("Pan" + std::to_string(b), settings.bands[b].pan);
        if (b > 0)
            text += Attribute("Limit" + std::to_string(b - 1), std::log10(sound.limits[b - 1]));
    }
    return StateOf(text + Attribute("BandCount", bands) + Attribute("CrossoverMode", sound.mode) +
                       Attribute("LinearPhaseCrossover", sound.kind != Kind::Analog) +
                       Attribute("LinearPhaseCrossoverFixedQ", sound.kind == Kind::Hybrid) +
                       Attribute("Mute", mute) + Attribute("BandBypass", bypass) +
                       Attribute("InputGain", settings.inputGain) +
                       Attribute("OutputGain", settings.outputGain) +
                       Attribute("DryWet", settings.dryWet) + Attribute("DryWet0", settings.isDry) +
                       Attribute("DryWet100", settings.isWet) +
                       Attribute("DryWetAffectsInputGain", settings.mixMovesGain) +
                       Attribute("DryWetAffectsInputPan", settings.mixMovesPan) +
                       Attribute("MaxLFOBlockSize", 2048),  // automation moves within a block
                   "Depth=\"0\"");
}

std::vector<HostedChange> ChangesTo(const Settings& settings) {
    std::vector<HostedChange> changes = {{IDOf("Dry/wet"), 0, settings.dryWet},
                                         {IDOf("Input gain"), 0, (settings.inputGain + 24) / 48},
                                         {IDOf("Output gain"), 0, (settings.outputGain + 24) / 48}};
    for (int b = 0; b < 6; ++b) {
        const std::string number = std::to_string(b + 1);
        changes.push_back({IDOf("Band gain " + number), 0, (settings.bands[b].gain + 24) / 48});
        changes.push_back({IDOf("Band panorama " + number), 0, (settings.bands[b].pan + 1) / 2});
    }
    return changes;
}

// A chorus that lets only the dry sound through. What no parameter moves stays as at the start.
Settings Drawn(std::minstd_rand& draw, int choice, const Settings* start = nullptr) {
    Settings settings = Settings::Drawn(draw, choice);
    for (int b = 0; b < 6; ++b) {
        Settings::Band& band = settings.bands[b];
        band.effectGain = 1;
        if (start == nullptr) continue;
        band.mute = start->bands[b].mute;
        band.bypass = start->bands[b].bypass;
    }
    return settings;
}

}  // namespace

TEST_P(Sound, IsThatOfTheSlowVersion) {
    std::minstd_rand draw;
    for (const ReferenceBands& sound : kSounds) {
        const int late = sound.kind == Kind::Analog ? 0 : 3072;
        for (int choice = 0; choice < 5; ++choice) {
            if (late > 0 && choice % 2 == 1) continue;  // the slow version is really slow there
            SCOPED_TRACE(testing::Message() << &sound - kSounds << " " << choice);
            const Settings start = Drawn(draw, choice);
            const std::vector<ReferenceBands::Block> blocks = {{late + 100, start},
                                                               {700, Drawn(draw, choice, &start)},
                                                               {500, Drawn(draw, choice, &start)}};
            const Audio input = Noise(2, late + 1300, 0.25f);
            BuiltPlugin plugin(GetParam(), StateFor(sound, start), sound.sampleRate);
            std::size_t b = 0;
            const auto move = [&](HostedBlock& block, int) {
                if (b > 0) block.changes = ChangesTo(blocks[b].settings);
                ++b;
            };
            // Samples are rounded at six places on their way, at levels of up to 2; VST 2 tells
            // positions in 32 bits.
            EXPECT_LT(LargestDifference(plugin.Run(input, {late + 100, 700, 500}, move),
                                        sound.Run(input, blocks)),
                      4e-6);
        }
    }
}
