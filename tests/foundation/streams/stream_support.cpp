// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/stream_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <sstream>

namespace fs = std::filesystem;

std::string Raised(const std::function<void()>& action) {
    try {
        action();
    } catch (const MException& error) {
        const std::string context = error.context.ToUtf8();
        return std::to_string(error.code) + ' ' + context + (context.empty() ? "" : " ") +
               error.what();
    }
    return "nothing";
}

void ExpectRaised(const std::vector<Failure>& failures) {
    for (const auto& [expected, action] : failures) EXPECT_EQ(Raised(action), expected);
}

bool HoldsInChild(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        bool holds = false;
        const std::string error = Raised([&] { holds = check(); });
        _exit(holds && error == "nothing" ? 0 : 1);
    }
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0;
}

std::string ReadAll(MStream& stream, std::int32_t part) {
    std::string bytes, block(static_cast<std::size_t>(part), '\0');
    while (const std::int32_t count = stream.Read(block.data(), part))
        bytes.append(block, 0, static_cast<std::size_t>(count));
    return bytes;
}

void WriteAll(MStream& stream, const std::string& bytes) {
    stream.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

MMemoryStream Over(const std::string& bytes) {
    return MMemoryStream(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

std::string RandomBytes(std::size_t count) {
    std::mt19937 random(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

static fs::path MakeFolder() {
    std::string pattern = (fs::temp_directory_path() / "quillorea-test-XXXXXX").string();
    return mkdtemp(pattern.data()) != nullptr ? pattern : throw std::runtime_error("no folder");
}

TestFolder::TestFolder() : path(MakeFolder()) {}

TestFolder::~TestFolder() {
    std::error_code error;
    fs::remove_all(path, error);
}

MString TestFolder::operator/(const char* name) const { return MString::FromUtf8(Path(name)); }

std::string TestFolder::Content(const char* name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(path / name, std::ios::binary).rdbuf();
    return bytes.str();
}

void TestFolder::SetContent(const char* name, const std::string& bytes) const {
    std::ofstream(path / name, std::ios::binary) << bytes;
}
