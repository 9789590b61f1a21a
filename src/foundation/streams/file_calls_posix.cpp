// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "foundation/streams/file_calls.h"

namespace {

struct OpenWords {
    int flags;
    const char* mode;
};

OpenWords WordsFor(FileMode mode) {
    switch (mode) {
        case FileMode::Read:
            return {O_RDONLY, "rb"};
        case FileMode::Write:
            return {O_WRONLY | O_CREAT | O_TRUNC, "wb"};
        case FileMode::Update:
            return {O_RDWR, "r+b"};
        default:
            return {O_WRONLY | O_CREAT | O_EXCL, "wb"};
    }
}

bool IsDirectory(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

std::FILE* OpenFile(const MString& path, FileMode mode) {
    const OpenWords words = WordsFor(mode);
    constexpr mode_t kEverybody = 0666;  // less the mask of the process
    constexpr mode_t kOwner = 0600;
    const int descriptor = open(path.ToUtf8().c_str(), words.flags | O_CLOEXEC,
                                mode == FileMode::Private ? kOwner : kEverybody);
    if (descriptor < 0) return nullptr;
    std::FILE* const file = IsDirectory(descriptor) ? nullptr : fdopen(descriptor, words.mode);
    if (file == nullptr) close(descriptor);
    return file;
}

bool SeekFile(std::FILE* file, std::int64_t position) {
    return fseeko(file, position, SEEK_SET) == 0;
}

std::int64_t TellFile(std::FILE* file) { return ftello(file); }

bool MoveToFileEnd(std::FILE* file) { return fseeko(file, 0, SEEK_END) == 0; }

bool TruncateFile(std::FILE* file, std::int64_t position) {
    return ftruncate(fileno(file), position) == 0;
}

// A file system without such a call answers with some other error.
bool SyncFile(std::FILE* file) {
    if (fsync(fileno(file)) == 0) return true;
    return errno != EIO && errno != ENOSPC && errno != EDQUOT;
}

void SyncDirectory(const MString& path) {
    const std::string name = path.IsEmpty() ? "." : path.ToUtf8();
    const int descriptor = open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

bool IsWritable(const MString& path) {
    return faccessat(AT_FDCWD, path.ToUtf8().c_str(), W_OK, AT_EACCESS) == 0 || errno == ENOENT;
}

void CopyPermissions(const MString& path, std::FILE* file) {
    constexpr mode_t kPermissions = 0777;
    struct stat status = {};
    if (stat(path.ToUtf8().c_str(), &status) != 0) return;
    // A file system without permissions refuses; the file is as private as it was made then.
    [[maybe_unused]] const int result = fchmod(fileno(file), status.st_mode & kPermissions);
}

std::uint64_t ProcessNumber() { return static_cast<std::uint64_t>(getpid()); }
