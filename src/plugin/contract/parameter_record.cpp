// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/parameter_record.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/objects/random.h"

namespace {

double RoundHalfUp(double x) { return std::floor(x + 0.5); }

}  // namespace

void ParameterRecord::SetFloat(MString newName, MString newIdentifier, double newMin, double newMax,
                               double newDefault) {
    Describe(ParameterType::Float, std::move(newName), std::move(newIdentifier));
    SetRange(newMin, newMax, newDefault);
}

void ParameterRecord::SetInteger(MString newName, MString newIdentifier, int newMin, int newMax,
                                 int newDefault) {
    Describe(ParameterType::Integer, std::move(newName), std::move(newIdentifier));
    SetRange(newMin, newMax, newDefault);
}

void ParameterRecord::SetEnumeration(MString newName, MString newIdentifier,
                                     std::vector<MString> newOptions, int defaultIndex) {
    Describe(ParameterType::Enumeration, std::move(newName), std::move(newIdentifier));
    options = std::move(newOptions);
    SetRange(0, std::max(static_cast<double>(options.size()) - 1, 0.0), defaultIndex);
}

void ParameterRecord::SetBoolean(MString newName, MString newIdentifier, bool newDefault) {
    Describe(ParameterType::Boolean, std::move(newName), std::move(newIdentifier));
    SetRange(0, 1, newDefault ? 1 : 0);
}

void ParameterRecord::SetGroup(MString newName, MString newIdentifier,
                               std::atomic<std::uint8_t>* newOnOff) {
    Describe(ParameterType::Group, std::move(newName), std::move(newIdentifier));
    onOff = newOnOff;
    SetRange(0, HasSwitch() ? 1 : 0, 0);
}

double ParameterRecord::Get() const {
    if (type != ParameterType::Group) return value.load(kRelaxed);
    return HasSwitch() && onOff->load(kRelaxed) != 0 ? 1 : 0;
}

void ParameterRecord::Set(double newValue) {
    if (type != ParameterType::Group) {
        value.store(newValue, kRelaxed);
    } else if (HasSwitch()) {
        onOff->store(newValue >= 0.5 ? 1 : 0, kRelaxed);
    }
}

double ParameterRecord::InRange(double someValue) const {
    return std::isnan(someValue) ? defaultValue : std::clamp(someValue, min, max);
}

void ParameterRecord::SetEffective(double newValue) {
    if (Has(ParameterFlag::kSmoothing)) {
        target.store(newValue, kRelaxed);
    } else {
        Set(newValue);
    }
}

void ParameterRecord::SetSmoothing(bool on) {
    target.store(Get(), kRelaxed);
    on ? Raise(ParameterFlag::kSmoothing) : Clear(ParameterFlag::kSmoothing);
}

double ParameterRecord::PositionOf(double someValue) const {
    if (max == min) return 0;
    const double linear = (someValue - min) / (max - min);
    switch (law) {
        case PositionLaw::Square:
            return std::sqrt(std::max(linear, 0.0));
        case PositionLaw::FourthPower:
            return std::sqrt(std::sqrt(std::max(linear, 0.0)));
        default:
            return linear;
    }
}

double ParameterRecord::ValueAt(double position) const {
    double bent = position;
    if (law != PositionLaw::Linear) bent *= bent;
    if (law == PositionLaw::FourthPower) bent *= bent;
    return min + (max - min) * bent;
}

void ParameterRecord::Randomize(double amount, bool force) {
    if (std::isnan(amount) || (!force && !Has(ParameterFlag::kRandomizes))) return;
    switch (type) {
        case ParameterType::Float:
            SetEffective(RandomFloat(amount));
            stored.store(Effective(), kRelaxed);
            break;
        case ParameterType::Integer:
            SetEffective(RandomStep(amount, max - min));
            break;
        case ParameterType::Enumeration:
            SetEffective(RandomStep(amount, static_cast<double>(options.size())));
            break;
        case ParameterType::Boolean:
        case ParameterType::Group:
            RandomizeSwitch(amount);
            break;
        case ParameterType::None:
        case ParameterType::Hidden:
            break;
    }
}

void ParameterRecord::Describe(ParameterType newType, MString newName, MString newIdentifier) {
    type = newType;
    name = std::move(newName);
    identifier = std::move(newIdentifier);
}

void ParameterRecord::SetRange(double newMin, double newMax, double newDefault) {
    min = newMin;
    max = newMax;
    defaultValue = newDefault;
    Set(newDefault);
    target.store(newDefault, kRelaxed);
    stored.store(newDefault, kRelaxed);
}

double ParameterRecord::RandomFloat(double amount) const {
    const double r = RandomUnit();
    double result = 0;
    if (std::abs(amount - 1) < kSameParameter) {
        result = ValueAt(r);
    } else {
        result = ValueAt(std::clamp(PositionOf(Effective()) + r * 2 * amount - amount, 0.0, 1.0));
    }
    return Has(ParameterFlag::kRandomizesWhole) ? RoundHalfUp(result) : result;
}

// The whole-numbered types: from nothing across the whole range, or a step of up to span * amount.
double ParameterRecord::RandomStep(double amount, double span) const {
    const double r = RandomUnit();
    double result = 0;
    if (std::abs(amount - 1) >= kSameParameter) {
        const double reach = span * amount;
        result = Effective() + RoundHalfUp(r * 2 * reach - reach);
    } else if (type == ParameterType::Enumeration) {
        result = std::trunc(r * span);
    } else {
        result = RoundHalfUp(r * span + min);
    }
    return std::clamp(result, min, max);
}

void ParameterRecord::RandomizeSwitch(double amount) {
    if (amount + kSameParameter < 0.5) return;
    if (type == ParameterType::Group && !HasSwitch()) return;
    Set(NextRandom() & 1);
}
