// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <string_view>

// How what people type is compared with the names of things.

// Letters in lower case and no blanks: "Haas (2 ms)" is "haas(2ms)".
std::string Folded(std::string_view text);

// The candidate that takes the fewest keystrokes to make of wanted, both folded.
std::string NearestText(std::string_view wanted, std::span<const std::string> candidates);
