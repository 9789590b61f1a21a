// SPDX-License-Identifier: GPL-3.0-or-later
// Files, folders and programs, with disks that are full and folders that refuse.
#include <fcntl.h>
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

std::string WritingFailed(const std::string& path) {
    return "256 Error writing to file \"" + path + "\". Probably disk full.";
}

std::string CreatingFailed(const std::string& path) {
    return "0 File \"" + path +
           "\" could not be created. Make sure there is no write-protected "
           "file already existing.";
}

void WriteText(const MString& path, const std::string& text) {
    WriteUserFile(path, [&](MStream& file) { WriteAll(file, text); });
}

}  // namespace

TEST(FileStream, TellsWhatFailed) {
    const TestFolder folder;
    folder.SetContent("there", "text");
    MStdFileStream file, there(folder / "there", Mode::Read), full("/dev/full", Mode::Write);
    MStdFileStream memory("/proc/self/mem", Mode::Read);  // nothing is mapped at its start
    char bytes[8];
    const std::string missing =
        "0 File \"" + folder.Path("a") + "\" could not be open. Make sure it exists.";
    const std::string noReading = "256 Error reading from file \"/proc/self/mem\".";
    const std::string noFile = "258 File stream is not initialized.";
    ExpectRaised(
        {{missing, [&] { file.Open(folder / "a", Mode::Read); }},
         {missing, [&] { file.Open(folder / "a", Mode::Update); }},
         {CreatingFailed(folder.Path("a/b")), [&] { file.Open(folder / "a/b", Mode::Write); }},
         {noFile, [&] { file.Read(bytes, 1); }},
         {noFile, [&] { file.Write(bytes, 1); }},
         {noFile, [&] { file.IsEnd(); }},
         {noFile, [&] { file.Seek(0, 3); }},
         {noFile, [&] { file.Flush(); }},
         {"1 Service \"write to stream\" is not implemented.", [&] { there.Write(bytes, 1); }},
         {"256 Could not perform file seek.", [&] { there.Seek(-1, 0); }},
         {noReading, [&] { memory.Read(bytes, 1); }},
         {noReading, [&] { memory.IsEnd(); }},
         {"256 Could not load a line from stream.", [&] { memory.ReadLine(bytes, 8); }},
         {WritingFailed("/dev/full"), [&] { full.WriteFill(1 << 20); }},
         {WritingFailed("/dev/full"), [&] { full.Write("a", 1), full.Flush(); }},
         {WritingFailed("/dev/full"), [&] { full.Write("a", 1), full.Close(); }}});
    EXPECT_TRUE(!file.IsOpen() && !full.IsOpen());
    EXPECT_NE(Raised([&] { file.Open(folder / "", Mode::Read); }), "nothing");
}

TEST(FileStream, UpdatesAFileBothWays) {
    const TestFolder folder;
    folder.SetContent("file", "0123456789");
    MStdFileStream file(folder / "file", Mode::Update);
    char bytes[4];
    EXPECT_EQ(file.Read(bytes, 2), 2);
    WriteAll(file, "ab");
    EXPECT_TRUE(file.Read(bytes, 1) == 1 && bytes[0] == '4');
    file.Seek(8, MStream::kFromStart);
    WriteAll(file, "cdef");
    EXPECT_TRUE(file.GetSize() == 12 && file.IsEnd());
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
        if (pipe(pipes) != 0 || dup2(pipes[0], 0) != 0 || dup2(pipes[1], 1) != 1) return false;
        char line[8];
        MConsoleStream().WriteStringLine("one");
        if (MConsoleStream().ReadLine(line, 8) != 0 || std::string(line) != "one") return false;
        // Interrupts the wait that it ends.
        struct sigaction interrupting = {};
        interrupting.sa_handler = [](int) { (void)!write(1, "two\n", 4); };
        sigaction(SIGALRM, &interrupting, nullptr);
        ualarm(50000, 0);
        return MConsoleStream().ReadLine(line, 8) == 0 && std::string(line) == "two";
    }));
}

TEST(File, OperationsDoTheirWorkOrTellThePath) {
    const TestFolder folder;
    const MString deep = folder / "one/two";
    MFile::CreatePath(deep);
    MFile::CreatePath(deep);
    EXPECT_EQ(fs::status(folder.Path("one")).permissions(), fs::perms::owner_all);
    folder.SetContent("b", "b");
    MFile::Rename(folder / "b", folder / "a");
    EXPECT_EQ(folder.Content("a"), "b");
    folder.SetContent("bad\xff", "");
    const auto entries = MFile::GetFileList(folder / "");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries[0].name == "a" && !entries[0].isDirectory && entries[1].isDirectory);

    const auto failure = [&](const char* before, const std::string& behind) {
        return "0 Could not " + std::string(before) + " \"" + folder.path.string() + behind;
    };
    ExpectRaised(
        {{failure("create path", "/a/x\"."), [&] { MFile::CreatePath(folder / "a/x"); }},
         {failure("rename file", "/c\" to \"" + folder.Path("d") + "\"."),
          [&] { MFile::Rename(folder / "c", folder / "d"); }},
         {failure("delete file", "/one\"."), [&] { MFile::Delete(folder / "one"); }},
         {failure("delete file", "/c\"."), [&] { MFile::Delete(folder / "c"); }},
         {failure("remove directory", "/one\"."), [&] { MFile::RemoveDirectory(folder / "one"); }},
         {failure("remove directory", "/a\"."), [&] { MFile::RemoveDirectory(folder / "a"); }},
         {failure("access path", "/c\" to get file list."),
          [&] { MFile::GetFileList(folder / "c"); }},
         {failure("execute file", "/c\"."), [&] { MFile::Execute(folder / "c"); }}});
    MFile::Delete(folder / "a");
    MFile::RemoveDirectory(deep);
    EXPECT_FALSE(MFile::Exists(folder / "a") || MFile::IsDirectory(deep));
}

TEST(File, ProgramsAreStartedWithTheirTargetAndWithoutAShell) {
    const TestFolder folder;
    // Stands for the desktop's opener: what it was called with, in one move.
    folder.SetContent("xdg-open", "#!/bin/sh\nprintf %s \"$#$1\" >out.new\nmv out.new out\n");
    fs::permissions(folder.path / "xdg-open", fs::perms::owner_all);
    folder.SetContent("-a file", "no program");
    fs::permissions(folder.path / "-a file", fs::perms::owner_all);
    const std::string path = folder.path.string() + ":/bin:/usr/bin";
    const auto opened = [&](const std::function<void()>& call) {
        EXPECT_TRUE(HoldsInChild([&] {
            setenv("PATH", path.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
            fs::current_path(folder.path);
            call();
            setenv("PATH", "/nowhere", 1);  // NOLINT(concurrency-mt-unsafe)
            EXPECT_EQ(Raised([] { MFile::ExecuteWWW("a"); }), "0 Could not execute file \"a\".");
            const auto last = static_cast<rlim_t>(dup(STDIN_FILENO));
            const rlimit few = {last + 3, last + 3};  // a pipe, and no more
            setrlimit(RLIMIT_NOFILE, &few);
            EXPECT_NE(Raised([] { MFile::Execute("-a file"); }), "nothing");
            return !testing::Test::HasFailure();
        }));
        for (int i = 0; i < 500 && !fs::exists(folder.path / "out"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::string arguments = folder.Content("out");
        fs::remove(folder.path / "out");
        return arguments;
    };
    EXPECT_EQ(opened([] { MFile::ExecuteWWW("example.org/?a;$(b)&c"); }),
              "1http://example.org/?a;$(b)&c");
    EXPECT_EQ(opened([] { MFile::ExecuteMail("a?b@c", u"Gr\u00fc\u00dfe & so"); }),
              "1mailto:a%3Fb@c?subject=Gr%C3%BC%C3%9Fe%20%26%20so");
    EXPECT_EQ(opened([] { MFile::Execute("-a file"); }), std::string("1") + folder.Path("-a file"));
    EXPECT_EQ(opened([&] { MFile::Execute(folder / "xdg-open"); }), "0");  // a program by itself
}

TEST(WebAddress, PathsAndAddressesAreResolved) {
    const char* const kPaths[][3] = {{"/a/b?q/r", "c?x", "/a/c?x"}, {"/a/b", "/c/./d/../e", "/c/e"},
                                     {"/a/b?q", "?x#f", "/a/b?x"},  {"/a/b/", "../..", "/"},
                                     {"/a", "../../c/.", "/c/"},    {"/a?q", "", "/a?q"}};
    for (const auto& [current, reference, expected] : kPaths)
        EXPECT_EQ(ResolvePath(current, reference), expected) << current << ' ' << reference;
    const auto address = ParseWebAddress("http://me:x@[::1]:8080/a?b#c");
    ASSERT_TRUE(address);
    EXPECT_TRUE(address->host == "::1" && address->port == 8080 && address->path == "/a?b");
    for (const char* const bad : {"http://", "http://a:0/", "http://a:65536", "http://[::1"})
        EXPECT_FALSE(ParseWebAddress(bad)) << bad;
    EXPECT_EQ(AddressScheme("/login?to=http://a"), "");
}

TEST(UserFile, ReplacesAFileAsAWhole) {
    const TestFolder folder;
    const std::string longest(255, 'n');
    const char* const name = longest.c_str();
    fs::create_symlink(longest, folder.path / "link");  // leads nowhere yet
    WriteText(folder / "link", "first");
    EXPECT_EQ(folder.Content(name), "first");
    chmod(folder.Path(name).c_str(), 0600);
    WriteText(folder / "link", "second");
    EXPECT_TRUE(fs::is_symlink(folder.path / "link"));
    EXPECT_EQ(static_cast<int>(fs::status(folder.path / name).permissions()), 0600);
    const auto fails = [](MStream& file) { WriteAll(file, "third"), RaiseEndOfStream(); };
    EXPECT_NE(Raised([&] { WriteUserFile(folder / name, fails); }), "nothing");
    EXPECT_EQ(folder.Content(name), "second");
    fs::create_directory(folder.path / "folder");
    EXPECT_NE(Raised([&] { WriteText(folder / "folder", "x"); }).find("0 Could not rename file"),
              std::string::npos);
    EXPECT_EQ(MFile::GetFileList(folder / "").size(), 3u);
}

TEST(UserFile, AFullDiskOrARefusalLosesNothing) {
    const TestFolder folder;
    const auto fails = [&](const std::string& expected, std::size_t size,
                           const std::function<bool()>& prepare) {
        const auto writeAndTellNobody = [&](MStream& file) {
            Raised([&] { WriteAll(file, RandomBytes(size)); });
        };
        EXPECT_TRUE(HoldsInChild([&] {
            return prepare() && expected == Raised([&] {
                                    WriteUserFile(folder / "preset", writeAndTellNobody);
                                });
        }));
        EXPECT_EQ(folder.Content("preset"), "old");
        EXPECT_EQ(MFile::GetFileList(folder / "").size(), 1u);
    };
    const std::string full = WritingFailed(folder.Path("preset"));
    const std::string refused = CreatingFailed(folder.Path("preset"));
    const auto limitSize = [] {
        const rlimit limit = {100, 100};
        return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    // Rights mean nothing to the administrator.
    const auto becomeNobody = [] { return geteuid() != 0 || seteuid(65534) == 0; };
    folder.SetContent("preset", "old");
    fails(full, 200, limitSize);     // when it is flushed
    fails(full, 200000, limitSize);  // before that
    chmod(folder.path.c_str(), 0555);
    fails(refused, 1, becomeNobody);
    chmod(folder.path.c_str(), 0777);
    chmod(folder.Path("preset").c_str(), 0444);
    fails(refused, 1, becomeNobody);

    if (mount("tmpfs", folder.path.c_str(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "this system lets nobody mount a small disk here";
    folder.SetContent("preset", "old");
    fails(full, 100000, [] { return true; });
    mount(nullptr, folder.path.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
    fails(refused, 1, [] { return true; });
    umount(folder.path.c_str());
}
