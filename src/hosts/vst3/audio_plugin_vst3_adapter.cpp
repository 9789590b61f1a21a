// SPDX-License-Identifier: GPL-3.0-or-later

// Life and state of the adapter, and the plug-in's calls to the host.

#include "hosts/vst3/audio_plugin_vst3_adapter.h"

#include <utility>

#include "foundation/objects/guarded.h"
#include "foundation/streams/memory_stream.h"
#include "hosts/adapter/state_text.h"
#include "hosts/vst3/guarded_result.h"
#include "hosts/vst3/host_stream.h"
#include "hosts/vst3/restart_scope.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

MAudioPluginVST3Adapter::MAudioPluginVST3Adapter(std::unique_ptr<MAudioPlugin> newPlugin)
    : ownTag(newPlugin->hostTag), plugin(std::move(newPlugin)) {}

tresult PLUGIN_API MAudioPluginVST3Adapter::queryInterface(const TUID wanted, void** object) {
    if (object == nullptr) return kInvalidArgument;
    QUERY_INTERFACE(wanted, object, IMidiMapping::iid, IMidiMapping)
    if (MVST3AudioEffect::queryInterface(wanted, object) == kResultOk) return kResultOk;
    return EditControllerEx1::queryInterface(wanted, object);
}

uint32 PLUGIN_API MAudioPluginVST3Adapter::addRef() { return references.fetch_add(1) + 1; }

uint32 PLUGIN_API MAudioPluginVST3Adapter::release() {
    const uint32 left = references.fetch_sub(1) - 1;
    if (left == 0) delete this;
    return left;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::initialize(FUnknown* context) {
    if (initialized) return kResultFalse;
    const tresult result =
        GuardedResult("MAudioPluginVST3Adapter::initialize", kInternalError, [&] {
            const RestartScope restart(*this, kLatencyChanged);
            MVST3AudioEffect::initialize(context);
            EditControllerEx1::initialize(context);
            KeepHostName(context);
            plugin->hostTag = MString(ownTag).Append("VST3");
            instance.emplace();
            plugin->hostAdapter = this;
            inputArrangement = outputArrangement = SpeakerArr::kStereo;
            plugin->SetConnectedChannels(2, 2);
            BuildBuses();
            BuildParameters();
            return kResultOk;
        });
    initialized = result == kResultOk;
    if (!initialized) Forget();
    return result;
}

void MAudioPluginVST3Adapter::KeepHostName(FUnknown* context) {
    hostName = {};
    const FUnknownPtr<IHostApplication> host(context);
    String128 name{};
    if (host && host->getName(name) == kResultOk) {
        name[std::size(name) - 1] = 0;
        hostName = MString(name);
    }
}

tresult PLUGIN_API MAudioPluginVST3Adapter::terminate() {
    return GuardedResult("MAudioPluginVST3Adapter::terminate", kInternalError, [&] {
        Forget();
        return kResultOk;
    });
}

void MAudioPluginVST3Adapter::Forget() {
    KeepHandler(nullptr);
    MVST3AudioEffect::terminate();
    EditControllerEx1::terminate();
    controllerValues.clear();
    ownCount = 0;
    instance.reset();
    initialized = false;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::getState(IBStream* stream) {
    if (stream == nullptr) return kInvalidArgument;
    return GuardedResult("MAudioPluginVST3Adapter::getState", kResultFalse, [&] {
        MMemoryStream text;
        WriteState(*plugin, text);
        const auto size = static_cast<std::int32_t>(text.GetSize());
        return WriteAll(*stream, text, size) ? kResultOk : kResultFalse;
    });
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setState(IBStream* stream) {
    if (stream == nullptr) return kInvalidArgument;
    Guarded("MAudioPluginVST3Adapter::setState", [&] {
        MMemoryStream text = ReadAll(*stream, static_cast<std::int32_t>(kLargestState));
        const RestartScope restart(*this, 0);
        const AutomationEcho::Scope load(hostLoads);
        ReadState(*plugin, text);
    });
    return kResultOk;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setComponentState(IBStream* stream) {
    return stream != nullptr ? kResultOk : kInvalidArgument;
}

tresult PLUGIN_API MAudioPluginVST3Adapter::setComponentHandler(IComponentHandler* newHandler) {
    KeepHandler(newHandler);
    return EditControllerEx1::setComponentHandler(newHandler);
}

// The one before is let go outside of the lock: that may run code of the host.
void MAudioPluginVST3Adapter::KeepHandler(HandlerPointer newHandler) {
    MLocker lock(handlerLock);
    std::swap(handler, newHandler);
    lock.Release();
}

MAudioPluginVST3Adapter::HandlerPointer MAudioPluginVST3Adapter::Handler() {
    MLocker lock(handlerLock);
    return handler;
}

void MAudioPluginVST3Adapter::SendAutomation(int index, double position) {
    if (index >= 0 && index < ownCount) SendEdit(static_cast<ParamID>(index), position);
}

void MAudioPluginVST3Adapter::SendBypassAutomation(bool on) { SendEdit(kBypassID, on ? 1 : 0); }

// Each edit is a gesture of its own.
void MAudioPluginVST3Adapter::SendEdit(ParamID id, ParamValue value) {
    Guarded("MAudioPluginVST3Adapter::SendAutomation", [&] {
        if (SendWithinBlock(id, value)) return;
        const HandlerPointer host = Handler();
        if (!host) return;
        const AutomationEcho::Scope echo(automationEcho);
        host->beginEdit(id);
        host->performEdit(id, value);
        host->endEdit(id);
    });
}

// A controller's calls are not for the audio thread. What the host itself has just set is no news
// to it.
bool MAudioPluginVST3Adapter::SendWithinBlock(ParamID id, ParamValue value) {
    if (blockThread.load(std::memory_order_relaxed) != std::this_thread::get_id()) return false;
    if (blockChanges == nullptr || appliedID == id) return true;
    int32 index = 0;
    IParamValueQueue* const queue = blockChanges->addParameterData(id, index);
    if (queue != nullptr) queue->addPoint(0, value, index);
    return true;
}

void MAudioPluginVST3Adapter::GenerateMIDIEvent(int time, const std::uint8_t* bytes) {
    Guarded("MAudioPluginVST3Adapter::GenerateMIDIEvent", [&] { outputEvents.Add(time, bytes); });
}

void MAudioPluginVST3Adapter::UpdateLatency() {
    TraceNumber("Latency: ", plugin->GetReportedLatency());
    RequestRestart(kLatencyChanged);
}

// Behind each load all values of the host's side are out of date.
void MAudioPluginVST3Adapter::StateChanged() {
    stateNumber.fetch_add(1);
    if (!hostLoads.IsHere()) {
        Guarded("MAudioPluginVST3Adapter::StateChanged", [&] {
            const FUnknownPtr<IComponentHandler2> host(Handler().get());
            if (host) host->setDirty(true);
        });
    }
    RequestRestart(kParamValuesChanged);
}

void MAudioPluginVST3Adapter::RequestRestart(int32 flags) {
    collectedRestart.fetch_or(flags);
    if (restartScopes.load() == 0) TellRestart(collectedRestart.exchange(0));
}

void MAudioPluginVST3Adapter::TellRestart(int32 flags) {
    if (flags == 0) return;
    Guarded("MAudioPluginVST3Adapter::TellRestart", [&] {
        const HandlerPointer host = Handler();
        if (host) host->restartComponent(flags);
    });
}

bool MAudioPluginVST3Adapter::ChangeEditorSize(EditorSize) { return false; }
