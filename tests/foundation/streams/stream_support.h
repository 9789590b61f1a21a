// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "foundation/streams/mstream.h"

// "CODE TEXT" of the MException that the action raises, else "nothing".
std::string Raised(const std::function<void()>& action);

// In a process of its own, where limits and rights may change. Whether it gave true.
bool HoldsInChild(const std::function<bool()>& check);

// What Read gives until it gives nothing, in parts of that size.
std::string ReadAll(MStream& stream, std::int32_t part = 1000);
void WriteAll(MStream& stream, const std::string& bytes);

// Bytes that no compressor finds anything in.
std::string RandomBytes(std::size_t count);

// A folder that goes with the test.
class TestFolder {
public:
    TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder();

    MString operator/(const char* name) const;
    std::string Path(const char* name) const { return (path / name).string(); }
    std::string Content(const char* name) const;
    void SetContent(const char* name, const std::string& bytes) const;
    // How many files are there.
    std::ptrdiff_t Count() const;

    const std::filesystem::path path;
};

// Runs a program with its arguments, its output dropped. Whether it ended well.
bool RunsWell(const std::string& command);
