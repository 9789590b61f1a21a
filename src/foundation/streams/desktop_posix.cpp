// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "foundation/streams/desktop.h"

namespace {

constexpr const char* kOpener = "xdg-open";
constexpr int kReportDescriptor = 3;  // the first behind the standard ones

bool IsProgram(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           access(path.c_str(), X_OK) == 0;
}

// Empty where no folder of PATH has it. An own search: execvp would hand a file of unknown format
// to the shell.
std::string FindProgram(const std::string& name) {
    const char* const folders = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe)
    std::istringstream list(folders != nullptr ? folders : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.empty()) continue;
        std::string path = folder;
        path.append("/").append(name);
        if (IsProgram(path)) return path;
    }
    return {};
}

// Everything from here to the exec is done between fork and exec: no allocation, no lock. Nor does
// it need a free descriptor: the process may have used up its own.
void DetachFromProcess() {
    closefrom(kReportDescriptor + 1);
    setsid();
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) sigaction(signal, &standard, nullptr);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    const int nowhere = open("/dev/null", O_RDWR);
    for (int descriptor = 0; descriptor < kReportDescriptor; ++descriptor)
        dup2(nowhere, descriptor);
    closefrom(kReportDescriptor + 1);
}

[[noreturn]] void BecomeProgram(const char* const* arguments, int report) {
    dup2(report, kReportDescriptor);
    fcntl(kReportDescriptor, F_SETFD, FD_CLOEXEC);
    DetachFromProcess();
    execv(arguments[0], const_cast<char* const*>(arguments));
    const int error = errno;
    [[maybe_unused]] const ssize_t told = write(kReportDescriptor, &error, sizeof error);
    _exit(127);
}

// The program becomes a grandchild, so that nobody has to wait for its end.
void WaitForChild(pid_t child) {
    while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// Whether the other side was closed by a successful exec, without an error number.
bool WasStarted(int report) {
    int error = 0;
    ssize_t count = 0;
    do count = read(report, &error, sizeof error);
    while (count < 0 && errno == EINTR);
    return count == 0;
}

bool Start(const char* const* arguments) {
    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0) return false;
    const pid_t child = fork();
    if (child == 0) {
        // Without the handlers of others that fork calls: they may want locks of threads that are
        // not here.
        const pid_t grandchild = _Fork();
        if (grandchild == 0) BecomeProgram(arguments, report[1]);
        const int error = errno;
        if (grandchild < 0) {
            [[maybe_unused]] const ssize_t told = write(report[1], &error, sizeof error);
        }
        _exit(0);
    }
    close(report[1]);
    if (child > 0) WaitForChild(child);
    const bool started = child > 0 && WasStarted(report[0]);
    close(report[0]);
    return started;
}

}  // namespace

bool OpenWithDesktop(const std::string& target) {
    const std::string opener = FindProgram(kOpener);
    if (opener.empty()) return false;
    const char* const arguments[] = {opener.c_str(), target.c_str(), nullptr};
    return Start(arguments);
}

bool RunProgram(const std::string& path) {
    if (!IsProgram(path)) return false;
    const char* const arguments[] = {path.c_str(), nullptr};
    return Start(arguments);
}
