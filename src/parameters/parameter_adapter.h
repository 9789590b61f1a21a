// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <optional>

#include "foundation/objects/callback.h"
#include "plugin/contract/plugin.h"
#include "plugin/frame/automation_adapter.h"

// Adapters of one host index each, which serve a ParameterRecord.
//
// Whose record it is decides who is told of changes: ParameterBase serves one of an effect,
// ParameterBaseCustom one of the plug-in itself. What kind of record it is decides how positions,
// values and texts turn into each other: see parameter_types.h.
//
// Units    positions 0..1; values in the record's unit. A text is the record's own, else its format
//          with the value, else what the kind of record says
// Threads  sets and gets on any, without a lock; listener is set on the thread of the user
//          interface, the other fields before the first use
// Errors   what the owner of the record raises when it is told; a broken format

class ParameterMainBase;

// An editor that follows a parameter.
class ParameterListener {
public:
    // On the thread of the user interface.
    virtual void ParameterUpdated(ParameterMainBase& adapter) = 0;

protected:
    ~ParameterListener() = default;
};

class ParameterMainBase : public AutomationAdapter {
public:
    // The record outlives the adapter. localIndex is its place in its owner's list.
    ParameterMainBase(const AutomationContext& context, ParameterRecord& record, int localIndex);

    void SetParameter(int index, double position, bool silent) override;
    double GetParameter(int index) override;
    double GetParameterDefaultValue(int index) override;
    ParameterType GetParameterType(int index) override;

    MString GetParameterName(int index) override;
    MString GetParameterSection(int index) override;
    MString GetParameterNameWithoutSection(int index) override;
    MString GetParameterID(int index) override;
    MString GetParameterUnitsName(int index) override;

    MString GetParameterValueName(int index) override;
    MString GetParameterValueNameFrom01(int index, double position) override;
    bool ParseParameterValueName(int index, const MString& text) override;
    bool ParsePositionFromText(int index, const MString& text, double& position) override;

    bool IsSmoothed(int index) override;
    const ParameterRecord* RecordOf(int) override { return &record; }
    void SetSmoothing(int index, bool on) override;
    int GetRandomizable() override;
    void Randomize(double amount) override;
    void UpdateEditor() override;

    MString name;
    MString units;    // for hosts that show them apart from the value
    MString section;  // of the owner's list; empty outside of any
    ParameterRecord& record;
    const int localIndex;
    std::atomic<ParameterListener*> listener = nullptr;  // null while nobody follows

protected:
    // Tells the owner of the record that it has changed, and that an update is due where the record
    // asks for one.
    virtual void TellOwner() = 0;

    // What the kind of record decides. PlainText and ReadPlain serve records that bring no text.
    virtual double ValueAt(double position) const = 0;
    virtual double PositionOf(double value) const = 0;
    virtual MString PlainText(double value) const = 0;
    virtual std::optional<double> ReadPlain(const MString& text) const = 0;

private:
    void Changed();
    MString TextOf(double value) const;
    std::optional<double> ReadText(const MString& text) const;
};

// Serves a record of an effect.
class ParameterBase : public ParameterMainBase {
public:
    ParameterBase(const AutomationContext& context, ParameterRecord& record, int localIndex,
                  MPlugin& host)
        : ParameterMainBase(context, record, localIndex), host(host) {}

protected:
    // Update itself waits for the effect's next UpdateIfNeeded.
    void TellOwner() override;

private:
    MPlugin& host;
};

struct MOnParameterChangedParams {
    ParameterMainBase* adapter;
};

// Serves a record of the plug-in: gains, band limits and the like.
class ParameterBaseCustom : public ParameterMainBase {
public:
    using ParameterMainBase::ParameterMainBase;

    // Connected before the first use; called on the thread that sets, the audio thread included.
    MCallback<MOnParameterChangedParams> changed;    // after each set that is not silent
    MCallback<MOnParameterChangedParams> updateDue;  // then, where the record has kUpdates

protected:
    void TellOwner() override;
};
