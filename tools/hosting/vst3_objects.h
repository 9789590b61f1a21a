// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <pluginterfaces/vst/ivstevents.h>
#include <pluginterfaces/vst/ivstparameterchanges.h>

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "hosted_plugin.h"

// What a VST 3 host hands to a plug-in with each block.
//
// Threads  the audio thread
// Memory   lists keep their room when they are cleared

// An object of the host's own: it is not counted and outlives whoever knows it.
template <typename... Interfaces>
class HostObject : public Interfaces... {
public:
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID wanted,
                                                 void** object) override {
        *object = nullptr;
        ((*object == nullptr && Matches<Interfaces>(wanted)
              ? void(*object = static_cast<Interfaces*>(this))
              : void()),
         ...);
        return *object != nullptr ? Steinberg::kResultOk : Steinberg::kNoInterface;
    }
    Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
    Steinberg::uint32 PLUGIN_API release() override { return 1; }

private:
    template <typename Interface>
    static bool Matches(const Steinberg::TUID wanted) {
        return Steinberg::FUnknownPrivate::iidEqual(wanted, Interface::iid) ||
               Steinberg::FUnknownPrivate::iidEqual(wanted, Steinberg::FUnknown::iid);
    }
};

class HostParameterQueue final : public HostObject<Steinberg::Vst::IParamValueQueue> {
public:
    HostParameterQueue();
    void Restart(Steinberg::Vst::ParamID newId);

    Steinberg::Vst::ParamID PLUGIN_API getParameterId() override { return id; }
    Steinberg::int32 PLUGIN_API getPointCount() override;
    Steinberg::tresult PLUGIN_API getPoint(Steinberg::int32 index, Steinberg::int32& sampleOffset,
                                           Steinberg::Vst::ParamValue& value) override;
    Steinberg::tresult PLUGIN_API addPoint(Steinberg::int32 sampleOffset,
                                           Steinberg::Vst::ParamValue value,
                                           Steinberg::int32& index) override;

private:
    struct Point {
        Steinberg::int32 offset;
        Steinberg::Vst::ParamValue value;
    };

    Steinberg::Vst::ParamID id = 0;
    std::vector<Point> points;
};

class HostParameterChanges final : public HostObject<Steinberg::Vst::IParameterChanges> {
public:
    // Has room for more than most blocks need.
    HostParameterChanges();

    // A queue for each parameter, in the order in which they first appear.
    void Fill(std::span<const HostedChange> changes);
    void Add(const HostedChange& change);
    void Clear() { used = 0; }

    Steinberg::int32 PLUGIN_API getParameterCount() override;
    Steinberg::Vst::IParamValueQueue* PLUGIN_API getParameterData(Steinberg::int32 index) override;
    Steinberg::Vst::IParamValueQueue* PLUGIN_API addParameterData(const Steinberg::Vst::ParamID& id,
                                                                  Steinberg::int32& index) override;

private:
    std::vector<std::unique_ptr<HostParameterQueue>> queues;  // used first, then spare ones
    std::size_t used = 0;
};

class HostEventList final : public HostObject<Steinberg::Vst::IEventList> {
public:
    void Clear() { events.clear(); }
    // Notes and key pressure have events of their own, a program change comes as a controller.
    // False for what the interface carries as parameter changes.
    bool Add(const HostedMidi& message);
    // Notes, key pressure and controllers as bytes, added to what is there.
    void CopyTo(std::vector<HostedMidi>& messages) const;

    Steinberg::int32 PLUGIN_API getEventCount() override;
    Steinberg::tresult PLUGIN_API getEvent(Steinberg::int32 index,
                                           Steinberg::Vst::Event& event) override;
    Steinberg::tresult PLUGIN_API addEvent(Steinberg::Vst::Event& event) override;

private:
    std::vector<Steinberg::Vst::Event> events;
};
