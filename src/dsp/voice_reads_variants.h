// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "dsp/voice_reads.h"

// The variants that dsp/voice_reads.cpp picks from; each is compiled for its own processor.

extern const VoiceReads kBaselineVoiceReads;
extern const VoiceReads kAvx2VoiceReads;
extern const VoiceReads kAvx512VoiceReads;

// 128-bit arithmetic on every processor: four reads fill a vector, a wider one would gain nothing.
void ReadCubic(const LineView& line, const ReadPoints& points, float* out);
