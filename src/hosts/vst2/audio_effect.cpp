// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/vst2/audio_effect.h"

#include <atomic>
#include <utility>

namespace {

AudioEffect& EffectOf(AEffect* effect) { return *static_cast<AudioEffect*>(effect->object); }

VstIntPtr Dispatch(AEffect* effect, int opcode, int index, VstIntPtr value, void* pointer,
                   float option) {
    AudioEffect& object = EffectOf(effect);
    const VstIntPtr answer = object.dispatcher({opcode, index, value, pointer, option});
    if (opcode == effClose) delete &object;
    return answer;
}

bool HasParameter(const AEffect* effect, int index) {
    return index >= 0 && index < effect->numParams;
}

constexpr int kSignature = CCONST('N', 'v', 'E', 'f');

}  // namespace

// What hosts of any version say.
struct BasicOpcodes {
    using Handler = OpcodeHandler<AudioEffect>;

    // Where there is a text to be written for a parameter.
    template <void (AudioEffect::*Write)(int, char*)>
    static VstIntPtr WriteText(AudioEffect& effect, const VstCall& call) {
        if (call.pointer == nullptr) return 0;
        call.Text()[0] = '\0';
        if (effect.isParameter(call.index)) (effect.*Write)(call.index, call.Text());
        return 0;
    }

    static VstIntPtr SetRunning(AudioEffect& effect, const VstCall& call) {
        if (call.value != 0) {
            effect.resume();
        } else {
            effect.suspend();
        }
        return 0;
    }

    static VstIntPtr GetRect(AudioEffect& effect, const VstCall& call) {
        const auto rect = static_cast<ERect**>(call.pointer);
        if (rect == nullptr) return 0;
        *rect = nullptr;
        return effect.editor != nullptr && effect.editor->getRect(rect) ? 1 : 0;
    }

    static VstIntPtr OpenEditor(AudioEffect& effect, const VstCall& call) {
        return effect.editor != nullptr && effect.editor->open(call.pointer) ? 1 : 0;
    }

    template <void (AEffEditor::*Call)()>
    static VstIntPtr CallEditor(AudioEffect& effect, const VstCall&) {
        if (effect.editor != nullptr) (effect.editor.get()->*Call)();
        return 0;
    }

    static VstIntPtr GetChunk(AudioEffect& effect, const VstCall& call) {
        if (call.pointer == nullptr) return 0;
        return effect.getChunk(static_cast<void**>(call.pointer), call.index != 0);
    }

    static VstIntPtr SetChunk(AudioEffect& effect, const VstCall& call) {
        if (call.pointer == nullptr) return 0;
        return effect.setChunk(call.pointer, call.value, call.index != 0) ? 1 : 0;
    }

    static VstIntPtr GetProgramName(AudioEffect& effect, const VstCall& call) {
        if (call.pointer != nullptr) effect.getProgramName(call.Text());
        return 0;
    }

    static VstIntPtr SetProgramName(AudioEffect& effect, const VstCall& call) {
        if (call.pointer != nullptr) effect.setProgramName(call.Text());
        return 0;
    }

    // A call that answers nothing.
    template <auto Work>
    static VstIntPtr Do(AudioEffect& effect, const VstCall& call) {
        Work(effect, call);
        return 0;
    }

    using Effect = AudioEffect;
    using Call = VstCall;

    static constexpr Handler kTable[] = {
        {effOpen, Do<[](Effect& effect, const Call&) { effect.open(); }>},
        {effClose, Do<[](Effect& effect, const Call&) { effect.close(); }>},
        {effSetProgram, Do<[](Effect& effect, const Call& call) {
             effect.setProgram(static_cast<int>(call.value));
         }>},
        {effGetProgram,
         [](Effect& effect, const Call&) -> VstIntPtr { return effect.getProgram(); }},
        {effSetProgramName, SetProgramName},
        {effGetProgramName, GetProgramName},
        {effGetParamLabel, WriteText<&AudioEffect::getParameterLabel>},
        {effGetParamDisplay, WriteText<&AudioEffect::getParameterDisplay>},
        {effGetParamName, WriteText<&AudioEffect::getParameterName>},
        {effSetSampleRate,
         Do<[](Effect& effect, const Call& call) { effect.setSampleRate(call.option); }>},
        {effSetBlockSize, Do<[](Effect& effect, const Call& call) {
             effect.setBlockSize(static_cast<int>(call.value));
         }>},
        {effMainsChanged, SetRunning},
        {effEditGetRect, GetRect},
        {effEditOpen, OpenEditor},
        {effEditClose, CallEditor<&AEffEditor::close>},
        {effEditIdle, CallEditor<&AEffEditor::idle>},
        {kEffEditTop, CallEditor<&AEffEditor::update>},
        {effIdentify, [](Effect&, const Call&) -> VstIntPtr { return kSignature; }},
        {effGetChunk, GetChunk},
        {effSetChunk, SetChunk},
    };
};

AudioEffect::AudioEffect(audioMasterCallback audioMaster, int numPrograms, int numParams)
    : audioMaster(audioMaster) {
    AEffect& effect = block.effect;
    effect.magic = kEffectMagic;
    effect.object = this;
    effect.numPrograms = numPrograms;
    effect.numParams = numParams;
    effect.float1 = 1;  // output samples of an input sample
    effect.flags = effFlagsCanReplacing;
    effect.dispatcher = Dispatch;
    effect.setParameter = [](AEffect* self, int index, float value) {
        if (HasParameter(self, index)) EffectOf(self).setParameter(index, value);
    };
    effect.getParameter = [](AEffect* self, int index) {
        return HasParameter(self, index) ? EffectOf(self).getParameter(index) : 0.0f;
    };
    effect.process = [](AEffect* self, float** inputs, float** outputs, int count) {
        EffectOf(self).process(inputs, outputs, count);
    };
    effect.processReplacing = [](AEffect* self, float** inputs, float** outputs, int count) {
        EffectOf(self).processReplacing(inputs, outputs, count);
    };
}

AudioEffect::~AudioEffect() = default;

VstIntPtr AudioEffect::dispatcher(const VstCall& call) {
    const auto* const handler = FindHandler<AudioEffect>(BasicOpcodes::kTable, call.opcode);
    return handler != nullptr ? handler->run(*this, call) : 0;
}

int AudioEffect::getMasterVersion() { return static_cast<int>(callHost(audioMasterVersion)); }

void AudioEffect::setParameterAutomated(int index, float value) {
    setParameter(index, value);
    callHost(audioMasterAutomate, index, 0, nullptr, value);
}

VstIntPtr AudioEffect::callHost(int opcode, int index, VstIntPtr value, void* pointer,
                                float option) {
    if (audioMaster == nullptr) return 0;
    return audioMaster(&block.effect, opcode, index, value, pointer, option);
}

void AudioEffect::setInitialDelay(int samples) {
    std::atomic_ref(block.effect.initialDelay).store(samples, std::memory_order_relaxed);
}

void AudioEffect::setEditor(std::unique_ptr<AEffEditor> newEditor) {
    editor = std::move(newEditor);
    const VstIntPtr others = block.effect.flags & ~VstIntPtr{effFlagsHasEditor};
    block.effect.flags = others | (editor != nullptr ? effFlagsHasEditor : 0);
}
