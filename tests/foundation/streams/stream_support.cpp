// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/stream_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <random>

namespace fs = std::filesystem;

std::string Raised(const std::function<void()>& action) {
    try {
        action();
    } catch (const MException& error) {
        const std::string context = error.context.ToUtf8();
        return std::to_string(error.code) + ' ' + context + (context.empty() ? "" : " ") +
               error.what();
    }
    return "";
}

void ExpectRaised(const std::vector<Failure>& failures) {
    for (const auto& [expected, action] : failures) EXPECT_EQ(Raised(action), expected);
}

static std::string Unescape(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t kind = text[i] == '\\' ? std::string("ntr0x").find(text[i + 1]) : 5;
        plain += kind < 4 ? "\n\t\r\0"[kind] : text[i];
        if (kind == 4)
            plain.back() = static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
        if (kind <= 4) i += kind == 4 ? 3 : 1;
    }
    return plain;
}

void CheckCases(const char* path, const std::function<std::string(const std::string&)>& action) {
    std::ifstream cases(path);
    EXPECT_TRUE(cases) << path;
    for (std::string line; std::getline(cases, line);) {
        if (line.starts_with('#')) continue;
        const std::size_t tab = line.find('\t');
        EXPECT_EQ(action(Unescape(line.substr(0, tab))), Unescape(line.substr(tab + 1))) << line;
    }
}

bool HoldsInChild(const std::function<bool()>& check) {
    std::fflush(nullptr);  // once, and not by the child too
    const pid_t child = fork();
    if (child == 0) {
        bool holds = false;
        _exit(Raised([&] { holds = check(); }).empty() && holds ? 0 : 1);
    }
    int status = 1;
    return waitpid(child, &status, 0) == child && status == 0;
}

std::string ReadSome(MStream& stream, std::int32_t size) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), size)));
    return bytes;
}

std::string ReadAll(MStream& stream, std::int32_t part) {
    std::string all;
    for (std::string bytes = ReadSome(stream, part); !bytes.empty(); bytes = ReadSome(stream, part))
        all += bytes;
    return all;
}

void WriteAll(MStream& stream, const std::string& bytes) {
    stream.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

MMemoryStream Over(std::string_view bytes) {
    return MMemoryStream(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

std::string RandomBytes(std::size_t count) {
    std::mt19937 random(7);
    std::string bytes(count, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

std::string FileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
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

void TestFolder::SetContent(const char* name, const std::string& bytes) const {
    std::ofstream(path / name, std::ios::binary) << bytes;
}
