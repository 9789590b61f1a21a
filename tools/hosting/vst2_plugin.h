// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "hosted_plugin.h"
#include "hosts/vst2/vst2_interface.h"
#include "shared_library.h"

// A VST 2 library and its instances, open to what only a test of a plug-in calls itself.
//
// The host echoes what a plug-in automates back to it, as many do.
//
// Errors   HostingError from the constructors

class Vst2Library : public HostedLibrary, public std::enable_shared_from_this<Vst2Library> {
public:
    using Main = AEffect* (*)(audioMasterCallback);

    explicit Vst2Library(const std::string& path);

    std::unique_ptr<HostedPlugin> Create() override;

    Main Entry() const { return entry; }
    const SharedLibrary& Library() const { return library; }

private:
    SharedLibrary library;
    Main entry;
};

class Vst2Plugin : public HostedPlugin {
public:
    explicit Vst2Plugin(std::shared_ptr<Vst2Library> library);
    ~Vst2Plugin() override;

    const HostedInfo& Info() const override { return info; }
    // One bus for all pins of a direction.
    std::vector<HostedBus> Buses() override;
    bool Arrange(int inputChannels, int outputChannels) override;
    void Setup(double sampleRate, int largestBlock) override;
    void Activate(bool on) override;
    // The channels of all buses, one behind the other; null for pins that are left.
    void Process(HostedBlock& block) override;
    int Latency() override { return effect->initialDelay; }
    std::int64_t TailLength() override;

    std::vector<HostedParameter> Parameters() override;
    double Position(std::uint32_t id) override;
    void SetPosition(std::uint32_t id, double position) override;
    std::string TextAt(std::uint32_t id, double position) override;
    std::optional<double> PositionOf(std::uint32_t id, const std::string& text) override;
    std::string State() override;
    bool SetState(std::string_view state) override;

    AEffect& Effect() { return *effect; }
    VstIntPtr Dispatch(int opcode, int index = 0, VstIntPtr value = 0, void* pointer = nullptr,
                       float option = 0) {
        return effect->dispatcher(effect, opcode, index, value, pointer, option);
    }

private:
    // What a plug-in asks of its host.
    static VstIntPtr Callback(AEffect* effect, int opcode, int index, VstIntPtr value,
                              void* pointer, float option);
    VstIntPtr Answer(int opcode, int index, VstIntPtr value, void* pointer, float option);

    std::string Text(int opcode, int index = 0);
    void FillInfo();
    void FillTime(const HostedTransport& transport);
    void SendMidi(const std::vector<HostedMidi>& midi);
    void KeepMidi(const VstEvents& events);

    std::shared_ptr<Vst2Library> library;  // lives longer than what is made from it
    AEffect* effect = nullptr;
    HostedInfo info;
    std::vector<double> defaults;

    double rate = 44100;
    int blockSize = 1024;
    std::int64_t doneSamples = 0;

    // Of Process.
    struct Time {
        VstTimeInfo info;
        char room[40];  // for what hosts have at its end
    };
    Time time = {};
    bool isTimeTold = false;
    std::vector<float*> inputs;
    std::vector<float*> outputs;
    std::vector<VstMidiEvent> events;
    std::vector<std::intptr_t> eventList;  // a VstEvents and its pointers
    std::vector<HostedMidi> sent;
};
