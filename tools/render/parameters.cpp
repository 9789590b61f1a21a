// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

#include "errors.h"
#include "number_text.h"
#include "parameter_text.h"

namespace {

std::span<const ParameterRecord> Records(const PluginDescriptor& descriptor) {
    return {descriptor.parameters, static_cast<std::size_t>(descriptor.parameterCount)};
}

// Levenshtein's: the fewest letters to insert, delete or exchange.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t exchanged = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

std::string NearestTo(const PluginDescriptor& descriptor, const std::string& wanted) {
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const ParameterRecord& record : Records(descriptor)) {
        if (!IsSettable(record)) continue;
        for (const std::string& text : {record.identifier.ToUtf8(), record.name.ToUtf8()}) {
            const std::size_t distance = EditDistance(Folded(text), Folded(wanted));
            if (distance >= least) continue;
            least = distance;
            nearest = text;
        }
    }
    return nearest;
}

int FindParameter(const PluginDescriptor& descriptor, const std::string& wanted) {
    const std::string folded = Folded(wanted);
    for (const bool byName : {false, true}) {
        for (int p = 0; p < descriptor.parameterCount; ++p) {
            const ParameterRecord& record = descriptor.parameters[p];
            const std::string text = (byName ? record.name : record.identifier).ToUtf8();
            if (!text.empty() && IsSettable(record) && Folded(text) == folded) return p;
        }
    }
    throw RenderError("There is no parameter '" + wanted + "'; the nearest is '" +
                      NearestTo(descriptor, wanted) + "' (--list shows them all).");
}

std::optional<double> ReadOption(const ParameterRecord& record, const std::string& text) {
    for (std::size_t o = 0; o < record.options.size(); ++o)
        if (Folded(record.options[o].ToUtf8()) == Folded(text)) return static_cast<double>(o);
    return ParseNumber(text);
}

std::optional<double> ReadSwitch(const std::string& text) {
    const std::string folded = Folded(text);
    for (const char* on : {"on", "1", "yes", "true"})
        if (folded == on) return 1;
    for (const char* off : {"off", "0", "no", "false"})
        if (folded == off) return 0;
    return std::nullopt;
}

// The value that a text means to a record; nothing where the record does not take it.
std::optional<double> ReadValue(const ParameterRecord& record, const std::string& text) {
    const bool isFloat = record.type == ParameterType::Float;
    std::optional<double> value;
    switch (record.type) {
        case ParameterType::Enumeration:
            value = ReadOption(record, text);
            break;
        case ParameterType::Boolean:
        case ParameterType::Group:
            value = ReadSwitch(text);
            break;
        default:
            value = ParseNumber(text);
            break;
    }
    // Six digits are shown of a range's ends, and what is shown can be typed.
    const double slack = isFloat ? 5e-6 * std::max(std::abs(record.min), std::abs(record.max)) : 0;
    const bool fits = value && *value >= record.min - slack && *value <= record.max + slack;
    if (!fits || (!isFloat && *value != std::floor(*value))) return std::nullopt;
    return std::clamp(*value, record.min, record.max);
}

ParameterSetting ReadSetting(const PluginDescriptor& descriptor, const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw UsageError("--set takes PARAMETER=VALUE, not '" + text + "'.");
    const int index = FindParameter(descriptor, text.substr(0, equals));
    const ParameterRecord& record = descriptor.parameters[index];
    const std::string valueText = text.substr(equals + 1);
    const std::optional<double> value = ReadValue(record, valueText);
    if (!value)
        throw RenderError("'" + record.name.ToUtf8() + "' takes " + DescribeRange(record) +
                          ", not '" + valueText + "'.");
    return {index, *value};
}

using TableRow = std::array<std::string, 5>;

std::string AlignedTable(std::span<const TableRow> rows) {
    constexpr std::size_t kGap = 2;
    std::array<std::size_t, std::tuple_size_v<TableRow>> widths{};
    for (const TableRow& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
    std::string text;
    for (const TableRow& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            text += row[c] + std::string(widths[c] - row[c].size() + kGap, ' ');
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}

}  // namespace

std::vector<ParameterSetting> ReadSettings(const PluginDescriptor& descriptor,
                                           std::span<const std::string> texts) {
    std::vector<ParameterSetting> settings;
    for (const std::string& text : texts) settings.push_back(ReadSetting(descriptor, text));
    return settings;
}

std::string ListParameters(const PluginDescriptor& descriptor) {
    std::vector<TableRow> rows = {{"Index", "Name", "Identifier", "Range", "Default"}};
    std::string choices;
    for (const ParameterRecord& record : Records(descriptor)) {
        const bool chosen = record.type == ParameterType::Enumeration;
        rows.push_back({std::to_string(rows.size() - 1), record.name.ToUtf8(),
                        record.identifier.ToUtf8(), chosen ? "see below" : DescribeRange(record),
                        DescribeDefault(record)});
        if (chosen) choices += record.name.ToUtf8() + ": " + DescribeRange(record) + "\n";
    }
    return AlignedTable(rows) + '\n' + choices + '\n' + kUnitsNote + '\n';
}
