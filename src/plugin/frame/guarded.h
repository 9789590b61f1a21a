// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/objects/guarded.h"  // its place: the user interface's entries need it too
