// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>

// A progress bar on stderr, drawn only where that is a terminal.
//
// Units    samples done of samples expected; an unknown total, 0, draws nothing
// Method   at most ten drawings a second; the line is cleared at the end

class Progress {
public:
    explicit Progress(std::int64_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void Show(std::int64_t done);

private:
    using Clock = std::chrono::steady_clock;

    std::int64_t total;
    bool shown = false;
    Clock::time_point nextDrawing;
};
