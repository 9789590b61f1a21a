// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/number_reader.h"

#include <charconv>
#include <limits>
#include <string>
#include <string_view>

namespace {

// The text as bytes for from_chars, which knows neither blanks nor a plus. Ends at the first
// character that belongs to no number.
std::string NumberAtStart(const MString& text, std::string_view characters) {
    std::int32_t i = 0;
    while (i < text.Length() && text[i] <= u' ') ++i;
    std::string bytes;
    if (text[i] == u'-') bytes += '-';
    if (text[i] == u'-' || text[i] == u'+') ++i;
    if (text[i] == u'-') return "";
    for (; text[i] != 0 && text[i] < 0x80; ++i) {
        const char character = static_cast<char>(text[i]);
        if (characters.find(character) == std::string_view::npos) break;
        bytes += character;
    }
    return bytes;
}

}  // namespace

std::optional<double> ReadNumber(const MString& text) {
    const std::string bytes = NumberAtStart(text, "0123456789.eE+-");
    double number = 0;
    const auto result = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
    if (result.ec != std::errc()) return std::nullopt;
    return number;
}

std::optional<std::int64_t> ReadInteger(const MString& text, int radix) {
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    const std::string bytes = NumberAtStart(text, radix > 10 ? kDigits : kDigits.substr(0, 10));
    std::int64_t number = 0;
    const auto result = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number, radix);
    if (result.ec == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<std::int64_t>;
        return bytes.front() == '-' ? Limits::min() : Limits::max();
    }
    if (result.ec != std::errc()) return std::nullopt;
    return number;
}
