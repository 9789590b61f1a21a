// SPDX-License-Identifier: GPL-3.0-or-later
// The formatter with arbitrary format strings and arguments. What it writes is scanned with the
// same format.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"
#include "foundation/text/string_scanner.h"

namespace {

template <typename T>
T Take(std::string_view& bytes) {
    T value{};
    const std::size_t count = std::min(sizeof value, bytes.size());
    std::memcpy(&value, bytes.data(), count);
    bytes.remove_prefix(count);
    return value;
}

void Push(MStringFormatter& formatter, std::string_view& bytes) {
    switch (Take<std::uint8_t>(bytes) % 4) {
        case 0:
            formatter << Take<std::int64_t>(bytes);
            break;
        case 1:
            formatter << Take<std::uint64_t>(bytes);
            break;
        case 2:
            formatter << Take<double>(bytes);
            break;
        default:
            formatter << MString::FromUtf8(bytes.substr(0, Take<std::uint8_t>(bytes) % 8));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const int arguments = Take<std::uint8_t>(bytes) % 40;
    const std::size_t length = std::min<std::size_t>(Take<std::uint16_t>(bytes), bytes.size());
    const MString format = MString::FromUtf8(bytes.substr(0, length));
    bytes.remove_prefix(length);
    try {
        MStringFormatter formatter(format);
        const std::int32_t literalLength = MString(formatter).Length();
        for (int i = 0; i < arguments; ++i) Push(formatter, bytes);
        const MString text = formatter;
        if (text.Length() < literalLength || text[text.Length()] != 0) std::abort();
        MStringScanner(format, text);
    } catch (const MException&) {
    }
    return 0;
}
