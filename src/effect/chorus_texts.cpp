// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect/chorus_texts.h"

#include <algorithm>
#include <cmath>

#include "parameters/values/number_text.h"
#include "parameters/values/scale_texts.h"

namespace {

using P = ChorusParameter;

// Above the middle of its range the dry part fades away while the wet one stays whole.
MString DryWetText(double dryWet) {
    NumberText out;
    out.PutRounded(RoundHalfUp(100 * std::min(dryWet, 1.0))).Put("% wet, ");
    return out.PutRounded(RoundHalfUp(100 * std::min(1.0, 2 - std::abs(dryWet))))
        .Put("% dry")
        .Take();
}

constexpr ParameterText kPlain = {};
constexpr ParameterText kDryWet = {DryWetText, ReadPercents};
constexpr ParameterText kLogFrequency = {LogFrequencyText, ReadLogFrequency};
constexpr ParameterText kTime = {TimeText, ReadTime};
constexpr ParameterText kPercents = {PercentText, ReadPercents};
constexpr ParameterText kDegrees = {DegreesText, ReadDegrees};

struct Row {
    P parameter;
    ParameterText text;
    const char* help;
};

constexpr Row kRows[] = {
    {P::DryWet, kDryWet,
     "<name>Dry/wet</name> defines how powerful the effect is. Note that it also affects the "
     "amount of dry signal."},
    {P::Rate, kLogFrequency,
     "<name>Rate</name> defines speed of the chorus low frequency oscillator."},
    {P::Range, kTime, "<name>Range</name> defines  frequency delay line size."},
    {P::Delay, kTime, "<name>Delay</name> defines chorus voice predelay."},
    {P::Voices, kPlain, "<name>Voices</name> determines number of voices to generate."},
    {P::Saturation, kPercents,
     "<name>Saturation</name> defines amount of saturation applied on the chorus signal."},
    {P::Spread, kPercents, "<name>Spread</name> defines amount of panorama-based stereo-spread."},
    {P::SpreadMode, kPlain,
     "<name>Spread mode</name> defines the way chorus voices are used to provide stereizing "
     "effect. Default <value>panorama mode</value> pans each voice into the stereo somewhere. "
     "<value>Phase mode</value> moves each voice channel in time. <value>Haas modes</value> "
     "move provide combination of both, based on well known haas-delays, which is considered "
     "more natural for moving audio in stereo.Note that panorama and haas modes are effectively "
     "used only for stereo outputs (not surround)."},
    {P::DepthVariability, kPercents,
     "<name>Depth variability</name> determines how the depth is varying between voices. The "
     "more nonzero the value is, the more chaotic and analog the sound is."},
    {P::RateVariability, kPercents,
     "<name>Rate variability</name> determines how the rate is varying between voices. The more "
     "nonzero the value is, the more chaotic and analog the sound is."},
    {P::RangeVariability, kPercents,
     "<name>Range variability</name> determines how the range is varying between voices. The "
     "more nonzero the value is, the more chaotic and analog the sound is."},
    {P::DelayVariability, kPercents,
     "<name>Delay variability</name> determines how the delay is varying between voices. The "
     "more nonzero the value is, the more chaotic and analog the sound is."},
    {P::MinFrequency, kLogFrequency,
     "<name>Min frequency</name> defines minimal chorus signal frequency."},
    {P::MaxFrequency, kLogFrequency,
     "<name>Max frequency</name> defines maximal chorus signal frequency."},
    {P::Tremolo, kPercents,
     "<name>Tremolo</name> defines how powerful additional tremolo effect is. It affects which "
     "part of the chorus signal is passed."},
    {P::VoiceTremolo, kPercents,
     "<name>Voice tremolo</name> defines how powerful additional tremolo effect is. It affects "
     "single voices as opposed to normal tremolo."},
    {P::TremoloPhase, kDegrees,
     "<name>Tremolo phase</name> defines phase offset of the tremolo generator to the chorus "
     "shape generator."},
};

}  // namespace

void DescribeTexts(ChorusParameters& parameters) {
    for (const Row& row : kRows) {
        parameters[row.parameter].text = row.text;
        parameters[row.parameter].help = row.help;
    }
}
