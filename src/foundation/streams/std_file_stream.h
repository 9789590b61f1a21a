// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <cstdio>

#include "foundation/streams/mstream.h"

// A file, read and written through the C library's buffers.
//
//     MStdFileStream file;
//     file.Open(path, MStdFileStream::Mode::Write);
//     file.WriteStringLine(text);
//     file.Close();   // tells what could not be written; the destructor could not
//
// What a user would miss is written by WriteUserFile, which replaces a file as a whole.
//
// Units    bytes
// Threads  one at a time
// Errors   MException with code 258 "File stream is not initialized." before Open and after Close;
//          with code 256 "Error reading from file \"{0}\".", "Error writing to file \"{0}\".
//          Probably disk full.", "Could not perform file seek." and, out of ReadLine, "Could not
//          load a line from stream."

class MStdFileStream : public MStream {
public:
    enum class Mode {
        Read,    // what is there
        Write,   // a file that is created or emptied
        Update,  // what is there, both ways
    };

    MStdFileStream() = default;
    MStdFileStream(const MString& path, Mode mode) { Open(path, mode); }
    MStdFileStream(const MStdFileStream&) = delete;
    MStdFileStream& operator=(const MStdFileStream&) = delete;
    // Closes; an error is lost.
    ~MStdFileStream() override;

    // Closes what was open. Raises, with code 0, "File \"{0}\" could not be open. Make sure it
    // exists." or "File \"{0}\" could not be created. Make sure there is no write-protected file
    // already existing.".
    void Open(const MString& path, Mode mode);
    // May be repeated. After an error the stream is closed too.
    void Close();

    void Write(const void* buffer, std::int32_t size) override;
    std::int32_t Read(void* buffer, std::int32_t size) override;
    int ReadLine(char* buffer, std::int32_t size) override;
    // A position behind the end is legal: the next write fills the gap with zero bytes.
    void Seek(std::int64_t offset, int origin) override;
    std::int64_t GetPosition() override;
    // Hands what is written to the system.
    void Flush() override;
    bool IsEnd() override;
    void Truncate() override;
    std::int64_t GetSize() override;
    bool IsOpen() override { return reader != nullptr || writer != nullptr; }

protected:
    enum class Ownership { Owned, Borrowed };

    // Either may be null, both may be the same file; borrowed ones are never closed. name stands in
    // the errors.
    void Attach(std::FILE* reader, std::FILE* writer, const MString& name, Ownership ownership);
    std::FILE* GetWriter() const { return writer; }
    // Whether some write to a file that is only written failed, however long ago.
    bool HasLostBytes() const { return writer != nullptr && std::ferror(writer) != 0; }
    [[noreturn]] void RaiseWritingFailed() const;

private:
    enum class Direction { None, Reading, Writing };

    void RequireOpen() const;
    // Where a file is used both ways, the C library wants a seek between the two.
    void Turn(Direction wanted);
    std::FILE* Reader();
    std::FILE* Writer();
    // The file whose position counts.
    std::FILE* Main() const { return reader != nullptr ? reader : writer; }
    [[noreturn]] void RaiseReadingFailed();

    std::FILE* reader = nullptr;
    std::FILE* writer = nullptr;
    MString name;
    Ownership ownership = Ownership::Owned;
    Direction direction = Direction::None;
};

// Standard input and output of the process, which stay open when the stream is closed.
class MConsoleStream : public MStdFileStream {
public:
    MConsoleStream() { Attach(stdin, stdout, "console", Ownership::Borrowed); }
};
