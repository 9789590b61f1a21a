// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_parameters.h"

#include "effect/chorus_texts.h"
#include "effect/host_sync.h"

namespace {

using P = ChorusParameter;
namespace Flag = ParameterFlag;

constexpr double kLog20Hz = 1.3010299956639813;
constexpr double kLog20kHz = 4.301029995663981;

}  // namespace

ChorusParameters::ChorusParameters(MAudioPluginHostSync& hostSync) {
    DescribeMain();
    DescribeAdvanced();
    DescribeTexts(*this);
    hostSync.Describe(&(*this)[P::SyncGroup]);

    for (const P p : {P::DryWet, P::Rate, P::Range, P::Delay, P::Voices, P::Saturation, P::Spread})
        (*this)[p].Raise(Flag::kMain);
    for (const P p : {P::Rate, P::Range, P::Delay, P::RateVariability, P::RangeVariability,
                      P::DelayVariability, P::MinFrequency, P::MaxFrequency})
        (*this)[p].Raise(Flag::kSmoothed);
    // Process ramps these within a block by itself.
    for (const P p : {P::DryWet, P::Tremolo, P::VoiceTremolo, P::TremoloPhase})
        (*this)[p].Clear(Flag::kUpdates);
    for (const P p : {P::MinFrequency, P::MaxFrequency}) (*this)[p].Clear(Flag::kRandomizes);
    for (const P p : {P::Range, P::Delay}) (*this)[p].law = PositionLaw::FourthPower;
    (*this)[P::AdvancedGroup].Raise(Flag::kGroupBits);
}

void ChorusParameters::DescribeMain() {
    (*this)[P::MainGroup].SetGroup("Main parameters", "");
    (*this)[P::DryWet].SetFloat("Dry/wet", "Depth", 0, 2, 1);
    (*this)[P::Rate].SetFloat("Rate", "Rate", -2, kLog20Hz, -1);
    (*this)[P::Range].SetFloat("Range", "Range", 0.0001, 0.1, 0.01);
    (*this)[P::Delay].SetFloat("Delay", "Delay", 0, 0.5, 0.005);
    (*this)[P::Voices].SetInteger("Voices", "Voices", 1, kMaxVoices, 2);
    (*this)[P::Saturation].SetFloat("Saturation", "Saturation", 0, 1, 0.1);
    (*this)[P::Spread].SetFloat("Spread", "Spread", 0, 1, 1);
    (*this)[P::SpreadMode].SetEnumeration("Spread mode", "spreadmode",
                                          {"Panorama", "Phase", "Haas (2 ms)", "Haas (4 ms)",
                                           "Haas (8 ms)", "Haas (16 ms)", "Haas (32 ms)"},
                                          0);
}

void ChorusParameters::DescribeAdvanced() {
    (*this)[P::AdvancedGroup].SetGroup("Advanced parameters", "");
    (*this)[P::DepthVariability].SetFloat("Depth variability", "DepthVariability", -1, 1, 0);
    (*this)[P::RateVariability].SetFloat("Rate variability", "RateVariability", -1, 1, 0.5);
    (*this)[P::RangeVariability].SetFloat("Range variability", "RangeVariability", -1, 1, 0);
    (*this)[P::DelayVariability].SetFloat("Delay variability", "DelayVariability", -1, 1, 0);
    (*this)[P::MinFrequency].SetFloat("Min frequency", "MinFreq", kLog20Hz, kLog20kHz, kLog20Hz);
    (*this)[P::MaxFrequency].SetFloat("Max frequency", "MaxFreq", kLog20Hz, kLog20kHz, kLog20kHz);
    (*this)[P::Tremolo].SetFloat("Tremolo", "Tremolo", -1, 1, 0);
    (*this)[P::VoiceTremolo].SetFloat("Voice tremolo", "VoiceTremolo", -1, 1, 0);
    (*this)[P::TremoloPhase].SetFloat("Tremolo phase", "TremoloPhase", 0, 1, 0);
}
