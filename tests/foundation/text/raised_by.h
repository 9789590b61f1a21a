// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "foundation/text/exception.h"

// The message of the exception that an action raises.
template <typename Action>
std::string RaisedBy(const Action& action) {
    try {
        action();
    } catch (const MException& error) {
        return error.what();
    }
    return "nothing";
}
