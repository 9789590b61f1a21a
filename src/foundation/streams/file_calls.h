// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdio>

#include "foundation/text/mstring.h"

// What the C library's files leave to the system: names in Unicode, long offsets, cutting, and what
// a safe exchange of files needs.
//
// Threads  one a file
// Errors   told by the result

enum class FileMode {
    Read,       // what is there
    Write,      // created or emptied
    Update,     // what is there, both ways
    Exclusive,  // to write, created; fails where something has that name
    Private,    // the same, for the user alone
};

// Null on failure; a directory is no file.
std::FILE* OpenFile(const MString& path, FileMode mode);

bool SeekFile(std::FILE* file, std::int64_t position);
// -1 on failure.
std::int64_t TellFile(std::FILE* file);
bool MoveToFileEnd(std::FILE* file);
// What is flushed and stands behind the position goes.
bool TruncateFile(std::FILE* file, std::int64_t position);

// Waits until what is flushed is on the medium. False where that is known to have failed.
bool SyncFile(std::FILE* file);
// The same for the names in a directory, as far as the system can.
void SyncDirectory(const MString& path);

// False where the path names something that this process may not write to.
bool IsWritable(const MString& path);
// Gives the file the permissions that the one at the path has, where there is one.
void CopyPermissions(const MString& path, std::FILE* file);
// A number that no other process has at this time.
std::uint64_t ProcessNumber();
