// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "foundation/module/module.h"
#include "foundation/streams/stream_support.h"

// A process that has not started the library up yet, whose user has an empty home.
class ModuleHome : public testing::Test {
protected:
    ModuleHome() {
        setenv("XDG_CONFIG_HOME", home.Path("config").c_str(), 1);
        setenv("XDG_DATA_HOME", home.Path("data").c_str(), 1);
    }
    ~ModuleHome() override { ForgetModule(); }

    static void ForgetModule() {
        delete theModule;
        theModule = nullptr;
    }
    // What the file of settings holds when the module is made.
    void SetSettings(const std::string& attributes) const {
        std::filesystem::create_directories(home.path / "config/quillorea");
        home.SetContent("config/quillorea/GlobalConfiguration.xml",
                        "<GlobalConfiguration><MAudioPluginSettings " + attributes +
                            "/></GlobalConfiguration>");
    }

    const TestFolder home;
};

inline int ThreadCount() {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                                          std::filesystem::directory_iterator()));
}
