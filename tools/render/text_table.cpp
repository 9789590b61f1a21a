// SPDX-License-Identifier: GPL-3.0-or-later
#include "text_table.h"

#include <algorithm>

std::string AlignedTable(std::span<const std::vector<std::string>> rows) {
    constexpr std::size_t kGap = 2;
    std::vector<std::size_t> widths(rows.empty() ? 0 : rows[0].size());
    for (const auto& row : rows)
        for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
    std::string text;
    for (const auto& row : rows) {
        for (std::size_t c = 0; c < row.size(); ++c)
            text += row[c] + std::string(widths[c] - row[c].size() + kGap, ' ');
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    }
    return text;
}
