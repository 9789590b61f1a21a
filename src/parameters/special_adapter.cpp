// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/special_adapter.h"

#include <cmath>

#include "parameters/parameter_names.h"

ParameterSpecialMainBase::ParameterSpecialMainBase(const AutomationContext& context,
                                                   SpecialParameterRecord& record,
                                                   AutomatedObject& object, int count)
    : AutomationAdapter(context),
      name(record.name),
      kind(record.kind),
      object(object),
      changeCount(record.changeCount) {
    this->count = count;
    identifier = record.name;
    object.changed.Connect<&ParameterSpecialMainBase::OnObjectChanged>(this);
}

void ParameterSpecialMainBase::SetParameter(int index, double position, bool silent) {
    if (!Serves(index) || !std::isfinite(position)) return;
    {
        MLocker lock(object.Lock());
        Apply(index, position);
    }
    object.changed.Send({&object});
    if (!silent) plugin->SendAutomation(baseIndex + index, GetParameter(index));
}

// The editor's own changes come this way too.
void ParameterSpecialMainBase::OnObjectChanged(const MOnNotifyParams&) {
    if (changeCount != nullptr) ++*changeCount;
    TellOwner();
    plugin->NeedUpdateEditor(*this);
}

double ParameterSpecialMainBase::GetParameter(int index) {
    if (!Serves(index)) return 0;
    MLocker lock(object.Lock());
    return PositionOf(index);
}

ParameterType ParameterSpecialMainBase::GetParameterType(int) { return ParameterType::Float; }

MString ParameterSpecialMainBase::GetParameterName(int index) {
    return Joined(Joined(namePrefix, kBetweenNames, name), kBetweenNames, OwnName(index));
}

MString ParameterSpecialMainBase::GetParameterSection(int) {
    return Joined(sectionPrefix, kBetweenNames, name);
}

MString ParameterSpecialMainBase::GetParameterNameWithoutSection(int index) {
    return Joined(namePrefix, kBetweenNames, OwnName(index));
}

MString ParameterSpecialMainBase::GetParameterID(int index) {
    const MString own = Joined(identifier, kBetweenIdentifiers, OwnName(index));
    return Joined(namePrefix, kBetweenIdentifiers, own);
}

MString ParameterSpecialMainBase::GetParameterValueName(int index) {
    return GetParameterValueNameFrom01(index, GetParameter(index));
}

bool ParameterSpecialMainBase::ParseParameterValueName(int index, const MString& text) {
    double position = 0;
    if (!Serves(index) || !ParsePositionFromText(index, text, position)) return false;
    SetParameter(index, position, false);
    return true;
}

MString ParameterSpecialMainBase::GetParameterUnitsName(int) { return {}; }

bool ParameterSpecialMainBase::IsSmoothed(int) { return false; }

void ParameterSpecialMainBase::SetSmoothing(int, bool) {}

int ParameterSpecialMainBase::GetRandomizable() { return 0; }

void ParameterSpecialMainBase::Randomize(double) {}

void ParameterSpecialMainBase::UpdateEditor() { editorUpdate.Send({&object}); }
