// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/streams/memory_stream.h"
#include "foundation/text/exception.h"

// "CODE CONTEXT TEXT" of the MException that the action raises, else "".
std::string Raised(const std::function<void()>& action);

// The same, and what raises it.
using Failure = std::pair<std::string, std::function<void()>>;

void ExpectRaised(const std::vector<Failure>& failures);

// Each line of a file that is no comment ("#"): what the action is given, a tab, what it answers.
// \n \t \r \0 \xNN as in C.
void CheckCases(const char* path, const std::function<std::string(const std::string&)>& action);

// In a process of its own, where limits and rights may change. Whether it gave true.
bool HoldsInChild(const std::function<bool()>& check);

// What one Read gives.
std::string ReadSome(MStream& stream, std::int32_t size);
// What Read gives until it gives nothing, in parts of that size.
std::string ReadAll(MStream& stream, std::int32_t part = 1000);
void WriteAll(MStream& stream, const std::string& bytes);
// A stream to read these bytes from, which outlive it.
MMemoryStream Over(std::string_view bytes);

// Bytes that no compressor finds anything in.
std::string RandomBytes(std::size_t count);

std::string FileBytes(const std::string& path);

// A folder that goes with the test.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();

    MString operator/(const char* name) const;
    std::string Path(const char* name) const { return (path / name).string(); }
    std::string Content(const char* name) const { return FileBytes(Path(name)); }
    void SetContent(const char* name, const std::string& bytes) const;

    const std::filesystem::path path;
};
