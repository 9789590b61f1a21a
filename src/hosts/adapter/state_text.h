// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class MAudioPlugin;
class MByteStream;

// The state of a plug-in as hosts keep it: the text of its tree, root "settings", in utf-8. It is
// the same through every interface.
//
// Units    bytes
// Threads  any but the audio thread, which goes on or is silent meanwhile; under no lock
// Errors   what the stream and the XML reader raise; MException with code 256 and the texts told
//          below. Where a text is refused the plug-in is as it was

// What is longer is no state of ours.
inline constexpr std::int64_t kLargestState = std::int64_t{16} << 20;

// Writes nothing where the plug-in can't tell its state: raises "Could not store the settings.".
void WriteState(MAudioPlugin& plugin, MByteStream& stream);

// Reads the whole, then applies it. Refuses what is malformed, cut short or too long, and another
// product's: "Invalid file contents. These are no settings.". Raises "Could not load the
// settings." where the plug-in could not apply all of it.
void ReadState(MAudioPlugin& plugin, MByteStream& stream);
