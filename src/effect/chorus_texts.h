// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "effect/chorus_parameters.h"

// How the chorus's values read and what its parameters are for. The tempo lock's records have their
// texts from MAudioPluginHostSync.
void DescribeTexts(ChorusParameters& parameters);
