// SPDX-License-Identifier: GPL-3.0-or-later
#include "vst3_plugin.h"

#include <pluginterfaces/vst/ivstmessage.h>
#include <pluginterfaces/vst/ivstmidicontrollers.h>
#include <pluginterfaces/vst/ivstunits.h>
#include <pluginterfaces/vst/vstspeaker.h>
#include <public.sdk/source/common/memorystream.h>
#include <public.sdk/source/vst/hosting/hostclasses.h>

#include <algorithm>
#include <cstring>

#include "foundation/text/mstring.h"

using namespace Steinberg;

namespace {

std::string Utf8(const Vst::TChar* text) { return MString(text).ToUtf8(); }

Vst::SpeakerArrangement ArrangementOf(int channels) {
    constexpr Vst::SpeakerArrangement kLayouts[] = {
        Vst::SpeakerArr::kEmpty,  Vst::SpeakerArr::kMono,    Vst::SpeakerArr::kStereo,
        Vst::SpeakerArr::k30Cine, Vst::SpeakerArr::k40Music, Vst::SpeakerArr::k50,
        Vst::SpeakerArr::k51,     Vst::SpeakerArr::k70Cine,  Vst::SpeakerArr::k71Cine};
    return channels < static_cast<int>(std::size(kLayouts))
               ? kLayouts[std::max(channels, 0)]
               : (Vst::SpeakerArrangement{1} << std::min(channels, 63)) - 1;
}

// What a message moves through the controller mapping, and where it moves it.
std::optional<std::pair<Vst::CtrlNumber, double>> ControllerOf(const HostedMidi& message) {
    constexpr double kSevenBits = 127;
    constexpr double kFourteenBits = 16383;
    const auto [status, first, second] = message.bytes;
    switch (status & 0xf0) {
        case 0xb0:
            return {{static_cast<Vst::CtrlNumber>(first), second / kSevenBits}};
        case 0xd0:
            return {{static_cast<Vst::CtrlNumber>(Vst::kAfterTouch), first / kSevenBits}};
        case 0xe0:
            return {{static_cast<Vst::CtrlNumber>(Vst::kPitchBend),
                     (first + 128 * second) / kFourteenBits}};
        default:
            return std::nullopt;
    }
}

void ToBuses(const std::vector<HostedBuffers>& from, std::vector<Vst::AudioBusBuffers>& to) {
    to.resize(from.size());
    for (std::size_t b = 0; b < from.size(); ++b) {
        to[b].numChannels = from[b].channelCount;
        to[b].silenceFlags = 0;
        to[b].channelBuffers32 = from[b].channels;
    }
}

constexpr struct {
    Vst::MediaTypes type;
    Vst::BusDirections direction;
} kBusKinds[] = {{Vst::kAudio, Vst::kInput},
                 {Vst::kAudio, Vst::kOutput},
                 {Vst::kEvent, Vst::kInput},
                 {Vst::kEvent, Vst::kOutput}};

}  // namespace

class Vst3Plugin::Application final : public HostObject<Vst::IHostApplication> {
public:
    tresult PLUGIN_API getName(Vst::String128 name) override {
        constexpr char16_t kName[] = u"Quillorea render";
        std::copy(std::begin(kName), std::end(kName), name);
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(TUID wanted, TUID, void** object) override {
        *object = nullptr;
        if (FUnknownPrivate::iidEqual(wanted, Vst::IMessage::iid))
            *object = static_cast<Vst::IMessage*>(new Vst::HostMessage);
        if (FUnknownPrivate::iidEqual(wanted, Vst::IAttributeList::iid))
            *object = static_cast<Vst::IAttributeList*>(new Vst::HostAttributeList);
        return *object != nullptr ? kResultOk : kNoInterface;
    }
};

class Vst3Plugin::Handler final
    : public HostObject<Vst::IComponentHandler, Vst::IComponentHandler2> {
public:
    explicit Handler(Vst3Plugin& plugin) : plugin(plugin) {}

    tresult PLUGIN_API beginEdit(Vst::ParamID) override {
        return Report([](HostedNews& news) { ++news.openGestures; });
    }
    tresult PLUGIN_API performEdit(Vst::ParamID id, Vst::ParamValue value) override {
        return Report([=](HostedNews& news) { news.edits.push_back({id, 0, value}); });
    }
    tresult PLUGIN_API endEdit(Vst::ParamID) override {
        return Report([](HostedNews& news) { --news.openGestures; });
    }
    tresult PLUGIN_API restartComponent(int32 flags) override {
        return Report([=](HostedNews& news) {
            news.latencyChanged |= (flags & Vst::kLatencyChanged) != 0;
            news.busesChanged |= (flags & Vst::kIoChanged) != 0;
            news.valuesChanged |= (flags & Vst::kParamValuesChanged) != 0;
        });
    }

    tresult PLUGIN_API setDirty(TBool state) override {
        return Report([=](HostedNews& news) { news.stateIsDirty = state != 0; });
    }
    tresult PLUGIN_API requestOpenEditor(FIDString) override { return kNotImplemented; }
    tresult PLUGIN_API startGroupEdit() override { return kNotImplemented; }
    tresult PLUGIN_API finishGroupEdit() override { return kNotImplemented; }

private:
    template <typename Change>
    tresult Report(Change change) {
        plugin.Report(change);
        return kResultOk;
    }

    Vst3Plugin& plugin;
};

Vst3Plugin::Vst3Plugin(std::shared_ptr<Vst3Library> newLibrary, const PClassInfo& effectClass)
    : library(std::move(newLibrary)),
      application(std::make_unique<Application>()),
      handler(std::make_unique<Handler>(*this)) {
    const std::string& path = library->Library().Path();
    Vst::IComponent* made = nullptr;
    library->Factory().createInstance(effectClass.cid, Vst::IComponent::iid,
                                      reinterpret_cast<void**>(&made));
    if (made == nullptr) throw HostingError("'" + path + "' refuses to make an instance.");
    component = owned(made);
    if (component->initialize(application.get()) != kResultOk)
        throw HostingError("'" + path + "' refuses to be initialized.");
    processor = FUnknownPtr<Vst::IAudioProcessor>(component).getInterface();
    if (!processor) throw HostingError("'" + path + "' does not process audio.");
    MakeController();
    if (!controller) throw HostingError("'" + path + "' has no parameters' controller.");
    controller->setComponentHandler(handler.get());
    FillInfo(effectClass);
}

void Vst3Plugin::MakeController() {
    controller = FUnknownPtr<Vst::IEditController>(component).getInterface();
    isSingleObject = controller != nullptr;
    TUID controllerClass;
    if (isSingleObject || component->getControllerClassId(controllerClass) != kResultOk) return;
    Vst::IEditController* made = nullptr;
    library->Factory().createInstance(controllerClass, Vst::IEditController::iid,
                                      reinterpret_cast<void**>(&made));
    if (made == nullptr) return;
    controller = owned(made);
    controller->initialize(application.get());
    const FUnknownPtr<Vst::IConnectionPoint> processing(component);
    const FUnknownPtr<Vst::IConnectionPoint> controlling(controller);
    Connect(processing, controlling);
    Connect(controlling, processing);
}

void Vst3Plugin::Connect(Vst::IConnectionPoint* from, Vst::IConnectionPoint* to) {
    if (from != nullptr && to != nullptr) from->connect(to);
}

Vst3Plugin::~Vst3Plugin() {
    if (controller) controller->setComponentHandler(nullptr);
    if (controller && !isSingleObject) controller->terminate();
    component->terminate();
}

void Vst3Plugin::FillInfo(const PClassInfo& effectClass) {
    info.interface = "VST 3";
    info.name = effectClass.name;
    info.category = effectClass.category;
    char identity[33] = {};
    FUID::fromTUID(effectClass.cid).toString(identity);
    info.identity = identity;
    PFactoryInfo factoryInfo;
    if (library->Factory().getFactoryInfo(&factoryInfo) == kResultOk)
        info.vendor = factoryInfo.vendor;
    const FUnknownPtr<IPluginFactory2> factory(&library->Factory());
    if (!factory) return;
    for (int32 c = 0; c < factory->countClasses(); ++c) {
        PClassInfo2 more;
        if (factory->getClassInfo2(c, &more) != kResultOk ||
            !FUnknownPrivate::iidEqual(more.cid, effectClass.cid))
            continue;
        info.version = more.version;
        info.category = more.subCategories;
        if (more.vendor[0] != 0) info.vendor = more.vendor;
    }
}

std::vector<HostedBus> Vst3Plugin::Buses() {
    std::vector<HostedBus> buses;
    for (const auto& kind : kBusKinds) {
        for (int32 b = 0; b < component->getBusCount(kind.type, kind.direction); ++b) {
            Vst::BusInfo bus = {};
            component->getBusInfo(kind.type, kind.direction, b, bus);
            buses.push_back({Utf8(bus.name), bus.channelCount, kind.direction == Vst::kInput,
                             kind.type == Vst::kAudio, bus.busType == Vst::kMain});
        }
    }
    return buses;
}

// The main bus as told, the others as they are.
std::vector<Vst::SpeakerArrangement> Vst3Plugin::Arrangements(Vst::BusDirection direction,
                                                              int mainChannels) {
    std::vector<Vst::SpeakerArrangement> arrangements;
    for (int32 b = 0; b < component->getBusCount(Vst::kAudio, direction); ++b) {
        Vst::SpeakerArrangement present = 0;
        processor->getBusArrangement(direction, b, present);
        arrangements.push_back(b == 0 ? ArrangementOf(mainChannels) : present);
    }
    return arrangements;
}

bool Vst3Plugin::Arrange(int inputChannels, int outputChannels) {
    std::vector<Vst::SpeakerArrangement> inputs = Arrangements(Vst::kInput, inputChannels);
    std::vector<Vst::SpeakerArrangement> outputs = Arrangements(Vst::kOutput, outputChannels);
    return processor->setBusArrangements(inputs.data(), static_cast<int32>(inputs.size()),
                                         outputs.data(),
                                         static_cast<int32>(outputs.size())) == kResultTrue;
}

void Vst3Plugin::Setup(double sampleRate, int largestBlock) {
    rate = sampleRate;
    Vst::ProcessSetup setup = {Vst::kRealtime, Vst::kSample32, largestBlock, sampleRate};
    processor->setupProcessing(setup);
}

void Vst3Plugin::ActivateBuses(bool on) {
    for (const auto& kind : kBusKinds)
        for (int32 b = 0; b < component->getBusCount(kind.type, kind.direction); ++b)
            component->activateBus(kind.type, kind.direction, b, on);
}

void Vst3Plugin::Activate(bool on) {
    if (!on) processor->setProcessing(false);
    if (on) ActivateBuses(true);
    component->setActive(on);
    if (on) processor->setProcessing(true);
}

// Controllers, channel pressure and bends are parameters here.
void Vst3Plugin::TakeMidi(const std::vector<HostedMidi>& midi) {
    inputEvents.Clear();
    for (const HostedMidi& message : midi) {
        if (inputEvents.Add(message)) continue;
        const auto moved = ControllerOf(message);
        const FUnknownPtr<Vst::IMidiMapping> mapping(controller);
        Vst::ParamID id = 0;
        if (moved && mapping &&
            mapping->getMidiControllerAssignment(0, message.bytes[0] & 15, moved->first, id) ==
                kResultOk)
            inputChanges.Add({id, message.offset, moved->second});
    }
}

void Vst3Plugin::FillContext(const HostedTransport& transport) {
    using Flag = Vst::ProcessContext;
    context = {};
    context.sampleRate = rate;
    context.projectTimeSamples = doneSamples;
    context.state = transport.isPlaying ? Flag::kPlaying : 0;
    const auto put = [this](std::uint32_t flag, double& field, const std::optional<double>& value) {
        if (!value) return;
        field = *value;
        context.state |= flag;
    };
    put(Flag::kTempoValid, context.tempo, transport.tempo);
    put(Flag::kProjectTimeMusicValid, context.projectTimeMusic, transport.position);
    put(Flag::kBarPositionValid, context.barPositionMusic, transport.barStart);
    if (transport.signature) {
        std::tie(context.timeSigNumerator, context.timeSigDenominator) = *transport.signature;
        context.state |= Flag::kTimeSigValid;
    }
    if (transport.cycle) {
        std::tie(context.cycleStartMusic, context.cycleEndMusic) = *transport.cycle;
        context.state |= Flag::kCycleValid | Flag::kCycleActive;
    }
}

void Vst3Plugin::Process(HostedBlock& block) {
    inputChanges.Clear();
    {
        const std::lock_guard lock(pendingLock);
        inputChanges.Fill(pending);
        pending.clear();
    }
    for (const HostedChange& change : block.changes) inputChanges.Add(change);
    TakeMidi(block.midi);
    outputChanges.Clear();
    outputEvents.Clear();
    ToBuses(block.inputs, inputBuses);
    ToBuses(block.outputs, outputBuses);
    if (block.transport != nullptr) FillContext(*block.transport);

    Vst::ProcessData data;
    data.processMode = Vst::kRealtime;
    data.symbolicSampleSize = Vst::kSample32;
    data.numSamples = block.sampleCount;
    data.numInputs = static_cast<int32>(inputBuses.size());
    data.numOutputs = static_cast<int32>(outputBuses.size());
    data.inputs = inputBuses.data();
    data.outputs = outputBuses.data();
    data.inputParameterChanges = &inputChanges;
    data.outputParameterChanges = &outputChanges;
    data.inputEvents = &inputEvents;
    data.outputEvents = &outputEvents;
    data.processContext = block.transport != nullptr ? &context : nullptr;
    processor->process(data);

    block.sentMidi.clear();
    outputEvents.CopyTo(block.sentMidi);
    doneSamples += block.sampleCount;
}

std::int64_t Vst3Plugin::TailLength() {
    const uint32 tail = processor->getTailSamples();
    return tail == Vst::kInfiniteTail ? kEndless : tail;
}

std::vector<HostedParameter> Vst3Plugin::Parameters() {
    std::vector<HostedParameter> parameters;
    const FUnknownPtr<Vst::IUnitInfo> units(controller);
    const auto sectionOf = [&](Vst::UnitID id) -> std::string {
        Vst::UnitInfo unit = {};
        for (int32 u = 0; units && id != Vst::kRootUnitId && u < units->getUnitCount(); ++u)
            if (units->getUnitInfo(u, unit) == kResultOk && unit.id == id) return Utf8(unit.name);
        return {};
    };
    for (int32 p = 0; p < controller->getParameterCount(); ++p) {
        Vst::ParameterInfo from = {};
        if (controller->getParameterInfo(p, from) != kResultOk) continue;
        const auto has = [&](int32 flag) { return (from.flags & flag) != 0; };
        parameters.push_back(
            {from.id, Utf8(from.title), sectionOf(from.unitId), Utf8(from.units), from.stepCount,
             from.defaultNormalizedValue, has(Vst::ParameterInfo::kCanAutomate),
             has(Vst::ParameterInfo::kIsHidden), has(Vst::ParameterInfo::kIsBypass)});
    }
    return parameters;
}

void Vst3Plugin::SetPosition(std::uint32_t id, double position) {
    controller->setParamNormalized(id, position);
    const std::lock_guard lock(pendingLock);
    pending.push_back({id, 0, position});
}

std::string Vst3Plugin::TextAt(std::uint32_t id, double position) {
    Vst::String128 text = {};
    return controller->getParamStringByValue(id, position, text) == kResultOk ? Utf8(text) : "";
}

std::optional<double> Vst3Plugin::PositionOf(std::uint32_t id, const std::string& text) {
    const MString units = MString::FromUtf8(text);
    Vst::String128 typed = {};
    for (int i = 0; i < std::min<int>(units.Length(), std::size(typed) - 1); ++i)
        typed[i] = units[i];
    double position = 0;
    if (controller->getParamValueByString(id, typed, position) != kResultOk) return std::nullopt;
    return position;
}

std::string Vst3Plugin::State() {
    MemoryStream stream;
    if (component->getState(&stream) != kResultOk) return {};
    return {stream.getData(), static_cast<std::size_t>(stream.getSize())};
}

bool Vst3Plugin::SetState(std::string_view state) {
    const auto stream = [&] {
        return MemoryStream(const_cast<char*>(state.data()), static_cast<TSize>(state.size()));
    };
    MemoryStream first = stream();
    const bool taken = component->setState(&first) == kResultOk;
    MemoryStream second = stream();
    controller->setComponentState(&second);
    return taken;
}
