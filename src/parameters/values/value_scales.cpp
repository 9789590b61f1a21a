// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_scales.h"

#include <cmath>

namespace {

// The steps that suit a scale, unless a hundredth of the range is finer.
template <typename Value>
void SetSteps(Value& value, double inc, double maxinc) {
    const double hundredth = (value.max - value.min) * 0.01;
    value.inc = hundredth < inc ? hundredth : inc;
    value.maxinc = hundredth < inc ? hundredth * 10 : maxinc;
}

}  // namespace

MValueFrequency::MValueFrequency(const MValueRef& source, double value, double min, double max)
    : MValueDoubleFine(source, value, min, max) {
    SetSteps(*this, 1, 100);
    UpdateBounds();
}

void MValueFrequency::LoadXmlAttributes(MAttribute& item) {
    MValueDoubleFine::LoadXmlAttributes(item);
    UpdateBounds();
}

double MValueFrequency::PositionOf(double number) const {
    if (max == min) return 1;
    return (std::log10(number) - logMin) / (logMax - logMin);
}

double MValueFrequency::NumberAt(double position) const {
    return std::pow(10, (logMax - logMin) * position + logMin);
}

void MValueFrequency::UpdateBounds() {
    logMin = std::log10(min);
    logMax = std::log10(max);
}

MValueVolume::MValueVolume(const MValueRef& source, double value, double min, double max)
    : MValueDouble(source, value, min, max) {
    SetSteps(*this, 0.0004f, 0.1f);
}

MValuePan::MValuePan(const MValueRef& source, double value, double min, double max)
    : MValueDouble(source, value, min, max) {
    SetSteps(*this, 0.01f, 0.1f);
}

MValuePitch::MValuePitch(const MValueRef& source, double value, double min, double max)
    : MValueDouble(source, value, min, max) {
    SetSteps(*this, 0.1, 1);
    format = "{0;+.02}";
}

MValueTimeMS::MValueTimeMS(const MValueRef& source, double value, double min, double max)
    : MValueDouble(source, value, min, max) {
    inc = 0.001f;
    maxinc = 0.01f;
}

MValueStepDouble::MValueStepDouble(const MValueRef& source, double value, double min, double max,
                                   double step)
    : MValueDouble(source, value, min, max) {
    SetStep(step);
    MValueStepDouble::Limit();
}

void MValueStepDouble::LoadXmlAttributes(MAttribute& item) {
    MValueDouble::LoadXmlAttributes(item);
    if (!item.HasAttribute("step")) return;
    if (const std::optional<double> number = ReadNumber(item.GetCachedAttribute()))
        SetStep(*number);
}

double MValueStepDouble::Limited(double number) const {
    const double stepped = step > 0 ? RoundHalfUp(number * stepInverse) * step : number;
    return MValueDouble::Limited(stepped);
}

void MValueStepDouble::SetStep(double newStep) {
    step = newStep;
    stepInverse = 1 / newStep;
}
