// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/user_file.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "foundation/streams/file_calls.h"
#include "foundation/streams/mfile.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

// Where a link leads, which need not be there yet; the path itself where it is none.
MString FollowLink(const MString& path) {
    namespace fs = std::filesystem;
    constexpr int kMostLinks = 40;  // as the system has it; those of a circle cannot be written to
    const std::string bytes = path.ToUtf8();
    fs::path file = std::u8string(bytes.begin(), bytes.end());
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(file, error)); ++i)
        file = file.parent_path() / fs::read_symlink(file, error);
    const std::u8string name = file.u8string();
    return MString::FromUtf8(std::string(name.begin(), name.end()));
}

MString FolderOf(const MString& path) {
    for (std::int32_t i = path.Length(); i > 0; --i) {
        if (path[i - 1] == u'/') return path.SubString(0, i);
    }
    return MString();
}

// The new content beside the old one, under a name of its own until it is kept. It goes again where
// it is not.
class TemporaryFile : public MStdFileStream {
public:
    TemporaryFile(const MString& path, const MString& shownName, UserFileAccess access)
        : path(path) {
        std::FILE* const file =
            Create(access == UserFileAccess::OwnerOnly ? FileMode::Private : FileMode::Exclusive);
        if (file == nullptr)
            throw MException(
                MStringFormatter("File \"{0}\" could not be created. Make sure there is no "
                                 "write-protected file already existing.")
                << shownName);
        CopyPermissions(path, file);
        Attach(nullptr, file, shownName, Ownership::Owned);
    }
    ~TemporaryFile() override {
        if (temporary.IsEmpty()) return;
        Quietly([this] { Close(); });
        Quietly([this] { MFile::Delete(temporary); });
    }

    void Keep() {
        Flush();
        // The caller, or the destructor of a filter, may have kept an error for itself.
        if (HasLostBytes() || !SyncFile(GetWriter())) RaiseWritingFailed();
        Close();
        MFile::Rename(temporary, path);
        temporary = MString();
        SyncDirectory(FolderOf(path));
    }

private:
    // What is given up has no error of its own.
    template <typename Action>
    static void Quietly(Action action) noexcept {
        try {
            action();
        } catch (const MException&) {
        }
    }

    // Names that a crash left behind are passed over. They are short: a file's name may be as long
    // as the system takes it.
    std::FILE* Create(FileMode mode) {
        static std::atomic<std::uint32_t> counter = 0;
        constexpr int kAttempts = 100;
        if (!IsWritable(path)) return nullptr;
        std::FILE* file = nullptr;
        for (int i = 0; file == nullptr && i < kAttempts; ++i) {
            temporary = MStringFormatter("{0}.{1}-{2}.tmp")
                        << FolderOf(path) << ProcessNumber() << counter.fetch_add(1);
            file = OpenFile(temporary, mode);
        }
        return file;
    }

    const MString path;
    MString temporary;
};

}  // namespace

void WriteUserFile(const MString& path, const std::function<void(MStream&)>& write,
                   UserFileAccess access) {
    TemporaryFile file(FollowLink(path), path, access);
    write(file);
    file.Keep();
}
