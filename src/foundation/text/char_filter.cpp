// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/char_filter.h"

namespace {

bool IsLetter(char16_t character) {
    return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
}

bool IsDigit(char16_t character) { return character >= u'0' && character <= u'9'; }

}  // namespace

bool MCharFilter::AllFilter::IsAllowed(char16_t) const { return true; }

bool MCharFilter::LettersFilter::IsAllowed(char16_t character) const { return IsLetter(character); }

bool MCharFilter::AlphaFilter::IsAllowed(char16_t character) const {
    return IsLetter(character) || IsDigit(character) || character == u'-' || character == u'.' ||
           character == u' ';
}

bool MCharFilter::AlphaStrictFilter::IsAllowed(char16_t character) const {
    return IsLetter(character) || IsDigit(character);
}

bool MCharFilter::IntegerFilter::IsAllowed(char16_t character) const {
    return IsDigit(character) || character == u'-';
}

bool MCharFilter::IntegerHexaFilter::IsAllowed(char16_t character) const {
    return IsDigit(character) || (character >= u'a' && character <= u'f') ||
           (character >= u'A' && character <= u'F');
}

bool MCharFilter::FloatFilter::IsAllowed(char16_t character) const {
    return IsDigit(character) || character == u'-' || character == u'.';
}
