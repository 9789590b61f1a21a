// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/hexa_stream.h"

#include <algorithm>
#include <string>

#include "foundation/streams/hexa_digits.h"

namespace {

constexpr std::int32_t kWriteBytes = 128;  // a round
constexpr std::int32_t kReadDigits = 128;

}  // namespace

void MHexaStream::Write(const void* buffer, std::int32_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    std::string digits;
    for (std::int32_t left = size; left > 0; left -= kWriteBytes) {
        digits.clear();
        for (std::int32_t i = std::min(left, kWriteBytes); i > 0; --i)
            AppendHexaDigits(digits, *bytes++);
        source.Write(digits.data(), static_cast<std::int32_t>(digits.size()));
    }
}

std::int32_t MHexaStream::Read(void* buffer, std::int32_t size) {
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    std::int32_t count = 0;
    while (count < size) {
        char digits[kReadDigits];
        const std::int32_t wanted = std::min(size - count, kReadDigits / 2) * 2;
        const std::int32_t read = source.Read(digits, wanted);
        for (std::int32_t i = 0; i + 1 < read; i += 2) {
            const int high = HexaDigitValue(digits[i]);
            bytes[count++] = static_cast<std::uint8_t>(high << 4 | HexaDigitValue(digits[i + 1]));
        }
        if (read < wanted) break;
    }
    return count;
}
