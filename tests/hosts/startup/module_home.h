// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

#include "foundation/module/module.h"
#include "foundation/streams/stream_support.h"

// A process that has not started the library up yet, whose user has an empty home.
class ModuleHome : public testing::Test {
protected:
    ModuleHome() {
        setenv("XDG_CONFIG_HOME", home.path.c_str(), 1);
        setenv("XDG_DATA_HOME", home.path.c_str(), 1);
    }
    ~ModuleHome() override { ForgetModule(); }

    static void ForgetModule() {
        delete theModule;
        theModule = nullptr;
    }

    const TestFolder home;
};
