// SPDX-License-Identifier: GPL-3.0-or-later
// Files, folders and programs, with disks that are full and folders that refuse.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "foundation/streams/mfile.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/streams/user_file.h"
#include "foundation/streams/web_address.h"

namespace fs = std::filesystem;

namespace {

using Mode = MStdFileStream::Mode;

std::string With(const char* before, const std::string& path, const char* behind) {
    return before + path + behind;
}

std::string WritingFailed(const std::string& path) {
    return With("256 Error writing to file \"", path, "\". Probably disk full.");
}

std::string CreatingFailed(const std::string& path) {
    return With("0 File \"", path,
                "\" could not be created. Make sure there is no write-protected file already "
                "existing.");
}

// Rights mean nothing to the administrator.
void BecomeNobody() {
    if (geteuid() == 0 && seteuid(65534) != 0) _exit(1);
}

// Files of this process end at that size, like on a full disk.
void LimitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

void WriteText(const MString& path, const std::string& text) {
    WriteUserFile(path, [&](MStream& file) { WriteAll(file, text); });
}

}  // namespace

TEST(FileStream, TellsWhatFailed) {
    const TestFolder folder;
    folder.SetContent("there", "text");
    MStdFileStream file;
    char bytes[8];
    const std::string missing = folder.Path("missing");
    const std::string wall = folder.Path("none/file");
    const auto open = [&](const MString& path, Mode mode) {
        return Raised([&] { file.Open(path, mode); });
    };
    const std::string noFile =
        With("0 File \"", missing, "\" could not be open. Make sure it exists.");
    EXPECT_EQ(open(folder / "missing", Mode::Read), noFile);
    EXPECT_EQ(open(folder / "missing", Mode::Update), noFile);
    EXPECT_EQ(open(folder / "none/file", Mode::Write), CreatingFailed(wall));
    EXPECT_NE(open(folder / "", Mode::Read), "nothing");
    const std::function<void()> kUses[] = {
        [&] { file.Read(bytes, 1); }, [&] { file.Write(bytes, 1); },   [&] { file.GetSize(); },
        [&] { file.IsEnd(); },        [&] { file.Seek(0, 0); },        [&] { file.Truncate(); },
        [&] { file.Flush(); },        [&] { file.ReadLine(bytes, 8); }};
    for (const auto& use : kUses) EXPECT_EQ(Raised(use), "258 File stream is not initialized.");
    EXPECT_FALSE(file.IsOpen());

    file.Open(folder / "there", Mode::Read);
    EXPECT_EQ(Raised([&] { file.Write(bytes, 1); }),
              "1 Service \"write to stream\" is not implemented.");
    EXPECT_EQ(Raised([&] { file.Seek(-1, 0); }), "256 Could not perform file seek.");
    file.Open("/proc/self/mem", Mode::Read);  // nothing is mapped at its start
    EXPECT_EQ(Raised([&] { file.Read(bytes, 1); }),
              "256 Error reading from file \"/proc/self/mem\".");
    EXPECT_EQ(Raised([&] { file.ReadLine(bytes, 8); }), "256 Could not load a line from stream.");
    EXPECT_EQ(Raised([&] { file.IsEnd(); }), "256 Error reading from file \"/proc/self/mem\".");
}

TEST(FileStream, AFullDiskIsToldByWriteFlushOrClose) {
    const std::function<void(MStdFileStream&)> kLast[] = {
        [](MStdFileStream& file) { file.WriteFill(1 << 20); },
        [](MStdFileStream& file) {
            WriteAll(file, "a");
            file.Flush();
        },
        [](MStdFileStream& file) {
            WriteAll(file, "a");
            file.Close();
        }};
    for (const auto& last : kLast) {
        MStdFileStream file("/dev/full", Mode::Write);
        EXPECT_EQ(Raised([&] { last(file); }), WritingFailed("/dev/full"));
    }
}

TEST(FileStream, UpdatesAFileBothWays) {
    const TestFolder folder;
    folder.SetContent("file", "0123456789");
    MStdFileStream file(folder / "file", Mode::Update);
    char bytes[4];
    EXPECT_EQ(file.Read(bytes, 2), 2);
    WriteAll(file, "ab");
    EXPECT_EQ(file.Read(bytes, 1), 1);
    EXPECT_EQ(bytes[0], '4');
    file.Seek(8, MStream::kFromStart);
    WriteAll(file, "cdef");
    EXPECT_EQ(file.GetSize(), 12);
    EXPECT_TRUE(file.IsEnd());
    file.Seek(-1, MStream::kFromEnd);
    file.Truncate();
    file.Seek(2, MStream::kFromPosition);
    WriteAll(file, "g");
    file.Close();
    EXPECT_EQ(folder.Content("file"), std::string("01ab4567cde\0\0g", 14));
}

TEST(ConsoleStream, LeavesTheProcessItsFiles) {
    EXPECT_TRUE(HoldsInChild([] {
        int pipes[2];
        if (pipe(pipes) != 0) return false;
        dup2(pipes[0], STDIN_FILENO);
        dup2(pipes[1], STDOUT_FILENO);
        for (int i = 0; i < 2; ++i) {
            MConsoleStream console;
            console.WriteStringLine("line");
            console.Flush();
            char line[8];
            if (console.ReadLine(line, 8) != 0 || std::string(line) != "line") return false;
        }
        return fcntl(STDOUT_FILENO, F_GETFD) >= 0;
    }));
}

TEST(File, OperationsDoTheirWorkOrTellThePath) {
    const TestFolder folder;
    const MString deep = folder / "one/two";
    MFile::CreatePath(deep);
    MFile::CreatePath(deep);
    EXPECT_EQ(fs::status(folder.Path("one")).permissions(), fs::perms::owner_all);
    folder.SetContent("b", "b");
    folder.SetContent("a", "a");
    MFile::Rename(folder / "b", folder / "a");
    EXPECT_EQ(folder.Content("a"), "b");
    folder.SetContent("bad\xff", "");
    const auto entries = MFile::GetFileList(folder / "");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries[0].name == "a" && !entries[0].isDirectory);
    EXPECT_TRUE(entries[1].name == "one" && entries[1].isDirectory);

    const std::string root = folder.path.string();
    const struct {
        std::function<void()> call;
        const char* before;
        std::string behind;
    } kFailures[] = {
        {[&] { MFile::CreatePath(folder / "a/x"); }, "create path", "/a/x\"."},
        {[&] { MFile::Rename(folder / "c", folder / "d"); }, "rename file",
         "/c\" to \"" + root + "/d\"."},
        {[&] { MFile::Delete(folder / "one"); }, "delete file", "/one\"."},
        {[&] { MFile::Delete(folder / "c"); }, "delete file", "/c\"."},
        {[&] { MFile::RemoveDirectory(folder / "one"); }, "remove directory", "/one\"."},
        {[&] { MFile::RemoveDirectory(folder / "a"); }, "remove directory", "/a\"."},
        {[&] { MFile::GetFileList(folder / "c"); }, "access path", "/c\" to get file list."},
        {[&] { MFile::Execute(folder / "c"); }, "execute file", "/c\"."},
    };
    for (const auto& failure : kFailures)
        EXPECT_EQ(Raised(failure.call),
                  "0 Could not " + std::string(failure.before) + " \"" + root + failure.behind);
    MFile::Delete(folder / "a");
    MFile::RemoveDirectory(deep);
    EXPECT_FALSE(MFile::Exists(folder / "a") || MFile::IsDirectory(deep));
}

TEST(File, ProgramsAreStartedWithTheirTargetAndWithoutAShell) {
    const TestFolder folder;
    // Stands for the desktop's opener: what it was called with, in one move.
    folder.SetContent("xdg-open", "#!/bin/sh\nprintf %s \"$#$1\" >out.new\nmv out.new out\n");
    fs::permissions(folder.path / "xdg-open", fs::perms::owner_all);
    folder.SetContent("-a file", "");
    const auto opened = [&](const std::function<void()>& call) {
        EXPECT_TRUE(HoldsInChild([&] {
            fs::current_path(folder.path);
            setenv("PATH", (folder.path.string() + ":/bin:/usr/bin").c_str(), 1);
            call();
            return true;
        }));
        for (int i = 0; i < 500 && !fs::exists(folder.path / "out"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const std::string arguments = folder.Content("out");
        fs::remove(folder.path / "out");
        return arguments;
    };
    EXPECT_EQ(opened([] { MFile::ExecuteWWW("example.org/?a;$(b)&c"); }),
              "1http://example.org/?a;$(b)&c");
    EXPECT_EQ(opened([] { MFile::ExecuteWWW("https://example.org"); }), "1https://example.org");
    EXPECT_EQ(opened([] { MFile::ExecuteMail("a@b.org"); }), "1mailto:a@b.org");
    EXPECT_EQ(opened([] { MFile::ExecuteMail("a?b@c", u"Gr\u00fc\u00dfe & so"); }),
              "1mailto:a%3Fb@c?subject=Gr%C3%BC%C3%9Fe%20%26%20so");
    EXPECT_EQ(opened([] { MFile::Execute("-a file"); }), std::string("1") + folder.Path("-a file"));
    EXPECT_EQ(opened([&] { MFile::Execute(folder / "xdg-open"); }), "0");  // a program by itself
    EXPECT_TRUE(HoldsInChild([] {
        setenv("PATH", "/nowhere", 1);
        return Raised([] { MFile::ExecuteWWW("a"); }) == "0 Could not execute file \"a\".";
    }));
}

TEST(WebAddress, PathsAndAddressesAreResolved) {
    const char* const kPaths[][3] = {{"/a/b", "c", "/a/c"},
                                     {"/a/b?q/r", "c?x", "/a/c?x"},
                                     {"/a/b", "/c/./d/../e", "/c/e"},
                                     {"/a/b?q", "?x#f", "/a/b?x"},
                                     {"/a/b/", "../..", "/"},
                                     {"/a", "../../c/.", "/c/"},
                                     {"/a?q", "", "/a?q"},
                                     {"", "c", "/c"},
                                     {"/a/b", "c//d", "/a/c//d"}};
    for (const auto& [current, reference, expected] : kPaths)
        EXPECT_EQ(ResolvePath(current, reference), expected) << current << ' ' << reference;
    const auto address = ParseWebAddress("http://me:x@[::1]:8080/a?b#c");
    ASSERT_TRUE(address);
    EXPECT_TRUE(address->host == "::1" && address->port == 8080 && address->path == "/a?b");
    EXPECT_EQ(ParseWebAddress("http://b.org?q")->path, "/?q");
    for (const char* const bad : {"http://", "http://a:0/", "http://a:65536", "http://a:1x",
                                  "http://a b/", "http://[::1", "http://[::1]8"})
        EXPECT_FALSE(ParseWebAddress(bad)) << bad;
    EXPECT_EQ(AddressScheme("/login?to=http://a"), "");
}

TEST(UserFile, ReplacesAFileAsAWhole) {
    const TestFolder folder;
    WriteText(folder / "new", "first");
    fs::permissions(folder.path / "new", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(folder.path / "new", folder.path / "link");
    WriteText(folder / "link", "second");
    EXPECT_TRUE(fs::is_symlink(folder.path / "link"));
    EXPECT_EQ(folder.Content("new"), "second");
    EXPECT_EQ(fs::status(folder.path / "new").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Raised([&] {
                  WriteUserFile(folder / "new", [](MStream& file) {
                      WriteAll(file, "third");
                      RaiseEndOfStream();
                  });
              }),
              "256 No more data in source stream.");
    EXPECT_EQ(folder.Content("new"), "second");
    fs::create_directory(folder.path / "folder");
    EXPECT_NE(Raised([&] { WriteText(folder / "folder", "x"); }).find("0 Could not rename file"),
              std::string::npos);
    EXPECT_EQ(folder.Count(), 3);
}

TEST(UserFile, AFullDiskLosesNothing) {
    const TestFolder folder;
    folder.SetContent("preset", "old");
    for (const std::size_t size : {200, 200000}) {  // refused when it is flushed, and before that
        EXPECT_TRUE(HoldsInChild([&] {
            LimitFileSize(100);
            return Raised([&] { WriteText(folder / "preset", RandomBytes(size)); }) ==
                   WritingFailed(folder.Path("preset"));
        }));
        EXPECT_EQ(folder.Content("preset"), "old");
        EXPECT_EQ(folder.Count(), 1);
    }
}

TEST(UserFile, AFolderOrFileThatRefusesLosesNothing) {
    const TestFolder folder;
    folder.SetContent("preset", "old");
    const auto refused = [&] {
        return HoldsInChild([&] {
            BecomeNobody();
            return Raised([&] { WriteText(folder / "preset", "new"); }) ==
                   CreatingFailed(folder.Path("preset"));
        });
    };
    const auto readOnly = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read;
    const auto enter = fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    fs::permissions(folder.path, readOnly | enter);
    EXPECT_TRUE(refused());
    fs::permissions(folder.path, fs::perms::all);
    fs::permissions(folder.path / "preset", readOnly);
    EXPECT_TRUE(refused());
    EXPECT_EQ(folder.Content("preset"), "old");
    EXPECT_EQ(folder.Count(), 1);
}

TEST(UserFile, ASmallDiskThatFillsUpOrIsReadOnlyLosesNothing) {
    const TestFolder folder;
    if (mount("tmpfs", folder.path.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "this system lets nobody mount a small disk here";
    folder.SetContent("preset", "old");
    EXPECT_EQ(Raised([&] { WriteText(folder / "preset", RandomBytes(100000)); }),
              WritingFailed(folder.Path("preset")));
    mount(nullptr, folder.path.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
    EXPECT_EQ(Raised([&] { WriteText(folder / "preset", "new"); }),
              CreatingFailed(folder.Path("preset")));
    EXPECT_EQ(folder.Content("preset"), "old");
    EXPECT_EQ(folder.Count(), 1);
    umount(folder.path.c_str());
}
