// SPDX-License-Identifier: GPL-3.0-or-later
#include "nearest_text.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numeric>
#include <vector>

namespace {

// Levenshtein's: the fewest letters to insert, delete or exchange.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t exchanged = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Folded(std::string_view text) {
    std::string folded;
    for (const char letter : text) {
        const auto plain = static_cast<unsigned char>(letter);
        if (!std::isspace(plain)) folded += static_cast<char>(std::tolower(plain));
    }
    return folded;
}

std::string NearestText(std::string_view wanted, std::span<const std::string> candidates) {
    std::string nearest;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const std::string& text : candidates) {
        const std::size_t distance = EditDistance(Folded(text), Folded(wanted));
        if (distance >= least) continue;
        least = distance;
        nearest = text;
    }
    return nearest;
}
