// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

#include "parameters/values/number_text.h"
#include "parameters/values/value.h"

// A value that is a number in a range: the plain linear one, and the base of the scales.
//
// A scale is another text, reader or mapping; it overrides what stands under protected.
//
// Ranges   a number that the stored type cannot hold is stored as the nearest that it can
// Errors   a broken format raises what MStringFormatter and MStringScanner raise

// Stored: the number's own type. Computed: that of its range and of arithmetic. logarithmicFine:
// a fine step moves the position, not the number.
template <typename Stored, typename Computed, bool integral, bool logarithmicFine>
class MValueNumber : public MValue {
public:
    // The number of a view is limited at once.
    explicit MValueNumber(const MValueRef& source = {}, Computed value = 0, Computed min = 0,
                          Computed max = 1)
        : min(min), max(max), defaultValue(value), ref(source) {
        inc = FromWide(Range() * static_cast<Wide>(0.001));
        if (!(inc > 0)) inc = 1;
        maxinc = FromWide(static_cast<Wide>(inc) * 10);
        if (ref.IsOwner()) ref.Set(ToStored(value));
        ref.changed = false;
        MValueNumber::Limit();
    }

    Computed Get() const { return static_cast<Computed>(ref.Get<Stored>()); }
    // Not limited.
    void Set(Computed number) { ref.Set(ToStored(number)); }

    MString GetString() override {
        if constexpr (integral) {
            return MString::FromInt(Get());
        } else {
            return MString::FromDouble(Get(), 6);
        }
    }
    void SetString(const MString& text) override {
        if (const std::optional<Computed> number = Parse(text)) Set(*number);
    }
    bool SetDefault() override {
        return IsNewAfter([this] { Set(defaultValue); });
    }
    // Ranges and steps are taken as they are told: a new range makes no new inc.
    void LoadXmlAttributes(MAttribute& item) override;

    MValueType GetType() const override {
        return integral ? MValueType::Integer : MValueType::Float;
    }

    MString GetTextInternal() const override { return TextOf(Get()); }
    MString GetTextFrom01(double position) const override {
        return TextOf(static_cast<Computed>(ToStored(Limited(NumberAt(Limited01(position))))));
    }
    bool SetTextInternal(const MString& text) override {
        const std::optional<Computed> number = Read(text);
        return number && Assign(*number);
    }

    void Limit() override {
        const Stored limited = ToStored(Limited(Get()));
        if (limited != ref.Get<Stored>()) ref.Set(limited);
    }
    bool Step(int count, int shift) override {
        const Wide step = std::min<Wide>(std::ldexp(static_cast<Wide>(inc), shift), maxinc);
        return Assign(FromWide(static_cast<Wide>(Get()) + count * step));
    }
    bool StepFine(int count) override {
        if constexpr (logarithmicFine) return Set01(Get01() + count * kFineStep);
        return IsNewAfter([this, count] {
            Set(FromWide(static_cast<Wide>(Get()) + count * static_cast<Wide>(inc)));
        });
    }

    double Get01() const override { return Limited01(PositionOf(Get())); }
    bool Set01(double position) override { return Assign(NumberAt(Limited01(position))); }

    int GetItemCount() const override {
        return integral ? Saturated<int>(std::max<Wide>(Range() + 1, 0)) : 0;
    }

    bool HasChanged() const override { return ref.changed; }
    void ClearChanged() override { ref.changed = false; }

    Computed min;
    Computed max;
    Computed inc;     // of one step of a wheel or key
    Computed maxinc;  // of the largest
    Computed defaultValue;
    MString format = "{0}";

protected:
    virtual MString TextOf(Computed number) const {
        if constexpr (integral) {
            return FormatNumber(format, static_cast<std::int64_t>(number));
        } else {
            return FormatNumber(format, static_cast<double>(number));
        }
    }
    // Nothing where the text has no number that can be taken.
    virtual std::optional<Computed> Read(const MString& text) const {
        if constexpr (integral) {
            return Held(ScanInteger(format, text));
        } else {
            return ScanNumber(format, text);
        }
    }
    virtual double PositionOf(Computed number) const {
        if (max == min) return 0;
        return static_cast<double>((static_cast<Wide>(number) - static_cast<Wide>(min)) / Range());
    }
    // position 0..1
    virtual Computed NumberAt(double position) const {
        if constexpr (integral) {
            return FromWide(static_cast<Wide>(min) +
                            std::trunc(Range() * static_cast<Wide>(position) + 0.5));
        } else {
            return (max - min) * position + min;
        }
    }
    virtual Computed Limited(Computed number) const {
        if (!(number >= min)) return min;
        return std::min(number, max);
    }

private:
    // Holds every number of the type, differences of them and steps from one to the other.
    using Wide = std::conditional_t<integral && sizeof(Computed) == 8, long double, double>;

    // The nearest number of an integer type, its lowest for a NaN.
    template <typename Integer, typename Number>
    static Integer Saturated(Number number) {
        using Limits = std::numeric_limits<Integer>;
        if (!(number > static_cast<Number>(Limits::min()))) return Limits::min();
        if (number >= static_cast<Number>(Limits::max())) return Limits::max();
        return static_cast<Integer>(number);
    }
    static Computed FromWide(Wide number) {
        if constexpr (integral) {
            return Saturated<Computed>(number);
        } else {
            return number;
        }
    }
    static Stored ToStored(Computed number) {
        if constexpr (integral) {
            return Saturated<Stored>(number);
        } else {
            return static_cast<Stored>(number);
        }
    }
    static std::optional<Computed> Held(std::optional<std::int64_t> number) {
        if (!number) return std::nullopt;
        return Saturated<Computed>(*number);
    }
    static std::optional<Computed> Parse(const MString& text) {
        if constexpr (integral) {
            return Held(ReadInteger(text));
        } else {
            return ReadNumber(text);
        }
    }

    Wide Range() const { return static_cast<Wide>(max) - static_cast<Wide>(min); }

    template <typename Write>
    bool IsNewAfter(Write write) {
        const Stored before = ref.Get<Stored>();
        write();
        return ref.Get<Stored>() != before;
    }
    bool Assign(Computed number) {
        return IsNewAfter([this, number] {
            Set(number);
            Limit();
        });
    }

    MValueRef ref;
};

template <typename Stored, typename Computed, bool integral, bool logarithmicFine>
void MValueNumber<Stored, Computed, integral, logarithmicFine>::LoadXmlAttributes(
    MAttribute& item) {
    const auto read = [&item](const MString& name, Computed& field) {
        std::optional<Computed> number;
        if (item.HasAttribute(name)) number = Parse(item.GetCachedAttribute());
        if (number) field = *number;
        return number.has_value();
    };
    MValue::LoadXmlAttributes(item);
    read("min", min);
    read("max", max);
    const bool hasDefault = read("default", defaultValue);
    if (hasDefault) Set(defaultValue);
    if (Computed value; read("value", value)) {
        Set(value);
        if (!hasDefault) defaultValue = value;
    }
    read("inc", inc);
    if (!read("maxinc", maxinc)) maxinc = std::max(maxinc, inc);
    if (item.HasAttribute("format")) format = item.GetCachedAttribute();
}

using MValueDouble = MValueNumber<double, double, false, false>;
using MValueDoubleFine = MValueNumber<double, double, false, true>;
using MValueFloat = MValueNumber<float, double, false, false>;
using MValueInt32 = MValueNumber<int, int, true, false>;
using MValueInt16 = MValueNumber<short, int, true, false>;
using MValueInt64 = MValueNumber<long long, long long, true, false>;

extern template class MValueNumber<double, double, false, false>;
extern template class MValueNumber<double, double, false, true>;
extern template class MValueNumber<float, double, false, false>;
extern template class MValueNumber<int, int, true, false>;
extern template class MValueNumber<short, int, true, false>;
extern template class MValueNumber<long long, long long, true, false>;
