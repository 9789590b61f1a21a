// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameter_value.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "errors.h"
#include "nearest_text.h"
#include "number_text.h"

namespace {

constexpr double kSlack = 5e-6;  // of a range: six digits are shown, and what is shown can be typed

bool IsFloat(const ParameterRecord& record) { return record.type == ParameterType::Float; }

std::string TextAt(ParameterMainBase& parameter, double position) {
    return parameter.GetParameterValueNameFrom01(0, position).ToUtf8();
}

// What a text says behind its number; all of one that starts with none.
std::string UnitOf(const std::string& text) {
    const std::string folded = Folded(text);
    return folded.substr(std::min(folded.find_first_not_of("+-.0123456789"), folded.size()));
}

// Texts that the parameter shows and reads back as the same: of its default, its least, its most.
std::vector<std::string> TextsReadBack(ParameterMainBase& parameter) {
    const ParameterRecord& record = parameter.record;
    std::vector<std::string> texts;
    for (const double position : {record.PositionOf(record.defaultValue), 0.0, 1.0}) {
        const std::string text = TextAt(parameter, position);
        double readBack = -1;
        parameter.ParsePositionFromText(0, MString::FromUtf8(text), readBack);
        if (!text.empty() && std::abs(readBack - position) < 0.01) texts.push_back(text);
    }
    return texts;
}

// The plug-in's readers look at the number alone, so "1 s" would become 1 ms without this.
bool HasUnitOf(ParameterMainBase& parameter, const std::string& text) {
    const std::vector<std::string> shown = TextsReadBack(parameter);
    return std::any_of(shown.begin(), shown.end(), [&](const std::string& each) {
        return UnitOf(each).starts_with(UnitOf(text));
    });
}

std::optional<double> Fitted(const ParameterRecord& record, double value) {
    const double size = std::max(std::abs(record.min), std::abs(record.max));
    const double slack = IsFloat(record) ? kSlack * size : 0;
    const bool fits = value >= record.min - slack && value <= record.max + slack;
    if (!fits || (!IsFloat(record) && value != std::floor(value))) return std::nullopt;
    return std::clamp(value, record.min, record.max);
}

std::optional<double> ReadOption(const ParameterRecord& record, const std::string& text) {
    for (std::size_t o = 0; o < record.options.size(); ++o)
        if (Folded(record.options[o].ToUtf8()) == Folded(text)) return static_cast<double>(o);
    return std::nullopt;
}

// As the plug-in reads it, but nothing beyond the range.
std::optional<double> ReadShown(ParameterMainBase& parameter, const std::string& text) {
    if (!HasUnitOf(parameter, text)) return std::nullopt;
    const ParameterRecord& record = parameter.record;
    const MString typed = MString::FromUtf8(text);
    if (record.text.read != nullptr) {
        const std::optional<double> value = record.text.read(typed);
        return value ? Fitted(record, *value) : std::nullopt;
    }
    double position = 0;
    if (!parameter.ParsePositionFromText(0, typed, position)) return std::nullopt;
    const double value = record.ValueAt(position);
    return IsFloat(record) ? value : std::round(value);
}

// The words that people also use for a switch.
const char* SwitchText(const std::string& text) {
    const std::string folded = Folded(text);
    if (folded == "yes" || folded == "true") return "On";
    return folded == "no" || folded == "false" ? "Off" : text.c_str();
}

std::optional<double> TryReadValue(ParameterMainBase& parameter, const std::string& text) {
    if (const std::optional<double> option = ReadOption(parameter.record, text)) return option;
    if (const std::optional<double> number = ParseNumber(text))
        return Fitted(parameter.record, *number);
    const bool isSwitch = parameter.record.max == 1 && !IsFloat(parameter.record);
    return ReadShown(parameter, isSwitch ? SwitchText(text) : text);
}

[[noreturn]] void Refuse(ParameterMainBase& parameter, const std::string& taken,
                         const std::string& text) {
    const std::vector<std::string> examples = TextsReadBack(parameter);
    const bool hasTexts = IsFloat(parameter.record) && !examples.empty();
    throw RenderError("'" + parameter.record.name.ToUtf8() + "' takes " + taken +
                      (hasTexts ? " or a text such as '" + examples[0] + "'" : "") + ", not '" +
                      text + "'.");
}

}  // namespace

bool IsSettable(const ParameterMainBase& parameter) { return parameter.automatable; }

double ReadValue(ParameterMainBase& parameter, const std::string& text) {
    if (const std::optional<double> value = TryReadValue(parameter, text)) return *value;
    Refuse(parameter, DescribeRange(parameter.record), text);
}

double ReadPosition(ParameterMainBase& parameter, const std::string& text) {
    const ParameterRecord& record = parameter.record;
    const std::optional<double> number = ParseNumber(text);
    if (number && *number >= 0 && *number <= 1) return *number;
    const bool isText = !number || !IsFloat(record);
    const std::optional<double> value = isText ? TryReadValue(parameter, text) : std::nullopt;
    if (value) return record.PositionOf(*value);
    Refuse(parameter,
           "positions from 0 to 1" + (IsFloat(record) ? "" : " and " + DescribeRange(record)),
           text);
}

std::string DescribeRange(const ParameterRecord& record) {
    std::string range = FormatNumber(record.min) + " to " + FormatNumber(record.max);
    switch (record.type) {
        case ParameterType::Integer:
            return "a whole number from " + range;
        case ParameterType::Boolean:
        case ParameterType::Group:
            return record.max > 0 ? "on or off" : "";
        case ParameterType::Enumeration: {
            std::string options;
            for (const MString& option : record.options)
                options += (options.empty() ? "'" : ", '") + option.ToUtf8() + "'";
            return options;
        }
        default:
            return range;
    }
}

std::string DescribeDefault(ParameterMainBase& parameter) {
    const ParameterRecord& record = parameter.record;
    const std::string text = TextAt(parameter, record.PositionOf(record.defaultValue));
    return IsFloat(record) ? FormatNumber(record.defaultValue) + " = " + text : text;
}
