// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst3/vst3_audio_effect.h"

#include "base/source/updatehandler.h"

using namespace Steinberg;
using namespace Steinberg::Vst;

// The controller's base makes a singleton that two first instances at once would make twice.
MVST3AudioEffect::MVST3AudioEffect() {
    [[maybe_unused]] static UpdateHandler* const madeOnce = UpdateHandler::instance();
}

tresult PLUGIN_API MVST3AudioEffect::setBusArrangements(SpeakerArrangement*, int32,
                                                        SpeakerArrangement*, int32) {
    return kResultFalse;
}

tresult PLUGIN_API MVST3AudioEffect::getBusArrangement(BusDirection direction, int32 index,
                                                       SpeakerArrangement& arrangement) {
    const BusList* const buses = getBusList(kAudio, direction);
    if (buses == nullptr || index < 0 || index >= static_cast<int32>(buses->size()))
        return kInvalidArgument;
    const auto& bus = (*buses)[static_cast<std::size_t>(index)];
    arrangement = static_cast<const AudioBus*>(bus.get())->getArrangement();
    return kResultTrue;
}

tresult PLUGIN_API MVST3AudioEffect::canProcessSampleSize(int32 symbolicSampleSize) {
    return symbolicSampleSize == kSample32 ? kResultTrue : kResultFalse;
}

uint32 PLUGIN_API MVST3AudioEffect::getLatencySamples() { return 0; }

tresult PLUGIN_API MVST3AudioEffect::setupProcessing(ProcessSetup& setup) {
    if (canProcessSampleSize(setup.symbolicSampleSize) != kResultTrue) return kResultFalse;
    processSetup = setup;
    return kResultOk;
}

tresult PLUGIN_API MVST3AudioEffect::setProcessing(TBool) { return kResultOk; }

tresult PLUGIN_API MVST3AudioEffect::process(ProcessData&) { return kResultOk; }

uint32 PLUGIN_API MVST3AudioEffect::getTailSamples() { return kNoTail; }

uint32 PLUGIN_API MVST3AudioEffect::getProcessContextRequirements() { return 0; }

void MVST3AudioEffect::AddAudioBus(BusDirection direction, const char16_t* name, BusType type,
                                   SpeakerArrangement arrangement) {
    const int32 flags = type == kMain ? BusInfo::kDefaultActive : 0;
    getBusList(kAudio, direction)
        ->push_back(IPtr<Bus>(new AudioBus(name, type, flags, arrangement), false));
}

void MVST3AudioEffect::AddEventBus(BusDirection direction, const char16_t* name,
                                   int32 channelCount) {
    getBusList(kEvent, direction)
        ->push_back(
            IPtr<Bus>(new EventBus(name, kMain, BusInfo::kDefaultActive, channelCount), false));
}

void MVST3AudioEffect::Arrange(BusDirection direction, SpeakerArrangement arrangement) {
    for (const auto& bus : *getBusList(kAudio, direction))
        static_cast<AudioBus*>(bus.get())->setArrangement(arrangement);
}
