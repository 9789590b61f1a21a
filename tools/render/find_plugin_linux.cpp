// SPDX-License-Identifier: GPL-3.0-or-later
#include "find_plugin.h"

#include <filesystem>

#include "errors.h"

namespace fs = std::filesystem;

std::string FindBuiltPlugin(bool isVst2) {
    // In the folder of the build, and below the prefix of an installation.
    const fs::path places[] = {isVst2 ? "../../Quillorea.so" : "../../Quillorea.vst3",
                               isVst2 ? "../lib/vst/Quillorea.so" : "../lib/vst3/Quillorea.vst3"};
    std::error_code failed;
    const fs::path folder = fs::read_symlink("/proc/self/exe", failed).parent_path();
    for (const fs::path& place : places)
        if (fs::exists(folder / place, failed)) return (folder / place).lexically_normal();
    throw RenderError("There is no plug-in beside this program; --plugin tells where it is.");
}
