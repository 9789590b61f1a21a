// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "options.h"
#include "parameters.h"
#include "plugin_description.h"
#include "plugin_runner.h"

// The plug-in, loaded and set as the command line asks for, ready for its first block.
//
// Errors   those of PluginRunner and ParameterList; RenderError for channels that a mode does not
//          take and files that can't be read or written

class PreparedPlugin {
public:
    PreparedPlugin(const RenderOptions& options, int channels, int rate);

    PluginRunner& Runner() { return runner; }

    // As --list, --list-params and --info show it.
    std::string Table() const { return parameters.Table(); }
    std::string InterfaceTable() const { return parameters.InterfaceTable(); }
    std::string Info();

    // What the song of a host would keep.
    void SaveState(const std::string& path);

private:
    PluginRunner::Setup SetupFor(const RenderOptions& options, int channels, int rate);

    PluginRunner runner;
    PluginDescription description;
    ParameterList parameters;
};
