// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

#include "errors.h"
#include "output_file.h"

namespace {

RenderError CannotWrite(const std::string& path, int error) {
    return RenderError("Cannot write '" + path + "': " + std::generic_category().message(error) +
                       ".");
}

// The permissions of the file that stands at path; nothing where there is none.
std::optional<mode_t> ModeToReplace(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) return std::nullopt;
        throw CannotWrite(path, errno);
    }
    if (S_ISDIR(status.st_mode)) throw CannotWrite(path, EISDIR);
    if (!S_ISREG(status.st_mode))
        throw RenderError("Cannot write '" + path + "': it is not a regular file.");
    if (access(path.c_str(), W_OK) != 0) throw CannotWrite(path, errno);
    return status.st_mode & 0777;
}

std::string FollowLink(const std::string& path) {
    std::error_code failed;
    const std::filesystem::path target = std::filesystem::canonical(path, failed);
    return failed ? path : target.string();
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : shownPath(path), path(FollowLink(path)) {
    const std::optional<mode_t> mode = ModeToReplace(path);
    CreateTemporary();
    if (mode) fchmod(fileno(stream), *mode);
}

OutputFile::~OutputFile() {
    if (stream != nullptr) std::fclose(stream);
    if (!temporaryPath.empty()) unlink(temporaryPath.c_str());
}

bool OutputFile::Write(const void* bytes, std::int64_t count) {
    const auto wanted = static_cast<std::size_t>(count);
    if (!Check(std::fwrite(bytes, 1, wanted, stream) == wanted)) return false;
    position += count;
    length = std::max(length, position);
    return true;
}

bool OutputFile::Seek(std::int64_t newPosition) {
    if (!Check(fseeko(stream, newPosition, SEEK_SET) == 0)) return false;
    position = newPosition;
    return true;
}

void OutputFile::ThrowIfFailed() const {
    if (failure != 0) throw CannotWrite(shownPath, failure);
}

void OutputFile::Commit() {
    Check(std::fflush(stream) == 0 && fsync(fileno(stream)) == 0);
    std::FILE* const closing = stream;
    stream = nullptr;
    Check(std::fclose(closing) == 0);
    ThrowIfFailed();
    Check(std::rename(temporaryPath.c_str(), path.c_str()) == 0);
    ThrowIfFailed();
    temporaryPath.clear();
}

void OutputFile::CreateTemporary() {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const std::string stem = ".quillorea-" + std::to_string(getpid()) + "-";
    int descriptor = -1;
    for (int attempt = 0; descriptor < 0; ++attempt) {
        temporaryPath = (folder / (stem + std::to_string(attempt) + ".part")).string();
        descriptor = open(temporaryPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor < 0 && errno != EEXIST) throw CannotWrite(shownPath, errno);
    }
    stream = fdopen(descriptor, "w+b");
    if (stream != nullptr) return;
    const int error = errno;
    close(descriptor);
    unlink(temporaryPath.c_str());
    throw CannotWrite(shownPath, error);
}

bool OutputFile::Check(bool succeeded) {
    if (!succeeded && failure == 0) failure = errno != 0 ? errno : EIO;
    return succeeded;
}
