// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Silences the channels of a host's bus behind the first ones, which the plug-in has written. One
// whose buffer is also one of those is left alone; null ones are skipped.
//
// Units    samples
// Threads  the audio thread
void SilenceUnserved(float* const* channels, int channelCount, int served, int sampleCount);
