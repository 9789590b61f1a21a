// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/objects/callback.h"
#include "foundation/objects/event.h"
#include "foundation/objects/event_params.h"
#include "plugin/contract/plugin.h"
#include "plugin/frame/automation_adapter.h"

// Adapters that serve a whole object, such as a drawn shape, through several host indices.
//
// Whose object it is decides who is asked for an update: ParameterSpecialBase serves one of an
// effect, ParameterSpecialBaseCustom one of the plug-in itself. An adapter for a kind of object
// derives from either and tells how its indices are called, read and written.
//
// Units    positions 0..1; indices from 0 to count - 1, others are ignored and read 0
// Threads  sets and gets on any, under the object's lock; events are raised without it
// Memory   a set and a get of a number allocate nothing of their own
// Errors   MException "Could not acquire mutex." out of sets and gets, which then change nothing

// An object with parameters of its own.
class AutomatedObject : public MObject {
public:
    virtual MLockBase& Lock() = 0;

    // After each change, on the thread that made it, without the lock. That may be the audio
    // thread, so editors connect to their adapter's editorUpdate instead.
    MEvent<MOnNotifyParams> changed;
};

class ParameterSpecialMainBase : public AutomationAdapter {
public:
    // Record and object outlive the adapter.
    ParameterSpecialMainBase(const AutomationContext& context, SpecialParameterRecord& record,
                             AutomatedObject& object, int count);

    // Raises the object's event, after a silent set too, as what is derived from the object has to
    // follow. Silent keeps the change from the host only.
    void SetParameter(int index, double position, bool silent) override;
    double GetParameter(int index) override;
    ParameterType GetParameterType(int index) override;

    // The object's name is the section of its parameters.
    MString GetParameterName(int index) override;
    MString GetParameterSection(int index) override;
    MString GetParameterNameWithoutSection(int index) override;
    MString GetParameterID(int index) override;

    MString GetParameterValueName(int index) override;
    bool ParseParameterValueName(int index, const MString& text) override;
    // None: texts bring theirs.
    MString GetParameterUnitsName(int index) override;

    // An object has no target beside its values that a move could lead to.
    bool IsSmoothed(int index) override;
    void SetSmoothing(int index, bool on) override;
    // An object is drawn anew as a whole, by its owner.
    int GetRandomizable() override;
    void Randomize(double amount) override;
    void UpdateEditor() override;

    MString name;
    const std::int32_t kind;  // the record's
    AutomatedObject& object;
    MEvent<MOnNotifyParams> editorUpdate;  // the object has changed; on the user interface's thread

protected:
    // Asks the owner of the object for an update.
    virtual void TellOwner() = 0;

    // What the kind of object decides; index is in range. The latter two run under its lock.
    virtual MString NameOf(int index) const = 0;
    virtual void Apply(int index, double position) = 0;
    virtual double PositionOf(int index) const = 0;

private:
    bool Serves(int index) const { return index >= 0 && index < count; }
    MString OwnName(int index) const { return Serves(index) ? NameOf(index) : MString(); }
    void OnObjectChanged(const MOnNotifyParams& params);

    std::atomic<std::int32_t>* const changeCount;  // the record's; may be null
};

// Serves an object of an effect; T is what the record points to.
template <typename T>
class ParameterSpecialBase : public ParameterSpecialMainBase {
public:
    ParameterSpecialBase(const AutomationContext& context, SpecialParameterRecord& record,
                         int count, MPlugin& owner)
        : ParameterSpecialMainBase(context, record, static_cast<T&>(*record.object), count),
          owner(owner) {}

    T& Object() const { return static_cast<T&>(object); }

protected:
    // Update itself waits for the effect's next UpdateIfNeeded.
    void TellOwner() override { owner.RequestUpdate(); }

private:
    MPlugin& owner;
};

// Serves an object of the plug-in.
template <typename T>
class ParameterSpecialBaseCustom : public ParameterSpecialMainBase {
public:
    ParameterSpecialBaseCustom(const AutomationContext& context, SpecialParameterRecord& record,
                               int count)
        : ParameterSpecialMainBase(context, record, static_cast<T&>(*record.object), count) {}

    T& Object() const { return static_cast<T&>(object); }

    // Connected before the first use; called on the thread that sets, the audio thread included.
    MCallback<MOnNotifyParams> updateDue;

protected:
    void TellOwner() override { updateDue.Call({this}); }
};
