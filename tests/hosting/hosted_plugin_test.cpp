// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosting/hosted_plugin.h"

#include <gmock/gmock.h>
