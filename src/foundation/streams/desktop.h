// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

// Other programs, started without a shell and not waited for. They inherit no file of this process
// and print nowhere.
//
// Threads  any
// Errors   false where the program could not be started

// A document or address with the program that the desktop has for it.
bool OpenWithDesktop(const std::string& target);
// False also for what is no program.
bool RunProgram(const std::string& path);
