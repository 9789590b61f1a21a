// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameter_text.h"

#include <cctype>
#include <cmath>

#include "number_text.h"

std::string Folded(std::string_view text) {
    std::string folded;
    for (const char letter : text) {
        const auto plain = static_cast<unsigned char>(letter);
        if (!std::isspace(plain)) folded += static_cast<char>(std::tolower(plain));
    }
    return folded;
}

bool IsSettable(const ParameterRecord& record) {
    switch (record.type) {
        case ParameterType::None:
        case ParameterType::Hidden:
            return false;
        case ParameterType::Group:
            return record.max > 0;
        default:
            return record.Has(ParameterFlag::kTakesPart);
    }
}

std::string DescribeRange(const ParameterRecord& record) {
    std::string range = FormatNumber(record.min) + " to " + FormatNumber(record.max);
    switch (record.type) {
        case ParameterType::Integer:
            return "a whole number from " + range;
        case ParameterType::Boolean:
        case ParameterType::Group:
            return IsSettable(record) ? "on or off" : "";
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

std::string DescribeDefault(const ParameterRecord& record) {
    if (!IsSettable(record)) return "";
    switch (record.type) {
        case ParameterType::Boolean:
        case ParameterType::Group:
            return record.defaultValue >= 0.5 ? "on" : "off";
        case ParameterType::Enumeration:
            return record.options.at(static_cast<std::size_t>(record.defaultValue)).ToUtf8();
        default:
            return FormatNumber(record.defaultValue);
    }
}
