// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include "foundation/objects/guarded.h"
#include "pluginterfaces/base/funknown.h"

// Guarded for calls that answer a code of the interface, of which the SDK's names are an enum.
template <typename Body>
Steinberg::tresult GuardedResult(const char* trace, Steinberg::tresult neutral,
                                 Body&& body) noexcept {
    return Guarded(trace, neutral, [&]() -> Steinberg::tresult { return body(); });
}
