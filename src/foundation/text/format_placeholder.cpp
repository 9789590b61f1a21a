// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/format_placeholder.h"

#include <algorithm>

#include "foundation/text/exception.h"
#include "foundation/text/number_parse.h"

namespace {

int ReadNumber(const MString& format, std::int32_t& position, std::int32_t maximum) {
    const ParsedInteger parsed = ParseInteger(format, position, maximum, 10);
    position += parsed.consumed;
    return static_cast<int>(parsed.value);
}

int ReadSize(const MString& format, std::int32_t& position) {
    return std::max(ReadNumber(format, position, 2), 0);
}

void ReadOption(const MString& format, std::int32_t& position, FormatPlaceholder& placeholder) {
    const char16_t option = format[position++];
    switch (option) {
        case u'+':
            placeholder.forcedSign = true;
            break;
        case u'x':
            placeholder.hexadecimal = true;
            break;
        case u'.':
            placeholder.precision = ReadSize(format, position);
            break;
        case u'0':
        case u' ':
            placeholder.padding = option;
            placeholder.width = ReadSize(format, position);
            break;
        default:
            break;
    }
}

}  // namespace

FormatPlaceholder ReadPlaceholder(const MString& format, std::int32_t& position) {
    FormatPlaceholder placeholder;
    placeholder.argument = ReadNumber(format, position, 3);
    while (format[position] != u'}') {
        if (format[position] == 0)
            throw MException("Formatting string ends in an argument specification.");
        ReadOption(format, position, placeholder);
    }
    ++position;
    return placeholder;
}
