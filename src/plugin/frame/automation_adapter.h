// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/event_target.h"
#include "foundation/text/mstring.h"
#include "plugin/contract/parameter_record.h"

// What a host knows of parameters, by index, and the adapters that serve it.
//
// The host sees one flat list. Each adapter serves a run of it, count indices from baseIndex on,
// and translates between the host's positions and one record or object.
//
// Units    positions 0..1 along the host's knob; an adapter's index counts from its baseIndex, a
//          plug-in's from 0
// Threads  sets and gets on any, without a lock; texts off the audio thread
// Memory   a set and a get of a number allocate nothing
// Errors   what an adapter raises; the plug-in keeps it from the host

// The parameter operations that a plug-in and each of its adapters share.
template <typename Base>
class MAudioPluginAutomation : public Base {
public:
    using Base::Base;

    // silent stores the value and tells nobody.
    virtual void SetParameter(int index, double position, bool silent) = 0;
    virtual double GetParameter(int index) = 0;

    // With all that stands in front of it: "Band 1 - Advanced parameters - Tremolo".
    virtual MString GetParameterName(int index) = 0;
    virtual MString GetParameterSection(int index) = 0;
    virtual MString GetParameterNameWithoutSection(int index) = 0;
    // The same in every version: "Band 1 Tremolo".
    virtual MString GetParameterID(int index) = 0;

    virtual MString GetParameterValueName(int index) = 0;
    // The text that the value would have at a position.
    virtual MString GetParameterValueNameFrom01(int index, double position) = 0;
    // Sets the value that a text tells. Whether the text told one.
    virtual bool ParseParameterValueName(int index, const MString& text) = 0;
    virtual MString GetParameterUnitsName(int index) = 0;

    virtual ParameterType GetParameterType(int index) = 0;
    // The position of the default; a float's is told along a straight line whatever its law, so it
    // may differ from what GetParameter answers. That is meant: hosts have stored it so.
    virtual double GetParameterDefaultValue(int index) = 0;
};

class AutomationAdapter;

// What adapters need of the plug-in that owns them.
class AutomationOwner {
public:
    // Tells the host. The index is the plug-in's.
    virtual void SendAutomation(int index, double position) = 0;
    // Any thread: has UpdateEditor called on the thread of the user interface.
    virtual void NeedUpdateEditor(AutomationAdapter& adapter) = 0;
    // Has the effect brought up to date with its parameters before it processes again.
    virtual void ParametersChanged() = 0;

protected:
    ~AutomationOwner() = default;
};

// Where an adapter belongs: the same for all records of one effect.
struct AutomationContext {
    AutomationOwner* plugin = nullptr;
    MString sectionPrefix;   // in front of each section: "Band 1"
    MString namePrefix;      // in front of each name and identifier: "Band 1"
    bool bandLocal = false;  // of one band's set, not of the master's
};

class AutomationAdapter : public MAudioPluginAutomation<MEventTarget> {
public:
    explicit AutomationAdapter(const AutomationContext& context);

    // As ParseParameterValueName, but answers the position and sets nothing. Where the text tells
    // no value, position stays as it was.
    virtual bool ParsePositionFromText(int index, const MString& text, double& position) = 0;

    virtual bool IsSmoothed(int index) = 0;
    // The record whose value alone decides the position; null where there is none.
    virtual const ParameterRecord* RecordOf(int index);
    // Begins and ends a move across a block; meanwhile sets lead to its target.
    virtual void SetSmoothing(int index, bool on) = 0;

    // How many of its parameters take part in randomising.
    virtual int GetRandomizable() = 0;
    virtual void Randomize(double amount) = 0;

    // After changes that were not silent, on the thread of the user interface.
    virtual void UpdateEditor();

    // Tells the host all values.
    void SendAllAutomation();

    int count = 1;
    int baseIndex = 0;        // AutomationTable's
    bool automatable = true;  // a host may record it
    bool temporary = false;   // belongs to a passing edit; hosts do not see it
    const bool bandLocal;
    AutomationOwner* const plugin;
    const MString sectionPrefix;
    const MString namePrefix;
    MString identifier;

private:
    friend class ChangedAdapters;

    bool isChanged = false;  // stands in the list of changed adapters; under its lock
};
