// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace Steinberg {
class IPluginFactory3;
}

// The text of a bundle's moduleinfo.json: what hosts would learn of a module's classes by loading
// it. It is taken from the factory, so that the two cannot differ.
//
// Units    UTF-8; class IDs in upper-case hexadecimal digits
// Threads  any
// Errors   MException "The factory does not tell its classes."
std::string ModuleInfoText(Steinberg::IPluginFactory3& factory);
