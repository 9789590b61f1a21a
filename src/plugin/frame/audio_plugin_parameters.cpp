// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/guarded.h"
#include "plugin/frame/audio_plugin.h"

// Without an adapter the answer is neutral.
template <typename Neutral, typename Call>
Neutral MAudioPlugin::AskAdapter(const char* trace, Neutral neutral, int index, Call call) const {
    return Guarded(trace, neutral, [&]() -> Neutral {
        const AutomationTable::Place place = automation.Find(index);
        if (place.adapter == nullptr) return neutral;
        return call(*place.adapter, place.index);
    });
}

int MAudioPlugin::GetHostParameterCount() { return automation.HostParameterCount(); }

void MAudioPlugin::SetParameter(int index, double newPosition, bool silent) {
    AskAdapter("MAudioPlugin::SetParameter", 0, index, [&](AutomationAdapter& adapter, int local) {
        adapter.SetParameter(local, newPosition, silent);
        return 0;
    });
}

void MAudioPlugin::SetParameterIfChanged(int index, double newPosition, bool silent) {
    Guarded("MAudioPlugin::SetParameterIfChanged",
            [&] { automation.SetIfChanged(index, newPosition, silent); });
}

double MAudioPlugin::GetParameter(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameter", 0.0, index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameter(local); });
}

MString MAudioPlugin::GetParameterName(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterName", MString(), index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterName(local); });
}

MString MAudioPlugin::GetParameterShortName(int index) { return GetParameterName(index); }

MString MAudioPlugin::GetParameterDescription(int) { return {}; }

MString MAudioPlugin::GetParameterSection(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterSection", MString(), index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterSection(local); });
}

MString MAudioPlugin::GetParameterNameWithoutSection(int index) {
    return AskAdapter("MAudioPlugin::GetParameterNameWithoutSection", MString(), index,
                      [](AutomationAdapter& adapter, int local) {
                          return adapter.GetParameterNameWithoutSection(local);
                      });
}

MString MAudioPlugin::GetParameterID(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterID", MString(), index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterID(local); });
}

MString MAudioPlugin::GetParameterValueName(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterValueName", MString(), index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterValueName(local); });
}

MString MAudioPlugin::GetParameterValueNameFrom01(int index, double where) {
    return AskAdapter("MAudioPlugin::GetParameterValueNameFrom01", MString(), index,
                      [&](AutomationAdapter& adapter, int local) {
                          return adapter.GetParameterValueNameFrom01(local, where);
                      });
}

bool MAudioPlugin::ParseParameterValueName(int index, const MString& text) {
    return AskAdapter("MAudioPlugin::ParseParameterValueName", false, index,
                      [&](AutomationAdapter& adapter, int local) {
                          return adapter.ParseParameterValueName(local, text);
                      });
}

bool MAudioPlugin::ParsePositionFromText(int index, const MString& text, double& newPosition) {
    return AskAdapter("MAudioPlugin::ParsePositionFromText", false, index,
                      [&](AutomationAdapter& adapter, int local) {
                          return adapter.ParsePositionFromText(local, text, newPosition);
                      });
}

MString MAudioPlugin::GetParameterUnitsName(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterUnitsName", MString(), index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterUnitsName(local); });
}

bool MAudioPlugin::IsParameterDiscrete(int) { return false; }

ParameterType MAudioPlugin::GetParameterType(int index) {
    return AskAdapter(
        "MAudioPlugin::GetParameterType", ParameterType::None, index,
        [](AutomationAdapter& adapter, int local) { return adapter.GetParameterType(local); });
}

double MAudioPlugin::GetParameterDefaultValue(int index) {
    return AskAdapter("MAudioPlugin::GetParameterDefaultValue", 0.0, index,
                      [](AutomationAdapter& adapter, int local) {
                          return adapter.GetParameterDefaultValue(local);
                      });
}

bool MAudioPlugin::IsParameterAvailable(int) { return true; }

bool MAudioPlugin::IsParameterAutomatable(int index) const {
    return AskAdapter("MAudioPlugin::IsParameterAutomatable", false, index,
                      [](AutomationAdapter& adapter, int) { return adapter.automatable; });
}

void MAudioPlugin::ParameterChanged(int index) { SendAutomation(index, GetParameter(index)); }

void MAudioPlugin::SendAutomation(int index, double newPosition) {
    if (hostAdapter != nullptr) hostAdapter->SendAutomation(index, newPosition);
}

void MAudioPlugin::StateChanged() {
    if (hostAdapter != nullptr) hostAdapter->StateChanged();
}

void MAudioPlugin::RebuildAutomationTable() { automation.Rebuild(automationCompatibility); }

void MAudioPlugin::ClearAutomationAdapters() { automation.Clear(); }

void MAudioPlugin::DestroyTemporaryAutomationAdapters() {
    Guarded("MAudioPlugin::DestroyTemporaryAutomationAdapters",
            [&] { automation.DestroyTemporary(); });
}

void MAudioPlugin::NeedUpdateEditor(AutomationAdapter& adapter) {
    Guarded("MAudioPlugin::NeedUpdateEditor", [&] { automation.changed.Add(adapter); });
}

bool MAudioPlugin::InterpolationPrepare(int sampleCount) {
    return Guarded("MAudioPlugin::InterpolationPrepare", false,
                   [&] { return automation.interpolation.Prepare(sampleCount); });
}

void MAudioPlugin::InterpolationProcess(int sampleCount) {
    Guarded("MAudioPlugin::InterpolationProcess",
            [&] { automation.interpolation.Process(sampleCount); });
}

void MAudioPlugin::InterpolationFinish() {
    Guarded("MAudioPlugin::InterpolationFinish", [&] { automation.interpolation.Finish(); });
}
