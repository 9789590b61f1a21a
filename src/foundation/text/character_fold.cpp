// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/character_fold.h"

char16_t FoldCharacter(char16_t unit) { return LowerAscii(unit); }
