// SPDX-License-Identifier: GPL-3.0-or-later
// Files, folders and programs, with disks that are full and folders that refuse.
#include <gmock/gmock.h>
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

// In a folder of its own, so that the paths are names.
class FileTest : public testing::Test {
protected:
    FileTest() { fs::current_path(folder.path); }
    ~FileTest() override { fs::current_path(before); }

    const fs::path before = fs::current_path();
    const TestFolder folder;
};

void WriteText(const MString& path, const std::string& text) {
    WriteUserFile(path, [&](MStream& file) { WriteAll(file, text); });
}

}  // namespace

TEST(ConsoleStream, LeavesTheProcessItsFiles) {
    EXPECT_TRUE(HoldsInChild([] {
        int pipes[2];
        if (pipe(pipes) != 0 || dup2(pipes[0], 0) != 0 || dup2(pipes[1], 1) != 1) return false;
        char line[8];
        MConsoleStream().WriteStringLine("one");
        if (MConsoleStream().ReadLine(line, 8) != 0 || std::string(line) != "one") return false;
        struct sigaction interrupting = {};
        interrupting.sa_handler = [](int) {};
        sigaction(SIGALRM, &interrupting, nullptr);
        ualarm(50000, 0);  // interrupts the wait that somebody else ends
        if (fork() == 0) {
            usleep(150000);
            _exit(write(1, "two\n", 4) == 4 ? 0 : 1);
        }
        return MConsoleStream().ReadLine(line, 8) == 0 && std::string(line) == "two";
    }));
}

TEST_F(FileTest, OperationsDoTheirWorkOrTellThePath) {
    MFile::CreatePath("one/two");
    MFile::CreatePath(folder / "one/two");
    EXPECT_EQ(fs::status("one").permissions(), fs::perms::owner_all);
    folder.SetContent("b", "b");
    MFile::Rename("b", "a");
    EXPECT_EQ(folder.Content("a"), "b");
    folder.SetContent("bad\xff", "");
    const auto entries = MFile::GetFileList(".");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_TRUE(entries[0].name == "a" && !entries[0].isDirectory && entries[1].isDirectory);
    ExpectRaised(
        {{R"(0 Could not create path "a/x".)", [] { MFile::CreatePath("a/x"); }},
         {R"(0 Could not rename file "c" to "d".)", [] { MFile::Rename("c", "d"); }},
         {R"(0 Could not delete file "one".)", [] { MFile::Delete("one"); }},
         {R"(0 Could not delete file "c".)", [] { MFile::Delete("c"); }},
         {R"(0 Could not remove directory "one".)", [] { MFile::RemoveDirectory("one"); }},
         {R"(0 Could not remove directory "a".)", [] { MFile::RemoveDirectory("a"); }},
         {R"(0 Could not access path "c" to get file list.)", [] { MFile::GetFileList("c"); }},
         {R"(0 Could not execute file "c".)", [] { MFile::Execute("c"); }}});
    MFile::Delete("a");
    MFile::RemoveDirectory("one/two");
    EXPECT_FALSE(MFile::Exists("a") || MFile::IsDirectory("one/two"));
}

TEST_F(FileTest, ProgramsAreStartedWithTheirTargetAndWithoutAShell) {
    // Stands for the desktop's opener: what it was called with, in one move.
    folder.SetContent("xdg-open", "#!/bin/sh\nprintf %s \"$#$1\" >out.new\nmv out.new out\n");
    folder.SetContent("-a file", "no program");
    for (const char* const name : {"xdg-open", "-a file"})
        fs::permissions(name, fs::perms::owner_all);
    const auto opened = [&](const std::function<void()>& call) {
        call();
        for (int i = 0; i < 500 && !fs::exists("out"); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::string arguments = folder.Content("out");
        fs::remove("out");
        return arguments;
    };
    EXPECT_TRUE(HoldsInChild([&] {
        const std::string path = folder.path.string() + ":/bin:/usr/bin";
        setenv("PATH", path.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
        EXPECT_EQ(opened([] { MFile::ExecuteWWW("example.org/?a;$(b)&c"); }),
                  "1http://example.org/?a;$(b)&c");
        EXPECT_EQ(opened([] { MFile::ExecuteMail("a?b@c", u"Gr\u00fc\u00dfe & so"); }),
                  "1mailto:a%3Fb@c?subject=Gr%C3%BC%C3%9Fe%20%26%20so");
        EXPECT_EQ(opened([] { MFile::Execute("-a file"); }),
                  std::string("1") + folder.Path("-a file"));
        EXPECT_EQ(opened([] { MFile::Execute("xdg-open"); }), "0");  // a program by itself
        setenv("PATH", "/nowhere", 1);  // NOLINT(concurrency-mt-unsafe)
        EXPECT_EQ(Raised([] { MFile::ExecuteWWW("a"); }), R"(0 Could not execute file "a".)");
        const auto last = static_cast<rlim_t>(dup(STDIN_FILENO));
        const rlimit few = {last + 3, last + 3};  // a pipe, and no more
        setrlimit(RLIMIT_NOFILE, &few);
        EXPECT_NE(Raised([] { MFile::Execute("-a file"); }), "");
        return !HasFailure();
    }));
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

TEST_F(FileTest, WritingReplacesAFileAsAWhole) {
    const std::string longest(255, 'n');
    const char* const name = longest.c_str();
    fs::create_symlink(longest, "link");  // leads nowhere yet
    WriteText("link", "first");
    EXPECT_EQ(folder.Content(name), "first");
    chmod(name, 0600);
    WriteText(folder / "link", "second");
    EXPECT_EQ(static_cast<int>(fs::status(name).permissions()), 0600);
    const auto fails = [](MStream& file) { WriteAll(file, "third"), RaiseEndOfStream(); };
    fs::create_directory("folder");
    EXPECT_NE(Raised([&] { WriteUserFile(name, fails); }), "");
    EXPECT_THAT(Raised([] { WriteText("folder", "x"); }),
                testing::StartsWith("0 Could not rename"));
    EXPECT_EQ(folder.Content(name), "second");
    EXPECT_EQ(MFile::GetFileList(".").size(), 3u);
}

TEST_F(FileTest, AFullDiskOrARefusalLosesNothing) {
    const auto fails = [&](const std::string& expected, std::size_t size,
                           const std::function<bool()>& prepare) {
        const auto writeAndTellNobody = [&](MStream& file) {
            Raised([&] { WriteAll(file, RandomBytes(size)); });
        };
        EXPECT_TRUE(HoldsInChild([&] {
            fs::current_path(folder.path);  // on the disk that is mounted there
            return prepare() &&
                   expected == Raised([&] { WriteUserFile("preset", writeAndTellNobody); });
        }));
        EXPECT_EQ(folder.Content("preset"), "old");
        EXPECT_EQ(MFile::GetFileList(folder / "").size(), 1u);
    };
    const std::string full = "256 Error writing to file \"preset\". Probably disk full.";
    const std::string refused =
        "0 File \"preset\" could not be created. Make sure there is no write-protected file "
        "already existing.";
    const auto limitSize = [] {
        const rlimit limit = {100, 100};
        return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0;
    };
    // Rights mean nothing to the administrator.
    const auto becomeNobody = [] { return geteuid() != 0 || seteuid(65534) == 0; };
    folder.SetContent("preset", "old");
    fails(full, 200000, limitSize);
    fails(full, 200, limitSize);  // when it is flushed
    chmod(".", 0555);
    fails(refused, 1, becomeNobody);
    chmod(".", 0777);
    chmod("preset", 0444);
    fails(refused, 1, becomeNobody);

    const char* const disk = folder.path.c_str();
    if (mount("tmpfs", disk, "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "this system lets nobody mount a small disk here";
    folder.SetContent("preset", "old");
    fails(full, 100000, [] { return true; });
    mount(nullptr, disk, nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
    fails(refused, 1, [] { return true; });
    umount(disk);
}
