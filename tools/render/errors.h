// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>

// How the program ends early. what() is one plain sentence for the person at the terminal.

// Something asked for can't be done: exit code 1.
struct RenderError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The command line itself is wrong: exit code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
