// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "public.sdk/source/vst/vstcomponent.h"

// The processing half of a VST 3 plug-in over the SDK's component: audio and event buses, and an
// answer to every call of a processor that changes nothing. It processes samples of 32 bits.
//
// Threads  as the interface says: the host's main thread, process on its audio thread
// Memory   buses are made and forgotten on the main thread
// Errors   std::bad_alloc where buses are made; the interface's own codes else
class MVST3AudioEffect : public Steinberg::Vst::Component,
                         public Steinberg::Vst::IAudioProcessor,
                         public Steinberg::Vst::IProcessContextRequirements {
public:
    using tresult = Steinberg::tresult;
    using int32 = Steinberg::int32;
    using uint32 = Steinberg::uint32;
    using TBool = Steinberg::TBool;

    MVST3AudioEffect();

    tresult PLUGIN_API setBusArrangements(Steinberg::Vst::SpeakerArrangement* inputs,
                                          int32 inputCount,
                                          Steinberg::Vst::SpeakerArrangement* outputs,
                                          int32 outputCount) override;
    tresult PLUGIN_API getBusArrangement(Steinberg::Vst::BusDirection direction, int32 index,
                                         Steinberg::Vst::SpeakerArrangement& arrangement) override;
    tresult PLUGIN_API canProcessSampleSize(int32 symbolicSampleSize) override;
    uint32 PLUGIN_API getLatencySamples() override;
    tresult PLUGIN_API setupProcessing(Steinberg::Vst::ProcessSetup& setup) override;
    tresult PLUGIN_API setProcessing(TBool state) override;
    tresult PLUGIN_API process(Steinberg::Vst::ProcessData& data) override;
    uint32 PLUGIN_API getTailSamples() override;
    uint32 PLUGIN_API getProcessContextRequirements() override;

    OBJ_METHODS(MVST3AudioEffect, Component)
    DEFINE_INTERFACES
    DEF_INTERFACE(IAudioProcessor)
    DEF_INTERFACE(IProcessContextRequirements)
    END_DEFINE_INTERFACES(Component)
    REFCOUNT_METHODS(Component)

protected:
    // Behind the buses of its kind and direction. Main buses are active unless the host says else.
    void AddAudioBus(Steinberg::Vst::BusDirection direction, const char16_t* name,
                     Steinberg::Vst::BusType type, Steinberg::Vst::SpeakerArrangement arrangement);
    void AddEventBus(Steinberg::Vst::BusDirection direction, const char16_t* name,
                     int32 channelCount);
    // Of all audio buses of a direction.
    void Arrange(Steinberg::Vst::BusDirection direction,
                 Steinberg::Vst::SpeakerArrangement arrangement);

    Steinberg::Vst::ProcessSetup processSetup{Steinberg::Vst::kRealtime, Steinberg::Vst::kSample32,
                                              1024, 44100};
};
