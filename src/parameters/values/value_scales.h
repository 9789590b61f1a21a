// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "parameters/values/scale_texts.h"
#include "parameters/values/value_number.h"

// The scales: numbers with a unit of their own, each with the range it has where nobody tells one.

class MValuePercents : public MValueDouble {
public:
    explicit MValuePercents(const MValueRef& source = {}, double value = 0, double min = 0,
                            double max = 1)
        : MValueDouble(source, value, min, max) {}

protected:
    MString TextOf(double number) const override { return PercentText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadPercents(text); }
};

// A fraction of a turn.
class MValueDegreesFrom01 : public MValueDouble {
public:
    explicit MValueDegreesFrom01(const MValueRef& source = {}, double value = 0, double min = 0,
                                 double max = 1)
        : MValueDouble(source, value, min, max) {}

protected:
    MString TextOf(double number) const override { return DegreesText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadDegrees(text); }
};

// Hertz, logarithmic along the knob; min is above 0.
class MValueFrequency : public MValueDoubleFine {
public:
    explicit MValueFrequency(const MValueRef& source = {}, double value = 1000, double min = 20,
                             double max = 20000);
    void LoadXmlAttributes(MAttribute& item) override;

protected:
    MString TextOf(double number) const override { return FrequencyText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadFrequency(text); }
    double PositionOf(double number) const override;
    double NumberAt(double position) const override;

private:
    void UpdateBounds();

    double logMin;
    double logMax;
};

// Hertz, linear along the knob.
class MValueFrequencyLinear : public MValueDouble {
public:
    explicit MValueFrequencyLinear(const MValueRef& source = {}, double value = 1000,
                                   double min = 20, double max = 20000)
        : MValueDouble(source, value, min, max) {}

protected:
    MString TextOf(double number) const override { return FrequencyText(number); }
};

// The decimal logarithm of hertz.
class MValueFrequencyLog : public MValueDouble {
public:
    explicit MValueFrequencyLog(const MValueRef& source = {}, double value = 2,
                                double min = 1.3010299956639813, double max = 4.301029995663981)
        : MValueDouble(source, value, min, max) {}

protected:
    MString TextOf(double number) const override { return LogFrequencyText(number); }
    std::optional<double> Read(const MString& text) const override {
        return ReadLogFrequency(text);
    }
};

// An amplitude of 0 and more, told in decibels.
class MValueVolume : public MValueDouble {
public:
    explicit MValueVolume(const MValueRef& source = {}, double value = 1, double min = 0,
                          double max = 1);

protected:
    MString TextOf(double number) const override { return DecibelText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadDecibels(text); }
};

// -1 left .. 1 right
class MValuePan : public MValueDouble {
public:
    explicit MValuePan(const MValueRef& source = {}, double value = 0, double min = -1,
                       double max = 1);

protected:
    MString TextOf(double number) const override { return PanText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadPercents(text); }
};

// A frequency ratio.
class MValuePitch : public MValueDouble {
public:
    explicit MValuePitch(const MValueRef& source = {}, double value = 1, double min = 0.25,
                         double max = 4);
};

// Seconds, told in milliseconds.
class MValueTimeMS : public MValueDouble {
public:
    explicit MValueTimeMS(const MValueRef& source = {}, double value = 1, double min = 0,
                          double max = 1);

protected:
    MString TextOf(double number) const override { return TimeText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadTime(text); }
};

// A position among the base shapes of a signal generator.
class MValueSignalGeneratorShape : public MValueDouble {
public:
    explicit MValueSignalGeneratorShape(const MValueRef& source = {}, double value = 5,
                                        double min = 0, double max = 15)
        : MValueDouble(source, value, min, max) {}

protected:
    MString TextOf(double number) const override { return SignalShapeText(number); }
};

// A multiple of a step; with a step of 0 or less any number.
class MValueStepDouble : public MValueDouble {
public:
    explicit MValueStepDouble(const MValueRef& source = {}, double value = 0, double min = 0,
                              double max = 1, double step = 0);
    void LoadXmlAttributes(MAttribute& item) override;

protected:
    double Limited(double number) const override;

private:
    void SetStep(double newStep);

    double step;
    double stepInverse;
};

class MValueStepPercents : public MValueStepDouble {
public:
    using MValueStepDouble::MValueStepDouble;

protected:
    MString TextOf(double number) const override { return PercentText(number); }
    std::optional<double> Read(const MString& text) const override { return ReadPercents(text); }
};

class MValueMIDINote : public MValueInt32 {
public:
    using MValueInt32::MValueInt32;

protected:
    MString TextOf(int number) const override { return NoteText(number); }
};
