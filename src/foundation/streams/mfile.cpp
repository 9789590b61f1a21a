// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/mfile.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include "foundation/streams/desktop.h"
#include "foundation/streams/web_address.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

namespace fs = std::filesystem;

fs::path PathOf(const MString& text) {
    const std::string bytes = text.ToUtf8();
    return fs::path(std::u8string(bytes.begin(), bytes.end()));
}

std::string BytesOf(const fs::path& path) {
    const std::u8string bytes = path.u8string();
    return std::string(bytes.begin(), bytes.end());
}

[[noreturn]] void Raise(const char* format, const MString& path) {
    throw MException(MStringFormatter(format) << path);
}

bool MakeFolder(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) return true;
    const bool hasParent = path.has_parent_path() && path.parent_path() != path;
    if (hasParent && !MakeFolder(path.parent_path())) return false;
    if (fs::create_directory(path, error)) fs::permissions(path, fs::perms::owner_all, error);
    return fs::is_directory(path, error);  // also where another process was quicker
}

void RequireStarted(bool started, const MString& target) {
    if (!started) Raise("Could not execute file \"{0}\".", target);
}

}  // namespace

void MFile::CreatePath(const MString& path) {
    if (!MakeFolder(PathOf(path))) Raise("Could not create path \"{0}\".", path);
}

void MFile::Rename(const MString& from, const MString& to) {
    std::error_code error;
    fs::rename(PathOf(from), PathOf(to), error);
    if (error)
        throw MException(MStringFormatter("Could not rename file \"{0}\" to \"{1}\".")
                         << from << to);
}

void MFile::Delete(const MString& path) {
    std::error_code error;
    const fs::path file = PathOf(path);
    if (fs::is_directory(fs::symlink_status(file, error)) || !fs::remove(file, error))
        Raise("Could not delete file \"{0}\".", path);
}

void MFile::RemoveDirectory(const MString& path) {
    std::error_code error;
    const fs::path folder = PathOf(path);
    if (!fs::is_directory(fs::symlink_status(folder, error)) || !fs::remove(folder, error))
        Raise("Could not remove directory \"{0}\".", path);
}

std::vector<MFile::Entry> MFile::GetFileList(const MString& path) {
    std::error_code error;
    std::vector<Entry> entries;
    fs::directory_iterator end;
    for (fs::directory_iterator item(PathOf(path), error); !error && item != end;
         item.increment(error)) {
        const std::string bytes = BytesOf(item->path().filename());
        Entry entry{MString::FromUtf8(bytes)};
        std::error_code unknown;  // a link that leads nowhere is a file
        entry.isDirectory = item->is_directory(unknown);
        if (entry.name.ToUtf8() == bytes) entries.push_back(std::move(entry));
    }
    if (error) Raise("Could not access path \"{0}\" to get file list.", path);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

bool MFile::Exists(const MString& path) {
    std::error_code error;
    return fs::exists(PathOf(path), error);
}

bool MFile::IsDirectory(const MString& path) {
    std::error_code error;
    return fs::is_directory(PathOf(path), error);
}

void MFile::Execute(const MString& path) {
    std::error_code error;
    const std::string file = BytesOf(fs::absolute(PathOf(path), error));
    RequireStarted(!error && Exists(path) && (RunProgram(file) || OpenWithDesktop(file)), path);
}

void MFile::ExecuteWWW(const MString& address) {
    const std::string bytes = address.ToUtf8();
    RequireStarted(OpenWithDesktop(AddressScheme(bytes).empty() ? "http://" + bytes : bytes),
                   address);
}

void MFile::ExecuteMail(const MString& address, const MString& subject) {
    std::string target = "mailto:" + PercentEncode(address.ToUtf8(), "@,+");
    if (!subject.IsEmpty()) target += "?subject=" + PercentEncode(subject.ToUtf8());
    RequireStarted(OpenWithDesktop(target), address);
}
