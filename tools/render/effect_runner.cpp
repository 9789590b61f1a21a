// SPDX-License-Identifier: GPL-3.0-or-later
#include "effect_runner.h"

#include <algorithm>

#include "effect/chorus_entry.h"

EffectRunner::EffectRunner() : host(MPluginSystem::CreateOrRaise("chorus", ChorusEntry)) {
    host->descriptor->lock = &lock;
    host->Effect()->hqFlag = &highQuality;
}

void EffectRunner::Start(const Setup& setup) {
    highQuality.store(setup.highQuality ? 1 : 0, std::memory_order_relaxed);
    if (setup.randomize) {
        // Drawing ends in an update, which needs a rate.
        Prepare(setup);
        PluginArguments amount(*setup.randomize);
        host->Command(PluginCommand::kRandomize, amount);
    }
    for (const ParameterSetting& setting : setup.settings)
        host->descriptor->parameters[setting.index].Set(setting.value);
    Prepare(setup);
}

void EffectRunner::Process(const TransportInfo& transport, const float* const* inputs,
                           float* const* outputs, int sampleCount) {
    host->Effect()->UpdateIfNeeded();
    PluginArguments arguments(&transport, inputs, outputs, sampleCount);
    host->Command(PluginCommand::kProcess, arguments);
}

int EffectRunner::MaxBlock() const { return std::max(1, host->Effect()->maxBlockSize); }

void EffectRunner::Prepare(const Setup& setup) {
    PluginArguments arguments(setup.channels, setup.rate);
    host->Command(PluginCommand::kPrepare, arguments);
}
