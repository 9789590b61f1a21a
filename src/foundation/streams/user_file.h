// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "foundation/streams/mstream.h"

// Files that a user would miss: presets, settings, exports.
//
//     WriteUserFile(path, [&](MStream& file) { document.Save(file, true, "utf-8"); });
//
// Threads  any; of two that write one file the later one wins
// Errors   MException "File \"{0}\" could not be created. Make sure there is no write-protected
//          file already existing.", "Error writing to file \"{0}\". Probably disk full." with code
//          256, "Could not rename file \"{0}\" to \"{1}\"."; what write raises. The file that was
//          there is then as it was
// Method   a temporary file in the same folder, brought to the medium, then renamed

// Who may read a file that is new.
enum class UserFileAccess { Everybody, OwnerOnly };

// A link leads to the file that is replaced; the new one has the permissions of the old one.
void WriteUserFile(const MString& path, const std::function<void(MStream&)>& write,
                   UserFileAccess access = UserFileAccess::Everybody);
