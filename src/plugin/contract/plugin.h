// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "foundation/objects/event_target.h"
#include "plugin/contract/parameter_record.h"
#include "plugin/contract/plugin_arguments.h"

class MAttribute;
class MLock;
class MMIDIProcessorBase;
struct MStoreVisitor;

// What the frame expects of any effect, audio or not: commands by number, and the virtual
// operations behind them.
//
// An effect is created through its entry function and from then on is driven by commands only:
//
//     entry(nullptr, kCreate, arguments)   answers the object
//     kGetDescriptor, kInit                once
//     kPrepare ... kProcess ...            see audio_effect_plugin.h
//     kDelete                              waits for a running Process; no other command may run
//
// Threads  an operation that touches state shared with processing takes descriptor.lock; the rest
//          is the frame's business
// Errors   "Could not acquire mutex." where the lock can't be taken

// Commands that every effect understands; the numbers are part of the binary interface.
namespace PluginCommand {
inline constexpr int kSetHost = 0;
inline constexpr int kDelete = 1;
inline constexpr int kGetDescriptor = 2;
inline constexpr int kInit = 3;
inline constexpr int kParameterChanged = 4;
inline constexpr int kOpenEditor = 5;
inline constexpr int kReset = 6;
inline constexpr int kCreate = 7;  // to the entry function: answer the object, do nothing else
inline constexpr int kStore = 11;
inline constexpr int kLoad = 12;
inline constexpr int kNotify = 13;
inline constexpr int kQuery = 14;
inline constexpr int kRandomize = 15;
inline constexpr int kNotifyPair = 20;
}  // namespace PluginCommand

// What an effect calls its host with: code and arguments.
using PluginHostFunction = std::intptr_t (*)(void* hostObject, int code,
                                             PluginArguments& arguments);

// What the frame reads of an effect and writes into it.
struct PluginDescriptor {
    static constexpr std::uint8_t kUsesHostTime = 1 << 0;  // first byte: wants the transport
    static constexpr std::uint8_t kMetersInput = 1 << 1;   // second byte: always, not just on show
    static constexpr std::uint8_t kUpdateDue = 1 << 2;     // second byte

    std::atomic<std::uint8_t> flags[2] = {};
    MLock* lock =
        nullptr;  // held by Process for a whole block; null in an effect that stands alone
    ParameterRecord* parameters = nullptr;
    int parameterCount = 0;
    SpecialParameterRecord* specials = nullptr;
    int specialCount = 0;
    int inputBusCount = 1;  // 2: the effect wants a side-chain
    MMIDIProcessorBase* midiProcessor = nullptr;
};

class MPlugin : public MEventTarget {
public:
    MPlugin() = default;
    MPlugin(const MPlugin&) = delete;
    MPlugin& operator=(const MPlugin&) = delete;
    ~MPlugin() override;

    // Runs a command; -1 for one that the effect does not know.
    virtual std::intptr_t Dispatch(int code, PluginArguments& arguments);

    virtual std::intptr_t SetHost(void* hostObject, PluginHostFunction hostFunction);
    virtual std::intptr_t Init();
    // The present values become those of the last block, so that nothing ramps into the next one.
    virtual void ResetParameters();
    virtual void ParameterChanged(int index);
    virtual void Update();
    virtual void OpenEditor(MObject* panel);
    virtual void Reset(MObject* panel);
    // The parameters, in an item of their own: what the frame keeps in songs and presets. Store
    // writes what is not at its default; Load gives each parameter what it finds or its default and
    // asks for an update. Load takes the lock, and nothing has changed where it raises. Host and
    // editor are not told. The tree is not null.
    virtual void Store(MAttribute* tree);
    virtual void Load(MAttribute* tree);
    virtual void Notify();
    virtual std::intptr_t Query();
    // amount 0..1; exactly 1 draws the special objects anew too. Takes the lock, then updates.
    virtual void Randomize(double amount);
    virtual void RandomizeSpecial();  // under the lock
    virtual void NotifyPair(MObject* first, MObject* second);

    // Runs Update where a change has asked for it. Called before each Process.
    void UpdateIfNeeded();
    void RequestUpdate();

    PluginDescriptor descriptor;

protected:
    // Tells the host. -1 without a host.
    std::intptr_t CallHost(int code);

private:
    std::intptr_t RunOnTree(void (MPlugin::*operation)(MAttribute*), MAttribute* tree);
    std::vector<double> StoreParameters(const MStoreVisitor& visitor) const;
    void RunParameterChanged(int index);
    void WaitForProcess();

    void* hostObject = nullptr;
    PluginHostFunction hostFunction = nullptr;
};
