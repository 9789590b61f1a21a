// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_formatter.h"

#include <algorithm>
#include <array>

#include "foundation/text/format_placeholder.h"
#include "foundation/text/unit_buffer.h"

namespace {

// Where the value of an argument goes.
struct ArgumentRecord : FormatPlaceholder {
    std::int32_t position = -1;  // in the output; -1 for an argument that the format does not name
    std::int32_t order = 0;      // among the placeholders at the same position

    bool StandsBehind(const ArgumentRecord& other) const {
        return position > other.position || (position == other.position && order > other.order);
    }
};

MString WithSign(bool forced, MString number) {
    return forced ? MString("+").Append(number) : number;
}

}  // namespace

struct MStringFormatter::State {
    explicit State(const MString& format);

    // What the next argument is to look like, null for one that the format does not name.
    const FormatPlaceholder* Next() const;
    void Push(const MString& value);

    MString output;

private:
    void Place(const FormatPlaceholder& placeholder, std::int32_t position);

    std::array<ArgumentRecord, FormatPlaceholder::kArguments> records;
    int currentArgument = 0;
};

MStringFormatter::State::State(const MString& format) {
    UnitBuffer<255> buffer(output);
    for (std::int32_t i = 0; i < format.Length();) {
        const char16_t unit = format[i++];
        if (unit == u'{' && format[i] != u'{') {
            Place(ReadPlaceholder(format, i), buffer.TotalLength());
        } else if (unit == u'{' || unit == u'}') {
            if (i < format.Length()) buffer.Put(format[i++]);
        } else {
            buffer.Put(unit);
        }
    }
    buffer.Flush();
}

void MStringFormatter::State::Place(const FormatPlaceholder& placeholder, std::int32_t position) {
    if (!placeholder.NamesArgument()) return;
    std::int32_t order = 0;
    for (const ArgumentRecord& other : records) {
        if (other.position == position) order = std::max(order, other.order + 1);
    }
    records[static_cast<std::size_t>(placeholder.argument)] = {placeholder, position, order};
}

const FormatPlaceholder* MStringFormatter::State::Next() const {
    if (currentArgument >= FormatPlaceholder::kArguments) return nullptr;
    const ArgumentRecord& record = records[static_cast<std::size_t>(currentArgument)];
    return record.position >= 0 ? &record : nullptr;
}

void MStringFormatter::State::Push(const MString& value) {
    if (Next() != nullptr) {
        const ArgumentRecord record = records[static_cast<std::size_t>(currentArgument)];
        output.Insert(record.position, value);
        for (ArgumentRecord& other : records) {
            if (other.StandsBehind(record)) other.position += value.Length();
        }
    }
    ++currentArgument;
}

MStringFormatter::MStringFormatter(const MString& format)
    : state(std::make_shared<State>(format)) {}

MStringFormatter::operator MString() const { return state->output; }

MStringFormatter MStringFormatter::operator<<(const MString& text) const {
    state->Push(text);
    return *this;
}

MStringFormatter MStringFormatter::PushSigned(std::int64_t value) const {
    const FormatPlaceholder* const to = state->Next();
    if (to == nullptr) return *this << MString();
    const int radix = to->hexadecimal ? 16 : 10;
    return *this << WithSign(to->forcedSign && value > 0,
                             MString::FromInt(value, radix, to->width, to->padding));
}

MStringFormatter MStringFormatter::PushUnsigned(std::uint64_t value) const {
    const FormatPlaceholder* const to = state->Next();
    if (to == nullptr) return *this << MString();
    const int radix = to->hexadecimal ? 16 : 10;
    return *this << WithSign(to->forcedSign && value > 0,
                             MString::FromUnsigned(value, radix, to->width, to->padding));
}

MStringFormatter MStringFormatter::PushDouble(double value) const {
    const FormatPlaceholder* const to = state->Next();
    if (to == nullptr) return *this << MString();
    const double shown = to->forcedSign && value == 0 ? 0.0 : value;
    return *this << WithSign(to->forcedSign && value - 1e-20 > 0,
                             MString::FromDouble(shown, to->precision));
}
