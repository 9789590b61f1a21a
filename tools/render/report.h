// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "renderer.h"

// What the person reads when a file is done.

// One line: length, speed, peak and RMS level of input and output.
std::string SummaryLine(const std::string& outputPath, const RenderReport& report);

// What should be known about the output's quality, a line each; mostly nothing.
std::string Warnings(const std::string& outputPath, const RenderReport& report);
