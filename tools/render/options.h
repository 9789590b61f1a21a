// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plugin/frame/channel_mode.h"
#include "plugin_runner.h"

// What the command line asks for.
//
// Units    tempo in beats a minute, position in quarter notes, tail in seconds, blocks in samples
// Errors   UsageError where the command line can't be read or a number is out of its range

struct RenderOptions {
    static constexpr int kRandomBlocks = 0;
    static constexpr int kMaxBlock = 65536;

    std::string input;                    // empty only where an information is asked for
    std::string output;                   // as typed, or input's name with "-chorus.wav"
    std::vector<std::string> settings;    // "PARAMETER=VALUE", in the order typed
    std::vector<std::string> automation;  // "PARAMETER=SECONDS:VALUE,..."
    std::vector<std::string> positions;   // "PARAMETER=VALUE" of --param
    std::optional<double> randomize;      // 0..1
    std::optional<std::uint32_t> seed;
    std::string stateIn;                     // a file, empty: as the plug-in comes
    std::string stateOut;                    // a file, empty: none is written
    StateEdits stateEdits;                   // of the options that go through the state
    std::optional<ChannelMode> channelMode;  // nothing: all channels
    bool bypass = false;
    double tempo = -1;                  // negative: not known
    double position = -1;               // negative: the transport stands still
    int blockSize = 512;                // or kRandomBlocks
    std::optional<double> tailSeconds;  // nothing: as long as the plug-in sounds on
    PluginChoice plugin;

    enum class Information { None, List, InterfaceList, Plugin };
    Information information = Information::None;  // to show instead of rendering
};

// Fills options. Answers the exit code where --help or --version has said all there is to say.
std::optional<int> ParseOptions(int argc, const char* const* argv, RenderOptions& options);
