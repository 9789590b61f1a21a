// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/plugin.h"

#include "foundation/objects/lock.h"
#include "foundation/xml/store_visitor.h"

MPlugin::~MPlugin() = default;

std::intptr_t MPlugin::Dispatch(int code, PluginArguments& arguments) {
    switch (code) {
        case PluginCommand::kSetHost: {
            auto* function = arguments.Pointer<const PluginHostFunction>(1);
            return SetHost(arguments.Pointer<void>(0), function == nullptr ? nullptr : *function);
        }
        case PluginCommand::kDelete:
            WaitForProcess();
            delete this;
            return 0;
        case PluginCommand::kGetDescriptor:
            return reinterpret_cast<std::intptr_t>(&descriptor);
        case PluginCommand::kInit:
            return Init();
        case PluginCommand::kParameterChanged:
            RunParameterChanged(static_cast<int>(arguments.Integer(0)));
            return 0;
        case PluginCommand::kOpenEditor:
            OpenEditor(arguments.Pointer<MObject>(0));
            return 0;
        case PluginCommand::kReset:
            Reset(arguments.Pointer<MObject>(0));
            return 0;
        case PluginCommand::kStore:
            return RunOnTree(&MPlugin::Store, arguments.Pointer<MAttribute>(0));
        case PluginCommand::kLoad:
            return RunOnTree(&MPlugin::Load, arguments.Pointer<MAttribute>(0));
        case PluginCommand::kNotify:
            Notify();
            return 0;
        case PluginCommand::kQuery:
            return Query();
        case PluginCommand::kRandomize:
            Randomize(arguments.Number(0));
            return 0;
        case PluginCommand::kNotifyPair:
            NotifyPair(arguments.Pointer<MObject>(0), arguments.Pointer<MObject>(1));
            return 0;
        default:
            return -1;
    }
}

std::intptr_t MPlugin::SetHost(void* newHostObject, PluginHostFunction newHostFunction) {
    hostObject = newHostObject;
    hostFunction = newHostFunction;
    return 0;
}

std::intptr_t MPlugin::Init() { return 0; }

void MPlugin::ResetParameters() {
    for (int p = 0; p < descriptor.parameterCount; ++p) {
        ParameterRecord& record = descriptor.parameters[p];
        if (record.type == ParameterType::Float)
            record.stored.store(record.Get(), ParameterRecord::kRelaxed);
    }
}

void MPlugin::ParameterChanged(int) {}
void MPlugin::Update() {}
void MPlugin::OpenEditor(MObject*) {}
void MPlugin::Reset(MObject*) {}

void MPlugin::Store(MAttribute* tree) { StoreParameters({true, *tree}); }

void MPlugin::Load(MAttribute* tree) {
    const std::vector<double> values = StoreParameters({false, *tree});
    {
        MLocker lock(descriptor.lock);
        for (std::size_t p = 0; p < values.size(); ++p)
            descriptor.parameters[p].SetEffective(values[p]);
    }
    RequestUpdate();
}

void MPlugin::Notify() {}

std::intptr_t MPlugin::Query() { return -1; }

void MPlugin::Randomize(double amount) {
    {
        MLocker lock(descriptor.lock);
        for (int p = 0; p < descriptor.parameterCount; ++p)
            descriptor.parameters[p].Randomize(amount);
        if (amount == 1) RandomizeSpecial();
    }
    Update();
}

void MPlugin::RandomizeSpecial() {}
void MPlugin::NotifyPair(MObject*, MObject*) {}

void MPlugin::UpdateIfNeeded() {
    // Cleared first: a change that comes while Update runs asks for another one.
    const auto keep = static_cast<std::uint8_t>(~PluginDescriptor::kUpdateDue);
    if (descriptor.flags[1].fetch_and(keep, std::memory_order_acquire) &
        PluginDescriptor::kUpdateDue)
        Update();
}

void MPlugin::RequestUpdate() {
    descriptor.flags[1].fetch_or(PluginDescriptor::kUpdateDue, std::memory_order_release);
}

std::intptr_t MPlugin::CallHost(int code) {
    if (hostFunction == nullptr) return -1;
    PluginArguments none;
    return hostFunction(hostObject, code, none);
}

// -1 where there is no tree.
std::intptr_t MPlugin::RunOnTree(void (MPlugin::*operation)(MAttribute*), MAttribute* tree) {
    if (tree == nullptr) return -1;
    (this->*operation)(tree);
    return 0;
}

// The values that are written, or that were read and are not in use yet.
std::vector<double> MPlugin::StoreParameters(const MStoreVisitor& visitor) const {
    std::vector<double> values;
    for (int p = 0; p < descriptor.parameterCount; ++p) {
        const ParameterRecord& record = descriptor.parameters[p];
        record.Store(visitor, values.emplace_back(record.Effective()));
    }
    return values;
}

void MPlugin::RunParameterChanged(int index) {
    ParameterChanged(index);
    const bool listed = index >= 0 && index < descriptor.parameterCount;
    if (!listed || descriptor.parameters[index].Has(ParameterFlag::kUpdates)) Update();
}

void MPlugin::WaitForProcess() { MLocker lock(descriptor.lock); }
