// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/objects/callback.h"
#include "foundation/text/mstring.h"
#include "foundation/text/styled_text.h"
#include "foundation/xml/storable.h"
#include "parameters/values/value_ref.h"

class MValue;

// A client's own text for one single value, in place of the scale's.
struct MOnCustomTextParams {
    enum class Mode { Get, Set };

    MValue& value;
    MString& text;  // Get: the handler stores it; Set: what was typed, for the handler to store
    Mode mode;
};

enum class MValueType { Float, Integer, Enumeration };

// One editable quantity: where its number lives, its range and default, how it turns into text and
// back, how a knob's position maps to it and how a wheel moves it.
//
//     double delay = 0.005;                          // a field of the model
//     MValueTimeMS value(MValueRef(&delay), 0.005, 0, 0.5);
//     value.SetText("20");                           // delay is 0.02
//     value.GetText();                               // "20 ms"
//
// A value that views a number of another object leaves it as it is, but for the range; one that
// owns its number starts at the default. Operations that answer a bool tell whether the number is
// another one than before. Nothing is notified: who has to know polls HasChanged.
//
// Units    a position is 0..1 along a knob; what is outside, or no number, is taken as the nearer
//          end, a NaN as 0
// Threads  its owner's. The number alone may be read and written by others: relaxed atomics
// Memory   positions, limits and steps never allocate; a text is at most one allocation where its
//          scale writes plain text around one number
// Errors   std::bad_alloc; texts that make no sense leave the number alone
class MValue : public MStorable {
public:
    static constexpr double kFineStep = 0.001;  // positions that one fine step moves by

    MValue() = default;
    MValue(const MValue&) = delete;
    MValue& operator=(const MValue&) = delete;

    // The text in storage: six decimals, decimal digits, or the entry's name. A SetString is not
    // limited but for an entry.
    MString GetString() override = 0;
    void SetString(const MString& text) override = 0;
    virtual bool SetDefault() = 0;

    // Where the attribute is missing, Load takes the default; it limits either way.
    bool OnMissing() override;
    bool Load(MAttribute& item) override;
    // The description in a layout file: "id" is the name, the others are the fields called so.
    virtual void LoadXmlAttributes(MAttribute& item);

    virtual MValueType GetType() const = 0;

    // Where a handler for customText is connected, it makes and takes the text of these two.
    virtual MString GetText();
    virtual bool SetText(const MString& text);
    MStyledText GetTextObject() { return GetText(); }

    // The scale's own text, also for a position, which leaves the number alone.
    virtual MString GetTextInternal() const = 0;
    virtual MString GetTextFrom01(double position) const = 0;
    MStyledText GetTextObjectFrom01(double position) const { return GetTextFrom01(position); }
    virtual bool SetTextInternal(const MString& text) = 0;

    virtual void Limit() = 0;
    // count steps of inc * 2^shift, of maxinc at most.
    virtual bool Step(int count, int shift) = 0;
    // A number may leave its range; Limit follows.
    virtual bool StepFine(int count) = 0;

    virtual double Get01() const = 0;
    virtual bool Set01(double position) = 0;

    // 0 for a continuous value. Item i stands at position i / (count - 1).
    virtual int GetItemCount() const = 0;
    virtual MStyledText GetItemObject(int i) const { return GetTextFrom01(ItemPosition(i)); }
    virtual bool SetItem(int i) { return Set01(ItemPosition(i)); }

    // Raised by each write of the number, also by one that leaves it the same.
    virtual bool HasChanged() const = 0;
    virtual void ClearChanged() = 0;

    MCallback<MOnCustomTextParams> customText;

private:
    double ItemPosition(int i) const;
};

// The position itself, 0 for a NaN.
double Limited01(double position);
