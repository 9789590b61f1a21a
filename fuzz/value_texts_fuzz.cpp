// SPDX-License-Identifier: GPL-3.0-or-later
// A format, a line feed and a typed text: every scale reads the text, stays in its range, and tells
// what it read.
#include <algorithm>
#include <cstdint>
#include <string_view>

#include "foundation/text/exception.h"
#include "parameters/values/value_scales.h"

namespace {

template <typename Value>
void Check(const MString& format, const MString& typed) {
    Value value;
    value.format = format;
    try {
        value.SetText(typed);
        if (!(value.Get() >= value.min && value.Get() <= value.max)) __builtin_trap();
        value.SetString(typed);
        (void)value.GetText();
        value.Limit();
        if (!(value.Get01() >= 0 && value.Get01() <= 1)) __builtin_trap();
    } catch (const MException&) {
        // the format is broken
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(bytes.find('\n'), size);
    const MString format = MString::FromUtf8(bytes.substr(0, end));
    const MString typed = MString::FromUtf8(bytes.substr(std::min(end + 1, size)));
    Check<MValueDouble>(format, typed);
    Check<MValueInt16>(format, typed);
    Check<MValueInt64>(format, typed);
    Check<MValuePercents>(format, typed);
    Check<MValueDegreesFrom01>(format, typed);
    Check<MValueFrequency>(format, typed);
    Check<MValueFrequencyLog>(format, typed);
    Check<MValueVolume>(format, typed);
    Check<MValuePan>(format, typed);
    Check<MValueTimeMS>(format, typed);
    Check<MValueSignalGeneratorShape>(format, typed);
    Check<MValueMIDINote>(format, typed);
    return 0;
}
