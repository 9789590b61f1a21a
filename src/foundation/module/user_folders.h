// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/mstring.h"

// Where the user's files of this family of plug-ins belong. They need not be there yet.
//
// Threads  any, while nobody changes the environment
// Method   on Linux the base directories of freedesktop.org: "quillorea" in $XDG_CONFIG_HOME and
//          $XDG_DATA_HOME, else in .config and .local/share of $HOME. Paths that are not absolute
//          count as missing
struct UserFolders {
    MString settings;  // empty where there is none, like the other
    MString data;
};

UserFolders FindUserFolders();
