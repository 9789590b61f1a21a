// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/guarded.h"

#include <cstdio>
#include <cstdlib>

#include "foundation/text/string_formatter.h"

namespace {

bool IsTracing() {
    // Nobody of ours changes the environment.
    static const bool tracing =
        std::getenv("QUILLOREA_TRACE") != nullptr;  // NOLINT(concurrency-mt-unsafe)
    return tracing;
}

template <typename Write>
void Trace(Write write) noexcept {
    try {
        if (IsTracing()) write();
    } catch (...) {  // no memory for a text that nobody needs
    }
}

}  // namespace

void ReportSwallowed(const char* trace, const MException& exception) noexcept {
    Trace([&] { std::fprintf(stderr, "%s: %s\n", trace, exception.what()); });
}

void ReportSwallowed(const char* trace) noexcept {
    Trace([&] {
        const MString text = MStringFormatter("SYSTEM EXCEPTION! {0}") << trace;
        std::fprintf(stderr, "%s\n", text.ToUtf8().c_str());
    });
}

void TraceNumber(const char* label, std::int64_t number) noexcept {
    Trace([&] { std::fprintf(stderr, "%s%lld\n", label, static_cast<long long>(number)); });
}
