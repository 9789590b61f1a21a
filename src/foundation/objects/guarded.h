// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <utility>

#include "foundation/text/exception.h"

// The one wrapper of every entry from a host: nothing that is raised below it gets out.
//
//     return Guarded("MAudioPlugin::GetParameter", 0.0, [&] { return adapter->GetParameter(i); });
//
// Threads  any; costs nothing while nothing is raised
// Errors   a MException ends here quietly, anything else as "SYSTEM EXCEPTION! {0}" with the trace.
//          The answer is then neutral
// Method   where the environment variable QUILLOREA_TRACE is set, what was swallowed goes to
//          stderr, for developers

void ReportSwallowed(const char* trace, const MException& exception) noexcept;
void ReportSwallowed(const char* trace) noexcept;
// A line for developers, at the same place and under the same condition.
void TraceNumber(const char* label, std::int64_t number) noexcept;

template <typename Neutral, typename Body>
Neutral Guarded(const char* trace, Neutral neutral, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const MException& exception) {
        ReportSwallowed(trace, exception);
    } catch (...) {
        ReportSwallowed(trace);
    }
    return neutral;
}

template <typename Body>
void Guarded(const char* trace, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (const MException& exception) {
        ReportSwallowed(trace, exception);
    } catch (...) {
        ReportSwallowed(trace);
    }
}
