// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

// Bytes as pairs of hexadecimal digits, the high half first, upper case.
//
// Threads  any

void AppendHexaDigits(std::string& digits, std::uint8_t byte);

// Either case. Raises MException "Invalid character to be converted to a number." with code 256.
std::uint8_t HexaDigitValue(char digit);
