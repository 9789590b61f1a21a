// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class MPlugin;
class PluginArguments;

// Where the chorus starts: the entry function that a frame hands to MPluginSystem::Create.
// A null object makes a new chorus; kCreate answers it and does nothing else; every other code goes
// to its Dispatch.
std::intptr_t ChorusEntry(MPlugin* object, int code, PluginArguments& arguments);
