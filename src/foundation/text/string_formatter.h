// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>

#include "foundation/text/mstring.h"

// Text from a format string and arguments. All text that users see is made here.
//
//     MString text = MStringFormatter("{0} of {1;.2} dB") << "Gain" << 3.0;   // "Gain of 3.00 dB"
//
// Arguments are matched to placeholders by the order in which they are pushed, never by type. For
// placeholders see FormatPlaceholder. "{{" is an opening brace. A closing brace outside a
// placeholder is dropped and the character behind it is copied as it is: "}}" is a closing brace.
//
//     text       as it stands; options have no effect
//     integer    decimal, or hexadecimal in upper case; sign and padding as in MString::FromInt
//     double     4 decimals where no precision is told, see MString::FromDouble; never padded
//
// A forced sign stands in front of integers above 0 and of doubles above 1e-20; zero has no sign
// then, not even a negative zero. An argument named twice is inserted at its last place; a
// placeholder without an argument vanishes; an argument without a placeholder is left out.
//
// Threads  one at a time; a copy is another handle of the same text
// Memory   allocates; not for the audio thread
// Errors   MException "Formatting string ends in an argument specification."

class MStringFormatter {
public:
    explicit MStringFormatter(const MString& format);

    // Null is the empty text.
    MStringFormatter operator<<(const MString& text) const;
    MStringFormatter operator<<(const char* text) const { return *this << MString(text); }
    template <std::signed_integral T>
    MStringFormatter operator<<(T value) const {
        return PushSigned(value);
    }
    template <std::unsigned_integral T>
    MStringFormatter operator<<(T value) const {
        return PushUnsigned(value);
    }
    template <std::floating_point T>
    MStringFormatter operator<<(T value) const {
        return PushDouble(static_cast<double>(value));
    }

    // The text with the arguments so far.
    operator MString() const;

private:
    struct State;

    MStringFormatter PushSigned(std::int64_t value) const;
    MStringFormatter PushUnsigned(std::uint64_t value) const;
    MStringFormatter PushDouble(double value) const;

    std::shared_ptr<State> state;
};
