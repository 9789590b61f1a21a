// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

// Rows of equally many cells in columns that are as wide as they need to be, a line each.
std::string AlignedTable(std::span<const std::vector<std::string>> rows);
