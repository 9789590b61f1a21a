// SPDX-License-Identifier: GPL-3.0-or-later

// What a host says on its main thread; audio_plugin_vst_adapter_process.cpp has its blocks.

#include "hosts/vst2/audio_plugin_vst_adapter.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "foundation/objects/guarded.h"
#include "hosts/adapter/interface_text.h"
#include "hosts/adapter/state_text.h"

namespace {

// Hosts before it know no more than two channels a bus and two outputs.
constexpr int kFirstVersionWithBuses = 2300;
constexpr int kOldChannels = 2;

constexpr int kMIDIChannels = 16;
constexpr int kLowestSampleRate = 101;
constexpr int kHighestSampleRate = 10'000'000;   // upsampled still an int
constexpr int kLargestAnnouncedBlock = 1 << 16;  // larger ones are taken as they come

// The first two pins of each of the first buses.
void KeepPairs(std::vector<MString>& names, int channelsPerBus, int buses) {
    std::vector<MString> kept;
    for (int b = 0; b < buses; ++b) {
        const auto bus = names.begin() + std::ptrdiff_t{b} * channelsPerBus;
        kept.insert(kept.end(), bus, bus + kOldChannels);
    }
    names = std::move(kept);
}

int PinCount(const std::vector<MString>& names) { return static_cast<int>(names.size()); }

bool FitsPins(const VstSpeakerArrangement* arrangement, const std::vector<MString>& names) {
    return arrangement == nullptr ||
           (arrangement->numChannels >= 0 && arrangement->numChannels <= PinCount(names));
}

// -1: the host does not tell.
int ConnectedChannels(const VstSpeakerArrangement* arrangement, int channelsPerBus) {
    return arrangement == nullptr ? -1 : std::min(channelsPerBus, arrangement->numChannels);
}

bool WriteConstant(const char* trace, const char* constant, char* text, int size) {
    return Guarded(trace, false, [&] {
        CopyText(constant, text, size);
        return true;
    });
}

}  // namespace

MAudioPluginVSTAdapter::MAudioPluginVSTAdapter(audioMasterCallback audioMaster,
                                               const ProductInfo& newProduct,
                                               std::unique_ptr<MAudioPlugin> newPlugin)
    : AudioEffectX(audioMaster, 1, newPlugin->GetHostParameterCount()),
      product(newProduct),
      plugin(std::move(newPlugin)),
      programName(product.name) {
    if (getMasterVersion() < kFirstVersionWithBuses) ShortenPins();
    setUniqueID(product.vst2UniqueID);
    setVersion(product.versionNumber);
    setNumInputs(PinCount(plugin->inputChannelNames));
    setNumOutputs(PinCount(plugin->outputChannelNames));
    setFlags(effFlagsProgramChunks);
    lastLatency = plugin->GetReportedLatency();
    setInitialDelay(lastLatency);
    plugin->hostAdapter = this;
    plugin->hostTag.Append("VST");
}

MAudioPluginVSTAdapter::~MAudioPluginVSTAdapter() { plugin->hostAdapter = nullptr; }

void MAudioPluginVSTAdapter::ShortenPins() {
    const int channels = plugin->channelsPerBus;
    if (channels < kOldChannels) return;
    KeepPairs(plugin->inputChannelNames, channels, plugin->GetInputBusCount());
    KeepPairs(plugin->outputChannelNames, channels, std::min(plugin->GetOutputBusCount(), 1));
    plugin->channelsPerBus = kOldChannels;
}

void MAudioPluginVSTAdapter::resume() {
    Guarded("MAudioPluginVSTAdapter::resume", [&] {
        const bool hostSends = canHostDo("sendVstEvents") || canHostDo("sendVstMidiEvent");
        if (plugin->receivesMIDI && hostSends) wantEvents();
        plugin->AnnounceBlockSize(std::min(blockSize, kLargestAnnouncedBlock));
        plugin->InitProcessing();
    });
}

void MAudioPluginVSTAdapter::setSampleRate(float rate) {
    Guarded("MAudioPluginVSTAdapter::setSampleRate", [&] {
        sampleRate = rate;
        if (!(rate > 0) || rate > kHighestSampleRate) return;
        const int nearest = static_cast<int>(std::lround(rate));
        if (nearest < kLowestSampleRate) return;
        plugin->SetHostSampleRate(nearest);
        plugin->InitProcessing();
    });
}

void MAudioPluginVSTAdapter::setBlockSize(int size) { blockSize = std::max(size, 0); }

void MAudioPluginVSTAdapter::setParameter(int index, float value) {
    if (inAutomation.IsHere()) return;
    plugin->SetParameter(index, std::clamp<double>(value, 0, 1), false);
}

float MAudioPluginVSTAdapter::getParameter(int index) {
    return static_cast<float>(plugin->GetParameter(index));
}

void MAudioPluginVSTAdapter::WriteText(const char* trace, MString (MAudioPlugin::*get)(int),
                                       int index, char* text) {
    Guarded(trace, [&] { CopyText((*plugin.*get)(index), text, kParameterTextSize); });
}

void MAudioPluginVSTAdapter::getParameterLabel(int index, char* text) {
    WriteText("MAudioPluginVSTAdapter::getParameterLabel", &MAudioPlugin::GetParameterUnitsName,
              index, text);
}

void MAudioPluginVSTAdapter::getParameterDisplay(int index, char* text) {
    WriteText("MAudioPluginVSTAdapter::getParameterDisplay", &MAudioPlugin::GetParameterValueName,
              index, text);
}

void MAudioPluginVSTAdapter::getParameterName(int index, char* text) {
    WriteText("MAudioPluginVSTAdapter::getParameterName", &MAudioPlugin::GetParameterName, index,
              text);
}

bool MAudioPluginVSTAdapter::canParameterBeAutomated(int index) {
    return plugin->IsParameterAutomatable(index);
}

bool MAudioPluginVSTAdapter::string2parameter(int index, const char* text) {
    return Guarded("MAudioPluginVSTAdapter::string2parameter", false,
                   [&] { return plugin->ParseParameterValueName(index, MString::FromUtf8(text)); });
}

void MAudioPluginVSTAdapter::setProgramName(const char* text) {
    Guarded("MAudioPluginVSTAdapter::setProgramName", [&] {
        programName = MString::FromUtf8(text);
        plugin->SetProgramName(programName);
    });
}

void MAudioPluginVSTAdapter::getProgramName(char* text) {
    Guarded("MAudioPluginVSTAdapter::getProgramName",
            [&] { CopyText(programName, text, kProgramTextSize); });
}

bool MAudioPluginVSTAdapter::getProgramNameIndexed(int index, char* text) {
    if (index != 0) return false;
    getProgramName(text);
    return true;
}

int MAudioPluginVSTAdapter::getChunk(void** data, bool) {
    *data = nullptr;
    return Guarded("MAudioPluginVSTAdapter::getChunk", 0, [&] {
        MMemoryStream text;
        WriteState(*plugin, text);
        chunk = std::move(text);
        *data = const_cast<std::uint8_t*>(chunk.GetData());
        return static_cast<int>(chunk.GetSize());
    });
}

bool MAudioPluginVSTAdapter::setChunk(const void* data, VstIntPtr size, bool) {
    return Guarded("MAudioPluginVSTAdapter::setChunk", false, [&] {
        if (size < 0 || size > kLargestState) return false;
        MMemoryStream text(data, static_cast<std::int32_t>(size));
        ReadState(*plugin, text);
        return true;
    });
}

bool MAudioPluginVSTAdapter::getInputProperties(int index, VstPinProperties& pin) {
    return GetPin("MAudioPluginVSTAdapter::getInputProperties", plugin->inputChannelNames, index,
                  pin);
}

bool MAudioPluginVSTAdapter::getOutputProperties(int index, VstPinProperties& pin) {
    return GetPin("MAudioPluginVSTAdapter::getOutputProperties", plugin->outputChannelNames, index,
                  pin);
}

bool MAudioPluginVSTAdapter::GetPin(const char* trace, const std::vector<MString>& names, int index,
                                    VstPinProperties& pin) const {
    return Guarded(trace, false, [&] {
        if (index < 0 || index >= PinCount(names)) return false;
        const bool isPair = plugin->channelsPerBus == 2;
        const MString& name = names[static_cast<std::size_t>(index)];
        CopyText(name, pin.label, kPinTextSize);
        CopyText(name, pin.shortLabel, kShortPinTextSize);
        pin.flags = kPinIsActive;
        if (isPair) pin.flags |= kPinUsesSpeaker | (index % 2 == 0 ? kPinIsStereo : 0);
        pin.arrangementType = isPair ? kSpeakerArrStereo : kSpeakerArrMono;
        return true;
    });
}

bool MAudioPluginVSTAdapter::setSpeakerArrangement(const VstSpeakerArrangement* input,
                                                   const VstSpeakerArrangement* output) {
    return Guarded("MAudioPluginVSTAdapter::setSpeakerArrangement", false, [&] {
        if (!FitsPins(input, plugin->inputChannelNames) ||
            !FitsPins(output, plugin->outputChannelNames))
            return false;
        const int channels = plugin->channelsPerBus;
        const int inputs = plugin->GetInputBusCount() == 0 ? 0 : ConnectedChannels(input, channels);
        const int outputs = ConnectedChannels(output, channels);
        plugin->SetConnectedChannels(inputs, outputs == 0 ? 1 : outputs);
        return true;
    });
}

bool MAudioPluginVSTAdapter::getEffectName(char* text) {
    return WriteConstant("MAudioPluginVSTAdapter::getEffectName", product.name, text,
                         kEffectTextSize);
}

bool MAudioPluginVSTAdapter::getVendorString(char* text) {
    return WriteConstant("MAudioPluginVSTAdapter::getVendorString", product.vendor, text,
                         kVendorTextSize);
}

bool MAudioPluginVSTAdapter::getProductString(char* text) {
    return WriteConstant("MAudioPluginVSTAdapter::getProductString", product.name, text,
                         kVendorTextSize);
}

int MAudioPluginVSTAdapter::canDo(const char* text) {
    struct Ability {
        std::string_view text;
        int answer;
    };
    const int receives = plugin->receivesMIDI ? 1 : -1;
    const int sends = plugin->sendsMIDI ? 1 : -1;
    const Ability abilities[] = {
        {"receiveVstEvents", receives},
        {"receiveVstEvent", receives},
        {"receiveVstMidiEvents", receives},
        {"receiveVstMidiEvent", receives},
        {"sendVstEvents", sends},
        {"sendVstEvent", sends},
        {"sendVstMidiEvents", sends},
        {"sendVstMidiEvent", sends},
        {"plugAsChannelInsert", 1},
        {"canMono", 1},
        {"plugAsSend", 1},
        {"receiveVstTimeInfo", 1},
        {"bypass", -1},  // the host's business; the state alone drives the plug-in's own
    };
    for (const Ability& ability : abilities)
        if (ability.text == text) return ability.answer;
    return 0;
}

int MAudioPluginVSTAdapter::getGetTailSize() {
    return Guarded("MAudioPluginVSTAdapter::getGetTailSize", kTailUnknown, [&] {
        const int length = plugin->GetReportedTailLength();
        if (length < 0) return kTailUnknown;
        return std::max(length, kTailNone);
    });
}

int MAudioPluginVSTAdapter::getNumMidiInputChannels() {
    return plugin->receivesMIDI ? kMIDIChannels : 0;
}

int MAudioPluginVSTAdapter::getNumMidiOutputChannels() {
    return plugin->sendsMIDI ? kMIDIChannels : 0;
}

void MAudioPluginVSTAdapter::SendAutomation(int index, double position) {
    if (!isParameter(index)) return;
    const AutomationEcho::Scope sending(inAutomation);
    setParameterAutomated(index, static_cast<float>(position));
}

void MAudioPluginVSTAdapter::UpdateLatency() {
    const int latency = plugin->GetReportedLatency();
    TraceNumber("Latency: ", latency);
    setInitialDelay(latency);
    if (lastLatency.exchange(latency) != latency) ioChanged();
}

void MAudioPluginVSTAdapter::StateChanged() { updateDisplay(); }

bool MAudioPluginVSTAdapter::ChangeEditorSize(EditorSize size) {
    return sizeWindow(size.width, size.height);
}
