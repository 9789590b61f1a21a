// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/interface_text.h"

#include <algorithm>
#include <string>

namespace {

constexpr bool IsContinuation(char byte) { return (byte & 0xc0) == 0x80; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xdc00; }

}  // namespace

void CopyText(const MString& text, char* destination, int size) {
    if (destination == nullptr) return;
    const std::string bytes = text.ToUtf8();
    std::size_t count = std::min(bytes.size(), static_cast<std::size_t>(size) - 1);
    while (count > 0 && count < bytes.size() && IsContinuation(bytes[count])) --count;
    std::copy_n(bytes.begin(), count, destination);
    destination[count] = '\0';
}

void CopyText(const MString& text, char16_t* destination, int size) {
    if (destination == nullptr) return;
    int count = std::min(text.Length(), size - 1);
    if (count > 0 && count < text.Length() && IsLowSurrogate(text[count])) --count;
    for (int i = 0; i < count; ++i) destination[i] = text[i];
    destination[count] = 0;
}
