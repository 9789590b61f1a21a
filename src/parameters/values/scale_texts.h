// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "foundation/text/mstring.h"

// The texts of the scales and their readers, for values and for whoever describes a parameter.
//
//     DecibelText(0.5);      // "-6.02 dB"
//     ReadTime("250 ms");    // 0.25
//
// Thresholds are taken on the magnitude of the number. A reader takes the number at the start of
// the text in the scale's one unit and leaves the rest unread: "1.5 kHz" is 1.5 Hz.
//
// Threads  any
// Memory   one allocation a text at most
// Errors   std::bad_alloc

// Fractions: 0.25 is "25.0%".
MString PercentText(double fraction);
std::optional<double> ReadPercents(const MString& text);

// Amplitudes: 0 is "silence", 1 is "0.00 dB".
MString DecibelText(double amplitude);
MString DecibelNumberText(double amplitude);  // without the unit
// Anything without a number is 0 dB.
std::optional<double> ReadDecibels(const MString& text);

// Hertz: "440 Hz".
MString FrequencyText(double hertz);
// The same in one word, with what separates number and unit.
MString FrequencyCaption(double hertz, const MString& separator);
std::optional<double> ReadFrequency(const MString& text);
// Decimal logarithms of hertz.
MString LogFrequencyText(double logHertz);
// Nothing for a frequency that is not above 0.
std::optional<double> ReadLogFrequency(const MString& text);

// The nearest note of a frequency and the distance from it: "A4 (0 cents)", "C5 (+12 cents)". Empty
// for what is too low to have one. 523.25 Hz is C5 here; NoteText names the same sound C6.
MString PitchText(double hertz);

// The name of a MIDI note, of which 60 is "C5"; empty below 0.
MString NoteText(int note);

// -1 left .. 1 right: "center", "25% left". Its reader is ReadPercents: signed, without the words.
MString PanText(double pan);

// Fractions of a turn: 0.25 is "90° (25.0%)"; degrees are read.
MString DegreesText(double turns);
std::optional<double> ReadDegrees(const MString& text);

// Seconds, told in milliseconds at every length: "2500 ms".
MString TimeText(double seconds);
std::optional<double> ReadTime(const MString& text);

// Position 0 .. 15 among the base shapes: "Sine", "75% Sine, 25% Harmonics".
MString SignalShapeText(double position);
