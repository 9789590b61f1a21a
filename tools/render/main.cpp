// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "errors.h"
#include "interrupt.h"
#include "options.h"
#include "prepared_plugin.h"
#include "renderer.h"
#include "report.h"

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUse = 2;

void Print(const std::string& text) {
    const bool written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    if (!written) throw RenderError("Cannot write to the standard output.");
}

int Complain(const std::exception& error, int exitCode) {
    const std::string text = error.what();
    const bool ended = text.ends_with('.');
    std::fprintf(stderr, "quillorea-render: %s%s\n", text.c_str(), ended ? "" : ".");
    return exitCode;
}

// What needs no sound: the plug-in as it would be with a stereo file.
std::string Information(const RenderOptions& options) {
    constexpr int kRate = 48000;
    PreparedPlugin plugin(options, 2, kRate);
    if (!options.stateOut.empty()) plugin.SaveState(options.stateOut);
    switch (options.information) {
        case RenderOptions::Information::List:
            return plugin.Table();
        case RenderOptions::Information::InterfaceList:
            return plugin.InterfaceTable();
        case RenderOptions::Information::Plugin:
            return plugin.Info();
        default:
            return "";
    }
}

int Run(int argc, char** argv) {
    RenderOptions options;
    if (const std::optional<int> exitCode = ParseOptions(argc, argv, options)) return *exitCode;
    if (options.input.empty()) {
        Print(Information(options));
        return kDone;
    }
    WatchInterrupts();
    const RenderReport report = RenderFile(options);
    std::fputs(Warnings(options.output, report).c_str(), stderr);
    Print(SummaryLine(options.output, report) + '\n');
    return kDone;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const Interrupted&) {
        EndAsInterrupted();
    } catch (const UsageError& error) {
        return Complain(error, kBadUse);
    } catch (const std::exception& error) {
        return Complain(error, kFailed);
    }
}
