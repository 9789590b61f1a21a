// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/interface_text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

constexpr bool IsContinuation(char byte) { return (byte & 0xc0) == 0x80; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xfc00) == 0xdc00; }

constexpr bool IsBetweenWords(char16_t unit) {
    return unit == u' ' || unit == u'-' || unit == u'/';
}

// Each with a capital, that shows where it starts.
std::vector<MString> WordsOf(const MString& text) {
    std::vector<MString> words;
    for (int i = 0; i < text.Length(); ++i) {
        if (IsBetweenWords(text[i])) continue;
        const bool isFirst = i == 0 || IsBetweenWords(text[i - 1]);
        if (isFirst) words.emplace_back();
        const bool isSmall = text[i] >= u'a' && text[i] <= u'z';
        words.back().Append(
            static_cast<char16_t>(isFirst && isSmall ? text[i] - u'a' + u'A' : text[i]));
    }
    return words;
}

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

MString Abbreviated(const MString& text, int length) {
    if (text.Length() <= length) return text;
    const std::vector<MString> words = WordsOf(text);
    int wordsLeft = static_cast<int>(words.size());
    MString result;
    for (const MString& word : words) {
        const int room = length - result.Length();
        const int share = (room + wordsLeft - 1) / wordsLeft;
        result.Append(word.SubString(0, share));
        --wordsLeft;
    }
    return result;
}
