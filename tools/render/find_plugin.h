// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

// The plug-in that was built or installed with this program: the bundle, or the plain library of
// VST 2. Raises RenderError where it is in neither place.
std::string FindBuiltPlugin(bool isVst2);
