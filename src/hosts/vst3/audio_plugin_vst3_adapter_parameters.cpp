// SPDX-License-Identifier: GPL-3.0-or-later

// The controller's side: parameters, units, and the controllers of MIDI.

#include <algorithm>
#include <cmath>

#include "foundation/objects/guarded.h"
#include "foundation/text/string_formatter.h"
#include "hosts/adapter/interface_text.h"
#include "hosts/vst3/audio_plugin_vst3_adapter.h"
#include "hosts/vst3/guarded_result.h"
#include "pluginterfaces/vst/ivstmidicontrollers.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

namespace {

constexpr const char* kOn = "On";
constexpr const char* kOff = "Off";
constexpr double kMIDISteps = 127;
constexpr double kBendSteps = 16383;  // 14 bits
constexpr int kBendCentre = 8192;

ParameterInfo InfoOf(ParamID id, const MString& title, UnitID unit, int32 stepCount,
                     ParamValue defaultValue, int32 flags) {
    ParameterInfo info{};
    info.id = id;
    CopyText(title, info.title, std::size(info.title));
    info.unitId = unit;
    info.stepCount = stepCount;
    info.defaultNormalizedValue = defaultValue;
    info.flags = flags;
    return info;
}

MString ControllerTitle(int controller) {
    if (controller == kAfterTouch) return "MIDI aftertouch";
    if (controller == Vst::kPitchBend) return "MIDI pitch bend";
    return MStringFormatter("MIDI controller {0}") << controller;
}

bool IsBypassOn(ParamValue value) { return value > 0.5; }

}  // namespace

void MAudioPluginVST3Adapter::BuildParameters() {
    String128 root{};
    CopyText("Root", root, std::size(root));
    addUnit(new Unit(root, kRootUnitId, kNoParentUnitId));
    AddParameters();
    constexpr int32 kFlags = ParameterInfo::kCanAutomate | ParameterInfo::kIsBypass;
    parameters.addParameter(InfoOf(kBypassID, "Bypass", kRootUnitId, 1, 0, kFlags));
    if (plugin->receivesMIDI) AddMIDIParameters();
    controllerValues.assign(static_cast<std::size_t>(parameters.getParameterCount()), {});
}

void MAudioPluginVST3Adapter::AddParameters() {
    ownCount = std::min(plugin->GetHostParameterCount(), static_cast<int>(kFirstMIDIID));
    for (int i = 0; i < ownCount; ++i) {
        const bool isSwitch = plugin->GetParameterType(i) == ParameterType::Boolean;
        parameters.addParameter(
            InfoOf(static_cast<ParamID>(i), plugin->GetParameterNameWithoutSection(i),
                   UnitOf(plugin->GetParameterSection(i)), isSwitch ? 1 : 0,
                   static_cast<float>(plugin->GetParameterDefaultValue(i)),
                   plugin->IsParameterAutomatable(i) ? ParameterInfo::kCanAutomate
                                                     : ParameterInfo::kNoFlags));
    }
}

// A host may ask only for IDs that are in its list.
void MAudioPluginVST3Adapter::AddMIDIParameters() {
    for (int c = 0; c < kMIDIControllers; ++c)
        parameters.addParameter(InfoOf(kFirstMIDIID + static_cast<ParamID>(c), ControllerTitle(c),
                                       kRootUnitId, 0, c == Vst::kPitchBend ? 0.5 : 0,
                                       ParameterInfo::kIsHidden));
}

// Made where it is not there yet.
UnitID MAudioPluginVST3Adapter::UnitOf(const MString& section) {
    if (section.IsEmpty()) return kRootUnitId;
    String128 name{};
    CopyText(section, name, std::size(name));
    const auto hasName = [&](const IPtr<Unit>& unit) {
        return MString(unit->getName()) == MString(name);
    };
    const auto found = std::find_if(units.begin() + 1, units.end(), hasName);
    if (found != units.end()) return (*found)->getID();
    const auto id = static_cast<UnitID>(units.size());
    addUnit(new Unit(name, id));
    return id;
}

int MAudioPluginVST3Adapter::PlaceOf(ParamID id) const {
    const auto known = static_cast<int>(controllerValues.size());
    if (known == 0) return -1;
    if (id < static_cast<ParamID>(ownCount)) return static_cast<int>(id);
    if (id == kBypassID) return ownCount;
    if (id < kFirstMIDIID || id >= kFirstMIDIID + kMIDIControllers) return -1;
    const int place = ownCount + 1 + static_cast<int>(id - kFirstMIDIID);
    return place < known ? place : -1;
}

ParamValue MAudioPluginVST3Adapter::CurrentValue(ParamID id) {
    if (id < kFirstMIDIID) return plugin->GetParameter(static_cast<int>(id));
    if (id == kBypassID) return plugin->bypassed.load(std::memory_order_relaxed) != 0 ? 1 : 0;
    return id == kPitchBendID ? 0.5 : 0;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getParameterInfo(int32 index, ParameterInfo& info) {
    if (index < 0 || index >= getParameterCount()) return kInvalidArgument;
    return EditControllerEx1::getParameterInfo(index, info);
}

ParamValue PLUGIN_API MAudioPluginVST3Adapter::getParamNormalized(ParamID id) {
    return Guarded("MAudioPluginVST3Adapter::getParamNormalized", 0.0, [&] {
        const int place = PlaceOf(id);
        if (place < 0) return 0.0;
        const ControllerValue& kept = controllerValues[static_cast<std::size_t>(place)];
        const ParamValue current = CurrentValue(id);
        const bool holds = kept.stateNumber == stateNumber.load() && kept.seen == current;
        return holds ? kept.value : current;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setParamNormalized(ParamID id, ParamValue value) {
    return GuardedResult("MAudioPluginVST3Adapter::setParamNormalized", kResultFalse, [&] {
        const int place = PlaceOf(id);
        if (place < 0) return kResultFalse;
        if (!std::isfinite(value)) return kInvalidArgument;
        controllerValues[static_cast<std::size_t>(place)] = {std::clamp(value, 0.0, 1.0),
                                                             CurrentValue(id), stateNumber.load()};
        return kResultTrue;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getParamStringByValue(ParamID id, ParamValue value,
                                                                  String128 string) {
    if (string == nullptr || !std::isfinite(value)) return kInvalidArgument;
    return GuardedResult("MAudioPluginVST3Adapter::getParamStringByValue", kResultFalse, [&] {
        if (PlaceOf(id) < 0) return kResultFalse;
        CopyText(TextOf(id, value), string, std::extent_v<String128>);
        return kResultTrue;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getParamValueByString(ParamID id, TChar* string,
                                                                  ParamValue& value) {
    if (string == nullptr) return kInvalidArgument;
    return GuardedResult("MAudioPluginVST3Adapter::getParamValueByString", kResultFalse, [&] {
        if (PlaceOf(id) < 0) return kResultFalse;
        return ReadText(id, MString(string), value) ? kResultTrue : kResultFalse;
    });
}

MString MAudioPluginVST3Adapter::TextOf(ParamID id, ParamValue value) {
    if (id < kFirstMIDIID) return plugin->GetParameterValueNameFrom01(static_cast<int>(id), value);
    if (id == kBypassID) return IsBypassOn(value) ? kOn : kOff;
    if (id == kPitchBendID) return MString::FromInt(std::lround(value * kBendSteps) - kBendCentre);
    return MString::FromInt(std::lround(value * kMIDISteps));
}

bool MAudioPluginVST3Adapter::ReadText(ParamID id, const MString& text, ParamValue& value) {
    if (id < kFirstMIDIID) return plugin->ParsePositionFromText(static_cast<int>(id), text, value);
    if (id == kBypassID) {
        const bool on = text.CompareNoCase(kOn) == 0;
        if (!on && text.CompareNoCase(kOff) != 0) return false;
        value = on ? 1 : 0;
        return true;
    }
    std::int32_t read = 0;
    const int number = MString::ToInt(text, 10, &read);
    if (read == 0) return false;
    const double steps =
        id == kPitchBendID ? (number + kBendCentre) / kBendSteps : number / kMIDISteps;
    value = std::clamp(steps, 0.0, 1.0);
    return true;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getUnitInfo(int32 index, UnitInfo& info) {
    if (index < 0 || index >= getUnitCount()) return kInvalidArgument;
    return EditControllerEx1::getUnitInfo(index, info);
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getMidiControllerAssignment(int32 bus, int16,
                                                                        CtrlNumber controller,
                                                                        ParamID& id) {
    if (!plugin->receivesMIDI || bus != 0 || controller < 0 || controller >= kMIDIControllers)
        return kResultFalse;
    id = kFirstMIDIID + static_cast<ParamID>(controller);
    return kResultTrue;
}
