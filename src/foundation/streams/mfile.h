// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "foundation/text/mstring.h"

// What is done to files and folders by their names.
//
// Threads  any
// Errors   MException with code 0 and the text that stands at the operation; nothing has changed
//          then

class MFile {
public:
    struct Entry {
        MString name;
        bool isDirectory = false;
    };

    MFile() = delete;

    // With all folders above it; what is created belongs to the user alone. One that is there is
    // fine. "Could not create path \"{0}\"."
    static void CreatePath(const MString& path);
    // A file of the new name is replaced. "Could not rename file \"{0}\" to \"{1}\"."
    static void Rename(const MString& from, const MString& to);
    // "Could not delete file \"{0}\"."
    static void Delete(const MString& path);
    // An empty one. "Could not remove directory \"{0}\"."
    static void RemoveDirectory(const MString& path);
    // Sorted by name; a link counts as what it leads to. What has a name that is no Unicode text is
    // left out. "Could not access path \"{0}\" to get file list."
    static std::vector<Entry> GetFileList(const MString& path);
    static bool Exists(const MString& path);
    static bool IsDirectory(const MString& path);

    // Start without waiting for an end; what the started program tells is not seen.
    // "Could not execute file \"{0}\"."
    //
    // A program is run, anything else is opened by the desktop.
    static void Execute(const MString& path);
    // A web address in the browser, with "http://" in front where it names no scheme.
    static void ExecuteWWW(const MString& address);
    // A new mail to the address, with a subject where that is not empty.
    static void ExecuteMail(const MString& address, const MString& subject = MString());
};
