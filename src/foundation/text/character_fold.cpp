// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/character_fold.h"

#include <algorithm>

#include "foundation/text/accent_folds.h"

char16_t WithoutAccent(char16_t unit) {
    const auto folds = AccentFolds();
    const auto found = std::ranges::lower_bound(folds, unit, {}, &AccentFold::letter);
    return found != folds.end() && found->letter == unit ? found->base : unit;
}
