// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/contract/audio_effect_plugin.h"

std::intptr_t MAudioEffectPlugin::Dispatch(int code, PluginArguments& arguments) {
    switch (code) {
        case PluginCommand::kPrepare: {
            const std::intptr_t answer = Prepare(static_cast<int>(arguments.Integer(0)),
                                                 static_cast<int>(arguments.Integer(1)));
            Update();
            ResetParameters();
            return answer;
        }
        case PluginCommand::kProcess:
            Process(*arguments.Pointer<const TransportInfo>(0),
                    arguments.Pointer<const float* const>(1), arguments.Pointer<float* const>(2),
                    static_cast<int>(arguments.Integer(3)));
            return 0;
        case PluginCommand::kIsSilent:
            return IsSilent() ? 1 : 0;
        case PluginCommand::kGetLatency:
            return GetLatency();
        case PluginCommand::kSetOption:
            SetOption(static_cast<int>(arguments.Integer(0)));
            return 0;
        case PluginCommand::kGetTailLength:
            return GetTailLength();
        case PluginCommand::kProcessUpdate:
            ProcessUpdate();
            return 0;
        case PluginCommand::kInitGUI:
            InitGUI();
            return 0;
        default:
            return MPlugin::Dispatch(code, arguments);
    }
}

std::intptr_t MAudioEffectPlugin::Prepare(int newChannels, int newSampleRate) {
    channels = newChannels;
    sampleRate = newSampleRate;
    return 0;
}

void MAudioEffectPlugin::InitGUI() {}
void MAudioEffectPlugin::Process(const TransportInfo&, const float* const*, float* const*, int) {}
void MAudioEffectPlugin::ProcessUpdate() {}

bool MAudioEffectPlugin::IsSilent() { return false; }

int MAudioEffectPlugin::GetLatency() { return 0; }

int MAudioEffectPlugin::GetTailLength() { return 0; }

void MAudioEffectPlugin::SetOption(int) {}
void MAudioEffectPlugin::Clear() {}
