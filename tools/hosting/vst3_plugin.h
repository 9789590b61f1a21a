// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pluginterfaces/base/ipluginbase.h>
#include <pluginterfaces/base/smartpointer.h>
#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivsteditcontroller.h>
#include <pluginterfaces/vst/ivsthostapplication.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>

#include "hosted_plugin.h"
#include "shared_library.h"
#include "vst3_objects.h"

// A VST 3 library and its instances, open to what only a test of a plug-in calls itself.
//
// Errors   HostingError from the constructors

class Vst3Library : public HostedLibrary, public std::enable_shared_from_this<Vst3Library> {
public:
    explicit Vst3Library(const std::string& path);
    ~Vst3Library() override;

    // Of the first class of effects.
    std::unique_ptr<HostedPlugin> Create() override;

    Steinberg::IPluginFactory& Factory() { return *factory; }
    const SharedLibrary& Library() const { return library; }

private:
    class Entry;

    SharedLibrary library;
    std::unique_ptr<Entry> entry;
    Steinberg::IPtr<Steinberg::IPluginFactory> factory;
};

class Vst3Plugin : public HostedPlugin {
public:
    Vst3Plugin(std::shared_ptr<Vst3Library> library, const Steinberg::PClassInfo& effectClass);
    ~Vst3Plugin() override;

    const HostedInfo& Info() const override { return info; }
    std::vector<HostedBus> Buses() override;
    bool Arrange(int inputChannels, int outputChannels) override;
    void Setup(double sampleRate, int largestBlock) override;
    void Activate(bool on) override;
    void Process(HostedBlock& block) override;
    int Latency() override { return static_cast<int>(processor->getLatencySamples()); }
    std::int64_t TailLength() override;

    std::vector<HostedParameter> Parameters() override;
    double Position(std::uint32_t id) override { return controller->getParamNormalized(id); }
    void SetPosition(std::uint32_t id, double position) override;
    std::string TextAt(std::uint32_t id, double position) override;
    std::optional<double> PositionOf(std::uint32_t id, const std::string& text) override;
    std::string State() override;
    bool SetState(std::string_view state) override;

    Steinberg::Vst::IComponent& Component() { return *component; }
    Steinberg::Vst::IAudioProcessor& Processor() { return *processor; }
    Steinberg::Vst::IEditController& Controller() { return *controller; }

private:
    class Application;
    class Handler;

    void Connect(Steinberg::Vst::IConnectionPoint* from, Steinberg::Vst::IConnectionPoint* to);
    void FillInfo(const Steinberg::PClassInfo& effectClass);
    void MakeController();
    void ActivateBuses(bool on);
    void TakeMidi(const std::vector<HostedMidi>& midi);
    void FillContext(const HostedTransport& transport);
    std::vector<Steinberg::Vst::SpeakerArrangement> Arrangements(
        Steinberg::Vst::BusDirection direction, int mainChannels);

    std::shared_ptr<Vst3Library> library;  // lives longer than what is made from it
    std::unique_ptr<Application> application;
    std::unique_ptr<Handler> handler;
    HostedInfo info;
    Steinberg::IPtr<Steinberg::Vst::IComponent> component;
    Steinberg::IPtr<Steinberg::Vst::IAudioProcessor> processor;
    Steinberg::IPtr<Steinberg::Vst::IEditController> controller;
    bool isSingleObject = false;

    double rate = 44100;
    std::int64_t doneSamples = 0;
    std::mutex pendingLock;
    std::vector<HostedChange> pending;  // under pendingLock: by SetPosition, for the next block

    // Of Process.
    HostParameterChanges inputChanges;
    HostParameterChanges outputChanges;
    HostEventList inputEvents;
    HostEventList outputEvents;
    Steinberg::Vst::ProcessContext context = {};
    std::vector<Steinberg::Vst::AudioBusBuffers> inputBuses;
    std::vector<Steinberg::Vst::AudioBusBuffers> outputBuses;
};
