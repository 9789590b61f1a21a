// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/hexa_digits.h"

#include "foundation/text/exception.h"

void AppendHexaDigits(std::string& digits, std::uint8_t byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    digits += kDigits[byte >> 4];
    digits += kDigits[byte & 15];
}

std::uint8_t HexaDigitValue(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
    if (digit >= 'A' && digit <= 'F') return static_cast<std::uint8_t>(digit - 'A' + 10);
    if (digit >= 'a' && digit <= 'f') return static_cast<std::uint8_t>(digit - 'a' + 10);
    throw MException("Invalid character to be converted to a number.", 256);
}
