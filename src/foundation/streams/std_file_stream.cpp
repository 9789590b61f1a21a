// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/std_file_stream.h"

#include <cerrno>
#include <utility>

#include "foundation/streams/file_calls.h"
#include "foundation/streams/read_line_inl.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

[[noreturn]] void RaiseSeekFailed() { throw MException("Could not perform file seek.", 256); }

FileMode FileModeFor(MStdFileStream::Mode mode) {
    switch (mode) {
        case MStdFileStream::Mode::Read:
            return FileMode::Read;
        case MStdFileStream::Mode::Write:
            return FileMode::Write;
        default:
            return FileMode::Update;
    }
}

// A signal of the process ends the wait for a console; that is no failure.
bool WasInterrupted(std::FILE* file) {
    if (!std::ferror(file) || errno != EINTR) return false;
    std::clearerr(file);
    return true;
}

int NextCharacter(std::FILE* file) {
    int character = EOF;
    do character = std::getc(file);
    while (character == EOF && WasInterrupted(file));
    return character;
}

}  // namespace

MStdFileStream::~MStdFileStream() {
    try {
        Close();
    } catch (const MException&) {
    }
}

void MStdFileStream::Open(const MString& path, Mode mode) {
    Close();
    std::FILE* const file = OpenFile(path, FileModeFor(mode));
    if (file == nullptr)
        throw MException(
            MStringFormatter(mode == Mode::Write
                                 ? "File \"{0}\" could not be created. Make sure there is no "
                                   "write-protected file already existing."
                                 : "File \"{0}\" could not be open. Make sure it exists.")
            << path);
    Attach(mode == Mode::Write ? nullptr : file, mode == Mode::Read ? nullptr : file, path,
           Ownership::Owned);
}

void MStdFileStream::Attach(std::FILE* reader, std::FILE* writer, const MString& name,
                            Ownership ownership) {
    this->reader = reader;
    this->writer = writer;
    this->name = name;
    this->ownership = ownership;
    direction = Direction::None;
}

void MStdFileStream::Close() {
    std::FILE* const in = std::exchange(reader, nullptr);
    std::FILE* const out = std::exchange(writer, nullptr);
    bool written = true;
    if (ownership == Ownership::Borrowed) {
        written = out == nullptr || std::fflush(out) == 0;
    } else {
        written = out == nullptr || std::fclose(out) == 0;
        if (in != nullptr && in != out) std::fclose(in);
    }
    if (!written) RaiseWritingFailed();
}

void MStdFileStream::Write(const void* buffer, std::int32_t size) {
    std::FILE* const file = Writer();
    if (size <= 0) return;
    const auto wanted = static_cast<std::size_t>(size);
    if (std::fwrite(buffer, 1, wanted, file) != wanted) RaiseWritingFailed();
}

std::int32_t MStdFileStream::Read(void* buffer, std::int32_t size) {
    std::FILE* const file = Reader();
    if (size <= 0) return 0;
    auto* const bytes = static_cast<char*>(buffer);
    const auto wanted = static_cast<std::size_t>(size);
    std::size_t count = std::fread(bytes, 1, wanted, file);
    while (WasInterrupted(file)) count += std::fread(bytes + count, 1, wanted - count, file);
    if (std::ferror(file)) RaiseReadingFailed();
    return static_cast<std::int32_t>(count);
}

int MStdFileStream::ReadLine(char* buffer, std::int32_t size) {
    std::FILE* const file = Reader();
    const auto next = [file](char& byte) {
        const int character = NextCharacter(file);
        byte = static_cast<char>(character);
        return character != EOF;
    };
    const int result = ReadLineFrom(next, buffer, size);
    if (std::ferror(file)) {
        std::clearerr(file);
        throw MException("Could not load a line from stream.", 256);
    }
    return result;
}

void MStdFileStream::Seek(std::int64_t offset, int origin) {
    RequireOpen();
    const std::int64_t target = SeekTarget(offset, origin);
    if (target < 0 || !SeekFile(Main(), target)) RaiseSeekFailed();
    direction = Direction::None;
}

std::int64_t MStdFileStream::GetPosition() {
    RequireOpen();
    const std::int64_t position = TellFile(Main());
    if (position < 0) RaiseSeekFailed();
    return position;
}

void MStdFileStream::Flush() {
    RequireOpen();
    if (writer != nullptr && std::fflush(writer) != 0) RaiseWritingFailed();
}

bool MStdFileStream::IsEnd() {
    if (reader == nullptr) return GetPosition() >= GetSize();
    std::FILE* const file = Reader();
    const int character = NextCharacter(file);
    if (std::ferror(file)) RaiseReadingFailed();
    if (character != EOF) std::ungetc(character, file);
    return character == EOF;
}

void MStdFileStream::Truncate() {
    const std::int64_t position = GetPosition();
    std::FILE* const file = Writer();
    if (std::fflush(file) != 0 || !TruncateFile(file, position)) RaiseWritingFailed();
}

std::int64_t MStdFileStream::GetSize() {
    const std::int64_t position = GetPosition();
    if (!MoveToFileEnd(Main())) RaiseSeekFailed();
    const std::int64_t size = TellFile(Main());
    Seek(position, kFromStart);
    return size;
}

void MStdFileStream::RequireOpen() const {
    if (reader == nullptr && writer == nullptr)
        throw MException("File stream is not initialized.", 258);
}

void MStdFileStream::Turn(Direction wanted) {
    const Direction before = std::exchange(direction, wanted);
    if (reader != writer || before == wanted || before == Direction::None) return;
    if (!SeekFile(reader, TellFile(reader))) RaiseSeekFailed();
}

std::FILE* MStdFileStream::Reader() {
    RequireOpen();
    if (reader == nullptr) RaiseUnsupportedService("read from stream");
    Turn(Direction::Reading);
    return reader;
}

std::FILE* MStdFileStream::Writer() {
    RequireOpen();
    if (writer == nullptr) RaiseUnsupportedService("write to stream");
    Turn(Direction::Writing);
    return writer;
}

void MStdFileStream::RaiseReadingFailed() {
    std::clearerr(reader);
    throw MException(MStringFormatter("Error reading from file \"{0}\".") << name, 256);
}

void MStdFileStream::RaiseWritingFailed() const {
    if (writer != nullptr && writer == reader) std::clearerr(writer);
    throw MException(MStringFormatter("Error writing to file \"{0}\". Probably disk full.") << name,
                     256);
}
