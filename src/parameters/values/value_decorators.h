// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>

#include "parameters/values/value.h"

// Another value with its low end stretched along the knob. All but the position is the other
// value's own, the name and the handler for its text included.
//
//     MValueScaleSqr rate(seconds);   // the middle of the knob is a quarter of the way

class MValueDecorator : public MValue {
public:
    MString GetString() override { return inner.GetString(); }
    void SetString(const MString& text) override { inner.SetString(text); }
    bool SetDefault() override { return inner.SetDefault(); }
    bool Save(MAttribute& item) override { return inner.Save(item); }
    bool Load(MAttribute& item) override { return inner.Load(item); }
    void LoadXmlAttributes(MAttribute& item) override { inner.LoadXmlAttributes(item); }
    MValueType GetType() const override { return inner.GetType(); }

    MString GetText() override { return inner.GetText(); }
    bool SetText(const MString& text) override { return inner.SetText(text); }
    MString GetTextInternal() const override { return inner.GetTextInternal(); }
    MString GetTextFrom01(double position) const override {
        return inner.GetTextFrom01(ToInner(Limited01(position)));
    }
    bool SetTextInternal(const MString& text) override { return inner.SetTextInternal(text); }

    void Limit() override { inner.Limit(); }
    bool Step(int count, int shift) override { return inner.Step(count, shift); }
    bool StepFine(int count) override { return Set01(Get01() + count * kFineStep); }

    double Get01() const override { return FromInner(inner.Get01()); }
    bool Set01(double position) override { return inner.Set01(ToInner(Limited01(position))); }

    int GetItemCount() const override { return inner.GetItemCount(); }
    MStyledText GetItemObject(int i) const override { return inner.GetItemObject(i); }
    bool SetItem(int i) override { return inner.SetItem(i); }

    bool HasChanged() const override { return inner.HasChanged(); }
    void ClearChanged() override { inner.ClearChanged(); }

protected:
    // The other value outlives this one.
    explicit MValueDecorator(MValue& inner) : inner(inner) {}

private:
    // Between the two positions, 0..1.
    virtual double ToInner(double position) const = 0;
    virtual double FromInner(double position) const = 0;

    MValue& inner;
};

class MValueScaleSqr : public MValueDecorator {
public:
    explicit MValueScaleSqr(MValue& inner) : MValueDecorator(inner) {}

private:
    double ToInner(double position) const override { return position * position; }
    double FromInner(double position) const override { return std::sqrt(position); }
};

template <int power>
class MValueScalePower : public MValueDecorator {
public:
    explicit MValueScalePower(MValue& inner) : MValueDecorator(inner) {}

private:
    double ToInner(double position) const override { return std::pow(position, power); }
    double FromInner(double position) const override { return std::pow(position, 1.0 / power); }
};
