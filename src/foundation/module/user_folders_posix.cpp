// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdlib>
#include <string>

#include "foundation/module/user_folders.h"

namespace {

// Empty where it is not told.
std::string AbsolutePath(const char* variable) {
    const char* const path = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return path != nullptr && *path == '/' ? path : "";
}

MString FolderIn(const char* variable, const char* otherwise) {
    std::string base = AbsolutePath(variable);
    const std::string home = AbsolutePath("HOME");
    if (base.empty() && !home.empty()) base = home + otherwise;
    return base.empty() ? MString() : MString::FromUtf8(base + "/quillorea");
}

}  // namespace

UserFolders FindUserFolders() {
    return {FolderIn("XDG_CONFIG_HOME", "/.config"), FolderIn("XDG_DATA_HOME", "/.local/share")};
}
