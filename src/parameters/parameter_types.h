// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "parameters/parameter_adapter.h"
#include "parameters/values/number_text.h"

// The adapters of the kinds of records, over ParameterBase or ParameterBaseCustom.
//
//     float         the record's law; text with six decimals
//     integer       min + trunc((max - min) * position + 0.5); decimal digits
//     enumeration   the same over the indices of its options; the option's text
//     boolean       on from position 0.5 up; "On", "Off"
//     group         as a boolean; a head without a switch is off and has no text
//
// A format takes the value's place in all but enumerations. A text is read as the number at its
// start, an option's or a switch's own text in any case.
// Ranges   a float is stored as its position says, also beyond its range; the others stay in
//          theirs. A position that is no finite number sets nothing

template <typename Base>
class ParameterFloatT : public Base {
public:
    using Base::Base;

    double GetParameterDefaultValue(int) override {
        const ParameterRecord& record = this->record;
        if (record.max == record.min) return 0;
        return (record.defaultValue - record.min) / (record.max - record.min);
    }

protected:
    double ValueAt(double position) const override { return this->record.ValueAt(position); }
    double PositionOf(double value) const override { return this->record.PositionOf(value); }

    MString PlainText(double value) const override {
        constexpr int kDecimals = 6;
        const MString& format = this->record.format;
        if (format.IsEmpty()) return MString::FromDouble(value, kDecimals);
        return FormatNumber(format, value);
    }
    std::optional<double> ReadPlain(const MString& text) const override { return ReadNumber(text); }
};

template <typename Base>
class ParameterIntT : public Base {
public:
    using Base::Base;

protected:
    double ValueAt(double position) const override {
        const ParameterRecord& record = this->record;
        return record.InRange(record.min + std::trunc((record.max - record.min) * position + 0.5));
    }
    double PositionOf(double value) const override { return this->record.PositionOf(value); }

    MString PlainText(double value) const override {
        const auto number = static_cast<std::int64_t>(this->record.InRange(value));
        const MString& format = this->record.format;
        return format.IsEmpty() ? MString::FromInt(number) : FormatNumber(format, number);
    }
    std::optional<double> ReadPlain(const MString& text) const override {
        const std::optional<double> number = ReadNumber(text);
        if (!number) return std::nullopt;
        return RoundHalfUp(*number);
    }
};

template <typename Base>
class ParameterEnumT : public ParameterIntT<Base> {
public:
    using ParameterIntT<Base>::ParameterIntT;

protected:
    MString PlainText(double value) const override {
        const auto& options = this->record.options;
        if (options.empty()) return MString();
        return options[static_cast<std::size_t>(this->record.InRange(value))];
    }
    std::optional<double> ReadPlain(const MString& text) const override {
        const auto& options = this->record.options;
        for (std::size_t i = 0; i < options.size(); ++i)
            if (options[i].CompareNoCase(text) == 0) return static_cast<double>(i);
        return std::nullopt;
    }
};

template <typename Base>
class ParameterBoolT : public Base {
public:
    using Base::Base;

protected:
    double ValueAt(double position) const override { return position >= 0.5 ? 1 : 0; }
    double PositionOf(double value) const override { return value >= 0.5 ? 1 : 0; }

    MString PlainText(double value) const override {
        const bool on = value >= 0.5;
        const MString& format = this->record.format;
        if (format.IsEmpty()) return on ? "On" : "Off";
        return FormatNumber(format, std::int64_t{on});
    }
    std::optional<double> ReadPlain(const MString& text) const override {
        if (text.CompareNoCase("On") == 0) return 1;
        if (text.CompareNoCase("Off") == 0) return 0;
        const std::optional<double> number = ReadNumber(text);
        if (!number) return std::nullopt;
        return *number >= 0.5 ? 1 : 0;
    }
};

template <typename Base>
class ParameterGroupT : public ParameterBoolT<Base> {
public:
    template <typename... Arguments>
    explicit ParameterGroupT(Arguments&&... arguments)
        : ParameterBoolT<Base>(std::forward<Arguments>(arguments)...) {
        this->automatable = this->record.HasSwitch();
    }

    // The head is called as its section: once is enough.
    MString GetParameterName(int index) override {
        return this->GetParameterNameWithoutSection(index);
    }

protected:
    MString PlainText(double value) const override {
        return this->record.HasSwitch() ? ParameterBoolT<Base>::PlainText(value) : MString();
    }
    std::optional<double> ReadPlain(const MString& text) const override {
        if (!this->record.HasSwitch()) return std::nullopt;
        return ParameterBoolT<Base>::ReadPlain(text);
    }
};
