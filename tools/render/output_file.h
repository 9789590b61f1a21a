// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// A file that appears under its name only when it is whole: written beside it under another name,
// flushed to the disk and renamed. Until Commit, a file that stands there keeps its content.
//
// Units    bytes
// Errors   RenderError from the constructor and Commit; Write and Seek answer false and keep the
//          first failure for Commit and ThrowIfFailed

class OutputFile {
public:
    // A link is followed: the file it points to is replaced.
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    // Removes what is written unless it is committed.
    ~OutputFile();

    bool Write(const void* bytes, std::int64_t count);
    bool Seek(std::int64_t newPosition);
    std::int64_t Position() const { return position; }
    std::int64_t Length() const { return length; }

    void ThrowIfFailed() const;
    void Commit();

private:
    void CreateTemporary();
    bool Check(bool succeeded);

    std::string shownPath;  // as the person gave it, for messages
    std::string path;
    std::string temporaryPath;
    std::FILE* stream = nullptr;
    std::int64_t position = 0;
    std::int64_t length = 0;
    int failure = 0;  // errno of the first failure
};
