// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/automation_interpolation.h"

#include <cmath>

#include "plugin/frame/automation_adapter.h"

namespace {

constexpr double kSmallestMove = 1e-5;  // of the knob's way; nobody hears a jump of that size

}  // namespace

void AutomationInterpolation::Add(AutomationAdapter& adapter) {
    for (int i = 0; i < adapter.count; ++i)
        if (adapter.IsSmoothed(i)) records.push_back({&adapter, i, adapter.RecordOf(i)});
}

void AutomationInterpolation::Record::Look() {
    if (source != nullptr) {
        const double now = source->Get();
        if (now == value) return;
        value = now;
    }
    current = adapter->GetParameter(index);
}

void AutomationInterpolation::Follow() {
    for (Record& record : records) {
        record.Look();
        record.previous = record.current;
    }
}

bool AutomationInterpolation::Prepare(int sampleCount) {
    const bool moves = FindMoves();
    if (!moves || sampleCount <= 1) return moves;
    for (Record& record : records) {
        if (!record.moving) continue;
        record.delta /= sampleCount;
        record.running = record.previous;
        record.adapter->SetSmoothing(record.index, true);
        record.adapter->SetParameter(record.index, record.running, true);
    }
    owner.ParametersChanged();
    return true;
}

bool AutomationInterpolation::FindMoves() {
    bool moves = false;
    for (Record& record : records) {
        record.Look();
        if (!record.started) record.previous = record.current;
        record.started = true;
        record.delta = record.current - record.previous;
        record.moving = std::abs(record.delta) > kSmallestMove;
        moves |= record.moving;
    }
    return moves;
}

void AutomationInterpolation::Process(int sampleCount) {
    for (Record& record : records) {
        if (!record.moving) continue;
        record.running += sampleCount * record.delta;
        record.adapter->SetParameter(record.index, record.running, true);
    }
    owner.ParametersChanged();
}

void AutomationInterpolation::Finish() {
    for (Record& record : records) {
        record.previous = record.current;
        if (!record.moving) continue;
        record.moving = false;
        record.adapter->SetSmoothing(record.index, false);
        record.adapter->SetParameter(record.index, record.current, true);
    }
    owner.ParametersChanged();
}
