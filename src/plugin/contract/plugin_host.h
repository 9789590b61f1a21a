// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "foundation/objects/event_target.h"
#include "plugin/contract/audio_effect_plugin.h"

// The frame's side of an effect: creates it, sends it commands, answers its questions.
//
//     std::unique_ptr<MAudioEffectPluginHost> host =
//         MPluginSystem::CreateOrRaise("chorus", entry);
//     PluginArguments arguments(2, 48000);
//     host->Command(PluginCommand::kPrepare, arguments);
//
// Threads  as the effect's operations; creation and deletion on the owner's thread
// Errors   MException "Error creating plugin." out of CreateOrRaise

// An effect's entry function. With a null object it creates one first; with kCreate it answers the
// object and does nothing else; any other command goes to the object's Dispatch.
using PluginEntry = std::intptr_t (*)(MPlugin* object, int code, PluginArguments& arguments);

class MPluginHost : public MEventTarget {
public:
    explicit MPluginHost(PluginEntry entry) : entry(entry) {}
    MPluginHost(const MPluginHost&) = delete;
    MPluginHost& operator=(const MPluginHost&) = delete;
    // Deletes the effect through its command, which waits for a running Process.
    ~MPluginHost() override;

    // Makes the effect; 0 when there is one.
    virtual int Open();
    virtual void Notify();
    // -1 without an effect and for a command it does not know.
    virtual std::intptr_t Command(int code, PluginArguments& arguments);
    virtual std::intptr_t Query();

    // Without arguments.
    std::intptr_t Command(int code);

    MPlugin* plugin = nullptr;               // owned
    PluginDescriptor* descriptor = nullptr;  // belongs to the effect

protected:
    // Deletes the effect. Each class that answers its questions does so in its own destructor.
    void Close();

private:
    PluginEntry entry;
};

class MAudioEffectPluginHost : public MPluginHost {
public:
    // What an effect tells its host, codes 1 to 7.
    enum class Callback : std::int32_t {
        OnLoad = 1,
        OnStateChanged = 2,
        OnSetup = 3,
        OnStructureChanged = 4,
        OnParametersChanged = 5,
        OnParameterListChanged = 6,
        OnParameterRequest = 7,
    };
    using CallbackFunction = std::intptr_t (*)(MAudioEffectPluginHost& host,
                                               PluginArguments& arguments);

    using MPluginHost::MPluginHost;
    ~MAudioEffectPluginHost() override;

    // Also makes this object the effect's host.
    int Open() override;
    virtual int GetTailLength();
    virtual void ProcessUpdate();

    // What the effect asks: code 0 is OnCommand, 1 to 7 the callbacks. -1 where none is set.
    std::intptr_t Dispatch(int code, PluginArguments& arguments);
    virtual std::intptr_t OnCommand(PluginArguments& arguments);
    // Before the first Process; null takes a callback away.
    void SetCallback(Callback callback, CallbackFunction function);

    MAudioEffectPlugin* Effect() const { return static_cast<MAudioEffectPlugin*>(plugin); }

    void* owner = nullptr;  // for the callbacks; this class does not use it

private:
    static constexpr std::size_t kCallbackCount = 7;

    std::array<CallbackFunction, kCallbackCount> callbacks{};
};

class MPluginSystem {
public:
    enum Answer : int { Success = 0, NoEntry = 4, NotOpened = 5, NoDescriptor = 6 };

    // Makes and initialises an effect; result is set on Success only. name is the effect's; the
    // entry alone decides what is made.
    static Answer Create(const MString& name, PluginEntry entry,
                         std::unique_ptr<MAudioEffectPluginHost>& result);
    static std::unique_ptr<MAudioEffectPluginHost> CreateOrRaise(const MString& name,
                                                                 PluginEntry entry);
};
