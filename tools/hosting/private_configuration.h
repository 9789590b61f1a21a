// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <optional>
#include <string>

// Settings of the user's that a plug-in finds while the object lives, instead of the real ones:
// what is loaded meanwhile does not depend on who runs it.
//
// Threads  one, while no other reads the environment
// Errors   HostingError where there is no room for it

class PrivateConfiguration {
public:
    // One file in a folder of that name in the user's folder of settings.
    PrivateConfiguration(const std::string& folder, const std::string& file,
                         const std::string& content);
    PrivateConfiguration(const PrivateConfiguration&) = delete;
    PrivateConfiguration& operator=(const PrivateConfiguration&) = delete;
    ~PrivateConfiguration();

private:
    std::filesystem::path root;
    std::optional<std::string> before;  // what the environment said
};
