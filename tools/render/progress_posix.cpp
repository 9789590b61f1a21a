// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "progress.h"

namespace {

constexpr int kWidth = 40;
constexpr std::chrono::milliseconds kDrawingInterval(100);

}  // namespace

Progress::Progress(std::int64_t total)
    : total(isatty(STDERR_FILENO) == 1 ? total : 0), nextDrawing(Clock::now() + kDrawingInterval) {}

Progress::~Progress() {
    if (shown) std::fprintf(stderr, "\r%*s\r", kWidth + 8, "");
}

void Progress::Show(std::int64_t done) {
    if (total <= 0 || Clock::now() < nextDrawing) return;
    nextDrawing = Clock::now() + kDrawingInterval;
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const std::string bar(static_cast<std::size_t>(share * kWidth), '#');
    std::fprintf(stderr, "\r[%-*s] %3.0f %%", kWidth, bar.c_str(), share * 100);
    shown = true;
}
