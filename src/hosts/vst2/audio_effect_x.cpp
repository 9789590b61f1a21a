// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst2/audio_effect_x.h"

// What hosts say since version 2 of the interface.
struct Version2Opcodes {
    using Effect = AudioEffectX;
    using Call = VstCall;
    using Handler = OpcodeHandler<AudioEffectX>;

    static VstIntPtr CanBeAutomated(Effect& effect, const Call& call) {
        return effect.isParameter(call.index) && effect.canParameterBeAutomated(call.index);
    }

    // Without a text a host asks whether texts are read at all.
    static VstIntPtr StringToParameter(Effect& effect, const Call& call) {
        if (!effect.isParameter(call.index)) return 0;
        return call.pointer == nullptr || effect.string2parameter(call.index, call.Text());
    }

    static VstIntPtr GetProgramNameIndexed(Effect& effect, const Call& call) {
        return call.pointer != nullptr && effect.getProgramNameIndexed(call.index, call.Text());
    }

    template <bool (AudioEffectX::*Get)(int, VstPinProperties&)>
    static VstIntPtr GetPin(Effect& effect, const Call& call) {
        const auto pin = static_cast<VstPinProperties*>(call.pointer);
        return pin != nullptr && (effect.*Get)(call.index, *pin);
    }

    template <int AEffect::*Count>
    static VstIntPtr HasPin(Effect& effect, const Call& call) {
        return call.index >= 0 && call.index < effect.getAeffect()->*Count;
    }

    template <bool (AudioEffectX::*Get)(char*)>
    static VstIntPtr GetText(Effect& effect, const Call& call) {
        return call.pointer != nullptr && (effect.*Get)(call.Text());
    }

    static VstIntPtr SetArrangement(Effect& effect, const Call& call) {
        return effect.setSpeakerArrangement(
            reinterpret_cast<const VstSpeakerArrangement*>(call.value),
            static_cast<const VstSpeakerArrangement*>(call.pointer));
    }

    static VstIntPtr GetArrangement(Effect& effect, const Call& call) {
        return effect.getSpeakerArrangement(reinterpret_cast<VstSpeakerArrangement**>(call.value),
                                            static_cast<VstSpeakerArrangement**>(call.pointer));
    }

    static VstIntPtr SetRateAndSize(Effect& effect, const Call& call) {
        effect.setBlockSize(static_cast<int>(call.value));
        effect.setSampleRate(call.option);
        return 1;
    }

    // Another product's is refused before it is loaded.
    static VstIntPtr BeginLoad(Effect& effect, const Call& call) {
        const auto info = static_cast<const VstPatchInfo*>(call.pointer);
        if (info == nullptr) return 0;
        return info->uniqueID == effect.getAeffect()->uniqueID ? 1 : -1;
    }

    static VstIntPtr ProcessEvents(Effect& effect, const Call& call) {
        const auto events = static_cast<const VstEvents*>(call.pointer);
        return events != nullptr && effect.processEvents(*events);
    }

    template <bool (AEffEditor::*Use)(const VstKeyCode&)>
    static VstIntPtr UseKey(Effect& effect, const Call& call) {
        const VstKeyCode key{call.index, static_cast<std::uint8_t>(call.value),
                             static_cast<std::uint8_t>(call.option)};
        return effect.editor != nullptr && (effect.editor.get()->*Use)(key);
    }

    // A question without arguments.
    template <auto Get>
    static VstIntPtr Ask(Effect& effect, const Call&) {
        return (effect.*Get)();
    }

    template <int Number>
    static VstIntPtr Answer(Effect&, const Call&) {
        return Number;
    }

    static constexpr Handler kTable[] = {
        {effProcessEvents, ProcessEvents},
        {effCanBeAutomated, CanBeAutomated},
        {effString2Parameter, StringToParameter},
        {effGetProgramNameIndexed, GetProgramNameIndexed},
        {kEffConnectInput, HasPin<&AEffect::numInputs>},
        {kEffConnectOutput, HasPin<&AEffect::numOutputs>},
        {effGetInputProperties, GetPin<&AudioEffectX::getInputProperties>},
        {effGetOutputProperties, GetPin<&AudioEffectX::getOutputProperties>},
        {effGetPlugCategory, Ask<&AudioEffectX::getPlugCategory>},
        {effSetSpeakerArrangement, SetArrangement},
        {kEffSetBlockSizeAndSampleRate, SetRateAndSize},
        {kEffSetBypass,
         [](Effect& effect, const Call& call) -> VstIntPtr {
             return effect.setBypass(call.value != 0);
         }},
        {effGetEffectName, GetText<&AudioEffectX::getEffectName>},
        {effGetVendorString, GetText<&AudioEffectX::getVendorString>},
        {effGetProductString, GetText<&AudioEffectX::getProductString>},
        {effGetVendorVersion, Ask<&AudioEffectX::getVendorVersion>},
        {effCanDo,
         [](Effect& effect, const Call& call) -> VstIntPtr {
             return call.pointer != nullptr ? effect.canDo(call.Text()) : 0;
         }},
        {kEffGetTailSize, Ask<&AudioEffectX::getGetTailSize>},
        {effGetVstVersion, Answer<kVstVersion>},
        {kEffEditKeyDown, UseKey<&AEffEditor::onKeyDown>},
        {kEffEditKeyUp, UseKey<&AEffEditor::onKeyUp>},
        {effGetCurrentMidiProgram, Answer<-1>},
        {effGetSpeakerArrangement, GetArrangement},
        {effStartProcess,
         [](Effect& effect, const Call&) -> VstIntPtr { return effect.startProcess(), 0; }},
        {effStopProcess,
         [](Effect& effect, const Call&) -> VstIntPtr { return effect.stopProcess(), 0; }},
        {effSetTotalSampleToProcess, [](Effect&, const Call& call) { return call.value; }},
        {kEffBeginLoadBank, BeginLoad},
        {kEffBeginLoadProgram, BeginLoad},
        {effSetProcessPrecision,
         [](Effect&, const Call& call) -> VstIntPtr {
             return call.value == kVstProcessPrecision32;
         }},
        {kEffGetNumMidiInputChannels, Ask<&AudioEffectX::getNumMidiInputChannels>},
        {kEffGetNumMidiOutputChannels, Ask<&AudioEffectX::getNumMidiOutputChannels>},
    };
};

VstIntPtr AudioEffectX::dispatcher(const VstCall& call) {
    const auto* const handler = FindHandler<AudioEffectX>(Version2Opcodes::kTable, call.opcode);
    return handler != nullptr ? handler->run(*this, call) : AudioEffect::dispatcher(call);
}

bool AudioEffectX::getSpeakerArrangement(VstSpeakerArrangement** input,
                                         VstSpeakerArrangement** output) {
    if (input != nullptr) *input = nullptr;
    if (output != nullptr) *output = nullptr;
    return false;
}

bool AudioEffectX::canHostDo(const char* text) {
    return callHost(audioMasterCanDo, 0, 0, const_cast<char*>(text)) > 0;
}

const VstTimeInfo* AudioEffectX::getTimeInfo(int wanted) {
    return reinterpret_cast<const VstTimeInfo*>(callHost(audioMasterGetTime, 0, wanted));
}

void AudioEffectX::sendVstEventsToHost(VstEvents& events) {
    callHost(audioMasterProcessEvents, 0, 0, &events);
}

void AudioEffectX::wantEvents() { callHost(audioMasterWantMidi, 0, 1); }

void AudioEffectX::ioChanged() { callHost(kHostIOChanged); }

void AudioEffectX::updateDisplay() { callHost(kHostUpdateDisplay); }

bool AudioEffectX::sizeWindow(int width, int height) {
    return callHost(audioMasterSizeWindow, width, height) != 0;
}
