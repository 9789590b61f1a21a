// SPDX-License-Identifier: GPL-3.0-or-later
#include "number_text.h"

#include <array>
#include <charconv>
#include <cmath>

std::optional<double> ParseNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number)) return std::nullopt;
    return number;
}

std::string FormatNumber(double number) {
    constexpr int kDigits = 6;
    constexpr double kLongestWhole = 1e15;
    const bool whole = number == std::floor(number) && std::abs(number) < kLongestWhole;
    std::array<char, 32> text{};
    char* const end = text.data() + text.size();
    const auto result =
        whole ? std::to_chars(text.data(), end, number, std::chars_format::fixed)
              : std::to_chars(text.data(), end, number, std::chars_format::general, kDigits);
    return std::string(text.data(), result.ptr);
}

std::string FormatDigits(double number, int digits) {
    std::array<char, 64> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number,
                                      std::chars_format::fixed, digits);
    return std::string(text.data(), result.ptr);
}
