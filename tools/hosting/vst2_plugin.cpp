// SPDX-License-Identifier: GPL-3.0-or-later
#include "vst2_plugin.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

constexpr int kHostVersion = 2400;
constexpr std::size_t kTextRoom = 256;  // plug-ins write more than they are allowed to
constexpr int kMostSpeakers = 8;

constexpr const char* kHostAbilities[] = {
    "sendVstEvents",       "sendVstMidiEvent", "sendVstTimeInfo", "receiveVstEvents",
    "receiveVstMidiEvent", "supplyIdle",       "sizeWindow",      "startStopProcess"};

int SpeakerTypeOf(int channels) {
    switch (channels) {
        case 0:
            return kSpeakerArrEmpty;
        case 1:
            return kSpeakerArrMono;
        case 2:
            return kSpeakerArrStereo;
        default:
            return kSpeakerArrUserDefined;
    }
}

// A VstSpeakerArrangement, with its speakers behind it.
std::vector<std::int32_t> Arrangement(int channels) {
    std::vector<std::int32_t> words(
        (sizeof(VstSpeakerArrangement) + kMostSpeakers * sizeof(VstSpeakerProperties)) /
        sizeof(std::int32_t));
    words[0] = SpeakerTypeOf(channels);
    words[1] = channels;
    return words;
}

void Flatten(const std::vector<HostedBuffers>& buses, int pins, std::vector<float*>& pointers) {
    pointers.clear();
    for (const HostedBuffers& bus : buses)
        for (int c = 0; c < bus.channelCount; ++c)
            pointers.push_back(bus.channels != nullptr ? bus.channels[c] : nullptr);
    pointers.resize(static_cast<std::size_t>(std::max(pins, 0)), nullptr);
}

std::string Hexadecimal(int number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08X", static_cast<unsigned>(number));
    return text.data();
}

}  // namespace

Vst2Library::Vst2Library(const std::string& path)
    : library(path), entry(library.Find<Main>("VSTPluginMain")) {
    if (entry == nullptr) entry = library.Find<Main>("main");
    if (entry == nullptr) library.Require<Main>("VSTPluginMain");
}

std::unique_ptr<HostedPlugin> Vst2Library::Create() {
    return std::make_unique<Vst2Plugin>(shared_from_this());
}

std::shared_ptr<HostedLibrary> OpenVst2(const std::string& path) {
    return std::make_shared<Vst2Library>(path);
}

Vst2Plugin::Vst2Plugin(std::shared_ptr<Vst2Library> newLibrary) : library(std::move(newLibrary)) {
    const std::string& path = library->Library().Path();
    effect = library->Entry()(&Callback);
    if (effect == nullptr) throw HostingError("'" + path + "' refuses to make an instance.");
    if (effect->magic != kEffectMagic)
        throw HostingError("'" + path + "' makes what is no VST 2 plug-in.");
    effect->resvd1 = reinterpret_cast<VstIntPtr>(this);
    Dispatch(effOpen);
    for (int p = 0; p < effect->numParams; ++p) defaults.push_back(effect->getParameter(effect, p));
    FillInfo();
}

Vst2Plugin::~Vst2Plugin() { Dispatch(effClose); }

void Vst2Plugin::FillInfo() {
    info.interface = "VST 2.4";
    info.name = Text(effGetEffectName);
    info.vendor = Text(effGetVendorString);
    info.version = std::to_string(Dispatch(effGetVendorVersion));
    info.category = std::to_string(Dispatch(effGetPlugCategory));
    info.identity = Hexadecimal(effect->uniqueID);
}

std::string Vst2Plugin::Text(int opcode, int index) {
    std::array<char, kTextRoom> text{};
    Dispatch(opcode, index, 0, text.data());
    text.back() = 0;
    return text.data();
}

VstIntPtr Vst2Plugin::Callback(AEffect* effect, int opcode, int index, VstIntPtr value,
                               void* pointer, float option) {
    if (opcode == audioMasterVersion) return kHostVersion;
    auto* const plugin =
        effect != nullptr ? reinterpret_cast<Vst2Plugin*>(effect->resvd1) : nullptr;
    return plugin != nullptr ? plugin->Answer(opcode, index, value, pointer, option) : 0;
}

VstIntPtr Vst2Plugin::Answer(int opcode, int index, VstIntPtr, void* pointer, float option) {
    const auto text = [&](const char* answer) {
        std::strcpy(static_cast<char*>(pointer), answer);
        return VstIntPtr{1};
    };
    switch (opcode) {
        case audioMasterAutomate:
            Report([&](HostedNews& news) {
                news.edits.push_back({static_cast<std::uint32_t>(index), 0, option});
            });
            effect->setParameter(effect, index, option);
            return 0;
        case audioMasterBeginEdit:
            Report([](HostedNews& news) { ++news.openGestures; });
            return 1;
        case audioMasterEndEdit:
            Report([](HostedNews& news) { --news.openGestures; });
            return 1;
        case kHostIOChanged:
            Report([](HostedNews& news) { news.latencyChanged = news.busesChanged = true; });
            return 1;
        case kHostUpdateDisplay:
            Report([](HostedNews& news) { news.valuesChanged = true; });
            return 1;
        case audioMasterGetTime:
            return isTimeTold ? reinterpret_cast<VstIntPtr>(&time.info) : 0;
        case audioMasterProcessEvents:
            KeepMidi(*static_cast<const VstEvents*>(pointer));
            return 1;
        case audioMasterGetSampleRate:
            return static_cast<VstIntPtr>(rate);
        case audioMasterGetBlockSize:
            return blockSize;
        case audioMasterGetVendorString:
            return text("Quillorea");
        case audioMasterGetProductString:
            return text("Quillorea render");
        case audioMasterCanDo:
            return std::any_of(std::begin(kHostAbilities), std::end(kHostAbilities),
                               [&](const char* ability) {
                                   return std::strcmp(ability, static_cast<char*>(pointer)) == 0;
                               });
        default:
            return 0;
    }
}

std::vector<HostedBus> Vst2Plugin::Buses() {
    const auto bus = [this](int pins, int opcode, bool isInput) {
        std::array<char, kTextRoom> pin{};
        Dispatch(opcode, 0, 0, pin.data());
        pin.back() = 0;
        return HostedBus{pin.data(), pins, isInput, true, true};
    };
    std::vector<HostedBus> buses;
    if (effect->numInputs > 0) buses.push_back(bus(effect->numInputs, effGetInputProperties, true));
    if (effect->numOutputs > 0)
        buses.push_back(bus(effect->numOutputs, effGetOutputProperties, false));
    return buses;
}

bool Vst2Plugin::Arrange(int inputChannels, int outputChannels) {
    std::vector<std::int32_t> input = Arrangement(inputChannels);
    std::vector<std::int32_t> output = Arrangement(outputChannels);
    return Dispatch(effSetSpeakerArrangement, 0, reinterpret_cast<VstIntPtr>(input.data()),
                    output.data()) == 1;
}

void Vst2Plugin::Setup(double sampleRate, int largestBlock) {
    rate = sampleRate;
    blockSize = largestBlock;
    Dispatch(effSetSampleRate, 0, 0, nullptr, static_cast<float>(sampleRate));
    Dispatch(effSetBlockSize, 0, largestBlock);
}

void Vst2Plugin::Activate(bool on) {
    if (!on) Dispatch(effStopProcess);
    Dispatch(effMainsChanged, 0, on ? 1 : 0);
    if (on) Dispatch(effStartProcess);
}

void Vst2Plugin::FillTime(const HostedTransport& transport) {
    time = {};
    time.info.samplePos = static_cast<double>(doneSamples);
    time.info.sampleRate = rate;
    time.info.flags = transport.isPlaying ? kVstTransportPlaying : 0;
    const auto put = [this](int flag, double& field, const std::optional<double>& value) {
        if (!value) return;
        field = *value;
        time.info.flags |= flag;
    };
    put(kVstTempoValid, time.info.tempo, transport.tempo);
    put(kVstPpqPosValid, time.info.ppqPos, transport.position);
    put(kVstBarsValid, time.info.barStartPos, transport.barStart);
    if (transport.signature) {
        std::tie(time.info.timeSigNumerator, time.info.timeSigDenominator) = *transport.signature;
        time.info.flags |= kVstTimeSigValid;
    }
    if (transport.cycle) {
        std::tie(time.info.cycleStartPos, time.info.cycleEndPos) = *transport.cycle;
        time.info.flags |= kVstCyclePosValid | kVstTransportCycleActive;
    }
}

void Vst2Plugin::SendMidi(const std::vector<HostedMidi>& midi) {
    if (midi.empty()) return;
    constexpr std::size_t kHeader = offsetof(VstEvents, events) / sizeof(std::intptr_t);
    events.assign(midi.size(), {});
    eventList.assign(std::max<std::size_t>(midi.size(), 2) + kHeader, 0);
    auto& list = *reinterpret_cast<VstEvents*>(eventList.data());
    list.numEvents = static_cast<int>(midi.size());
    for (std::size_t e = 0; e < midi.size(); ++e) {
        events[e].type = kVstMidiType;
        events[e].byteSize = sizeof(VstMidiEvent);
        events[e].deltaFrames = midi[e].offset;
        std::memcpy(events[e].midiData, midi[e].bytes.data(), midi[e].bytes.size());
        list.events[e] = reinterpret_cast<VstEvent*>(&events[e]);
    }
    Dispatch(effProcessEvents, 0, 0, &list);
}

void Vst2Plugin::KeepMidi(const VstEvents& list) {
    for (int e = 0; e < list.numEvents; ++e) {
        if (TypeOf(*list.events[e]) != kVstMidiType) continue;
        const auto& event = *reinterpret_cast<const VstMidiEvent*>(list.events[e]);
        HostedMidi message = {event.deltaFrames, {}};
        std::copy_n(event.midiData, message.bytes.size(), message.bytes.begin());
        sent.push_back(message);
    }
}

void Vst2Plugin::Process(HostedBlock& block) {
    isTimeTold = block.transport != nullptr;
    if (isTimeTold) FillTime(*block.transport);
    SendMidi(block.midi);
    for (const HostedChange& change : block.changes) SetPosition(change.id, change.position);
    Flatten(block.inputs, effect->numInputs, inputs);
    Flatten(block.outputs, effect->numOutputs, outputs);
    sent.clear();
    effect->processReplacing(effect, inputs.data(), outputs.data(), block.sampleCount);
    block.sentMidi.assign(sent.begin(), sent.end());
    doneSamples += block.sampleCount;
}

std::int64_t Vst2Plugin::TailLength() {
    const VstIntPtr tail = Dispatch(kEffGetTailSize);
    return tail == kTailUnknown || tail == kTailNone ? 0 : tail;
}

std::vector<HostedParameter> Vst2Plugin::Parameters() {
    std::vector<HostedParameter> parameters;
    for (int p = 0; p < effect->numParams; ++p)
        parameters.push_back({.id = static_cast<std::uint32_t>(p),
                              .name = Text(effGetParamName, p),
                              .section = "",
                              .units = Text(effGetParamLabel, p),
                              .defaultPosition = defaults[static_cast<std::size_t>(p)],
                              .isAutomatable = Dispatch(effCanBeAutomated, p) != 0});
    return parameters;
}

double Vst2Plugin::Position(std::uint32_t id) {
    return effect->getParameter(effect, static_cast<int>(id));
}

void Vst2Plugin::SetPosition(std::uint32_t id, double position) {
    effect->setParameter(effect, static_cast<int>(id), static_cast<float>(position));
}

std::string Vst2Plugin::TextAt(std::uint32_t id, double position) {
    const double before = Position(id);
    SetPosition(id, position);
    std::string text = Text(effGetParamDisplay, static_cast<int>(id));
    SetPosition(id, before);
    return text;
}

std::optional<double> Vst2Plugin::PositionOf(std::uint32_t id, const std::string& text) {
    const double before = Position(id);
    std::string typed = text;
    if (Dispatch(effString2Parameter, static_cast<int>(id), 0, typed.data()) == 0)
        return std::nullopt;
    const double position = Position(id);
    SetPosition(id, before);
    return position;
}

std::string Vst2Plugin::State() {
    void* chunk = nullptr;
    const VstIntPtr size = Dispatch(effGetChunk, 0, 0, &chunk);
    if (chunk == nullptr || size <= 0) return {};
    return {static_cast<const char*>(chunk), static_cast<std::size_t>(size)};
}

bool Vst2Plugin::SetState(std::string_view state) {
    return Dispatch(effSetChunk, 0, static_cast<VstIntPtr>(state.size()),
                    const_cast<char*>(state.data())) == 1;
}
