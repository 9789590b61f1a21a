// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/parameter_adapter.h"

#include <cmath>

#include "parameters/parameter_names.h"

ParameterMainBase::ParameterMainBase(const AutomationContext& context, ParameterRecord& record,
                                     int localIndex)
    : AutomationAdapter(context), name(record.name), record(record), localIndex(localIndex) {
    // A head has none; what hosts and mappings know it by still has to be its own.
    identifier = record.identifier.IsEmpty() ? record.name : record.identifier;
}

void ParameterMainBase::SetParameter(int, double position, bool silent) {
    if (!std::isfinite(position)) return;
    record.SetEffective(ValueAt(position));
    if (!silent) Changed();
}

// The same for every way in which a value is changed for others to see.
void ParameterMainBase::Changed() {
    TellOwner();
    if (listener.load(std::memory_order_acquire) != nullptr) plugin->NeedUpdateEditor(*this);
}

double ParameterMainBase::GetParameter(int) { return PositionOf(record.Get()); }

double ParameterMainBase::GetParameterDefaultValue(int) { return PositionOf(record.defaultValue); }

ParameterType ParameterMainBase::GetParameterType(int) { return record.type; }

MString ParameterMainBase::GetParameterName(int) {
    return Joined(Joined(namePrefix, kBetweenNames, section), kBetweenNames, name);
}

MString ParameterMainBase::GetParameterSection(int) {
    return Joined(sectionPrefix, kBetweenNames, section);
}

MString ParameterMainBase::GetParameterNameWithoutSection(int) {
    return Joined(namePrefix, kBetweenNames, name);
}

MString ParameterMainBase::GetParameterID(int) {
    return Joined(namePrefix, kBetweenIdentifiers, identifier);
}

MString ParameterMainBase::GetParameterUnitsName(int) { return units; }

MString ParameterMainBase::GetParameterValueName(int) { return TextOf(record.Get()); }

MString ParameterMainBase::GetParameterValueNameFrom01(int, double position) {
    return TextOf(ValueAt(position));
}

MString ParameterMainBase::TextOf(double value) const {
    return record.text.get != nullptr ? record.text.get(value) : PlainText(value);
}

std::optional<double> ParameterMainBase::ReadText(const MString& text) const {
    const std::optional<double> value =
        record.text.read != nullptr ? record.text.read(text) : ReadPlain(text);
    if (!value) return std::nullopt;
    return record.InRange(*value);
}

bool ParameterMainBase::ParseParameterValueName(int, const MString& text) {
    const std::optional<double> value = ReadText(text);
    if (!value) return false;
    record.SetEffective(*value);
    Changed();
    return true;
}

bool ParameterMainBase::ParsePositionFromText(int, const MString& text, double& position) {
    const std::optional<double> value = ReadText(text);
    if (!value) return false;
    position = PositionOf(*value);
    return true;
}

bool ParameterMainBase::IsSmoothed(int) { return record.Has(ParameterFlag::kSmoothed); }

void ParameterMainBase::SetSmoothing(int, bool on) { record.SetSmoothing(on); }

int ParameterMainBase::GetRandomizable() { return record.Has(ParameterFlag::kRandomizes) ? 1 : 0; }

void ParameterMainBase::Randomize(double amount) {
    record.Randomize(amount);
    Changed();
}

void ParameterMainBase::UpdateEditor() {
    if (ParameterListener* const follower = listener.load(std::memory_order_acquire))
        follower->ParameterUpdated(*this);
}

void ParameterBase::TellOwner() {
    host.ParameterChanged(localIndex);
    if (record.Has(ParameterFlag::kUpdates)) host.RequestUpdate();
}

void ParameterBaseCustom::TellOwner() {
    changed.Call({this});
    if (record.Has(ParameterFlag::kUpdates)) updateDue.Call({this});
}
