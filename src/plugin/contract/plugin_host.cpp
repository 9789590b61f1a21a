// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/plugin_host.h"

#include <utility>

#include "foundation/text/exception.h"

namespace {

std::intptr_t CallAudioHost(void* hostObject, int code, PluginArguments& arguments) {
    return static_cast<MAudioEffectPluginHost*>(hostObject)->Dispatch(code, arguments);
}

}  // namespace

MPluginHost::~MPluginHost() { Close(); }

void MPluginHost::Close() {
    if (plugin == nullptr) return;
    try {
        Command(PluginCommand::kDelete);
    } catch (const MException&) {
        // Its lock can't be had: an effect that may still be running is better left behind.
    }
    plugin = nullptr;
    descriptor = nullptr;
}

MAudioEffectPluginHost::~MAudioEffectPluginHost() { Close(); }

int MPluginHost::Open() {
    PluginArguments none;
    plugin = reinterpret_cast<MPlugin*>(entry(nullptr, PluginCommand::kCreate, none));
    return plugin != nullptr ? 0 : -1;
}

void MPluginHost::Notify() {}

std::intptr_t MPluginHost::Command(int code, PluginArguments& arguments) {
    if (plugin == nullptr) return -1;
    const std::intptr_t answer = entry(plugin, code, arguments);
    arguments.DeleteOwnedObjects();
    return answer;
}

std::intptr_t MPluginHost::Query() { return -1; }

std::intptr_t MPluginHost::Command(int code) {
    PluginArguments none;
    return Command(code, none);
}

int MAudioEffectPluginHost::Open() {
    const int answer = MPluginHost::Open();
    if (answer != 0) return answer;
    const PluginHostFunction function = CallAudioHost;
    PluginArguments arguments(static_cast<void*>(this), &function);
    Command(PluginCommand::kSetHost, arguments);
    return answer;
}

int MAudioEffectPluginHost::GetTailLength() {
    return static_cast<int>(Command(PluginCommand::kGetTailLength));
}

void MAudioEffectPluginHost::ProcessUpdate() { Command(PluginCommand::kProcessUpdate); }

std::intptr_t MAudioEffectPluginHost::Dispatch(int code, PluginArguments& arguments) {
    if (code == 0) return OnCommand(arguments);
    if (code < 0 || code > static_cast<int>(kCallbackCount)) return -1;
    const CallbackFunction function = callbacks[static_cast<std::size_t>(code) - 1];
    return function != nullptr ? function(*this, arguments) : -1;
}

std::intptr_t MAudioEffectPluginHost::OnCommand(PluginArguments&) { return -1; }

void MAudioEffectPluginHost::SetCallback(Callback callback, CallbackFunction function) {
    callbacks[static_cast<std::size_t>(callback) - 1] = function;
}

MPluginSystem::Answer MPluginSystem::Create(const MString&, PluginEntry entry,
                                            std::unique_ptr<MAudioEffectPluginHost>& result) {
    if (entry == nullptr) return NoEntry;
    auto host = std::make_unique<MAudioEffectPluginHost>(entry);
    if (host->Open() != 0) return NotOpened;
    host->descriptor =
        reinterpret_cast<PluginDescriptor*>(host->Command(PluginCommand::kGetDescriptor));
    if (host->descriptor == nullptr) return NoDescriptor;
    host->Command(PluginCommand::kInit);
    result = std::move(host);
    return Success;
}

std::unique_ptr<MAudioEffectPluginHost> MPluginSystem::CreateOrRaise(const MString& name,
                                                                     PluginEntry entry) {
    std::unique_ptr<MAudioEffectPluginHost> host;
    if (Create(name, entry, host) != Success) throw MException("Error creating plugin.");
    return host;
}
