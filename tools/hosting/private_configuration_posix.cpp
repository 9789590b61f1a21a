// SPDX-License-Identifier: GPL-3.0-or-later
#include "private_configuration.h"

#include <cstdlib>
#include <fstream>

#include "hosted_plugin.h"

namespace fs = std::filesystem;

namespace {

constexpr char kVariable[] = "XDG_CONFIG_HOME";

}  // namespace

PrivateConfiguration::PrivateConfiguration(const std::string& folder, const std::string& file,
                                           const std::string& content) {
    std::error_code failed;
    std::string pattern = fs::temp_directory_path(failed) / "quillorea-XXXXXX";
    if (failed || mkdtemp(pattern.data()) == nullptr)
        throw HostingError("Cannot make a folder for temporary files.");
    root = pattern;
    fs::create_directory(root / folder, failed);
    std::ofstream(root / folder / file) << content;
    if (const char* const told = std::getenv(kVariable)) before = told;
    setenv(kVariable, root.c_str(), 1);
}

PrivateConfiguration::~PrivateConfiguration() {
    if (before)
        setenv(kVariable, before->c_str(), 1);
    else
        unsetenv(kVariable);
    std::error_code failed;
    fs::remove_all(root, failed);
}
