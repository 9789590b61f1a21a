// SPDX-License-Identifier: GPL-3.0-or-later
// The scanner with an arbitrary format and subject, apart at the first line feed. What is found is
// read as numbers too.
#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "foundation/text/exception.h"
#include "foundation/text/string_scanner.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(bytes.find('\n'), size);
    const MString format = MString::FromUtf8(bytes.substr(0, end));
    const MString subject = MString::FromUtf8(bytes.substr(std::min(end + 1, size)));
    try {
        const MStringScanner scanner(format, subject);
        int found = 0;
        for (int i = 0; i < FormatPlaceholder::kArguments; ++i) {
            const MString& text = scanner.Get(i);
            std::int32_t consumed = 0;
            MString::ToInt64(text, scanner.GetRadix(i), &consumed);
            if (consumed > text.Length() || text.Length() > subject.Length()) std::abort();
            found += !text.IsEmpty();
        }
        if (found > scanner.Count()) std::abort();
    } catch (const MException&) {
    }
    return 0;
}
