// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/string_scanner.h"

#include "foundation/text/exception.h"

namespace {

bool IsWhiteSpace(char16_t unit) { return unit <= u' '; }

}  // namespace

MStringScanner::MStringScanner(const MString& format, const MString& subject)
    : format(format), subject(subject) {
    while (formatPosition < format.Length() && subjectPosition < subject.Length() && Step()) {
    }
}

// One placeholder, one run of white space or one character; false where the texts differ.
bool MStringScanner::Step() {
    char16_t wanted = format[formatPosition];
    if (IsWhiteSpace(wanted)) return SkipWhiteSpace();
    ++formatPosition;
    if (wanted == u'{' && format[formatPosition] != u'{') {
        Take(ReadPlaceholder(format, formatPosition));
        return true;
    }
    if (wanted == u'{' || wanted == u'}') {
        if (formatPosition == format.Length()) return false;
        wanted = format[formatPosition++];
    }
    return subject[subjectPosition++] == wanted;
}

bool MStringScanner::SkipWhiteSpace() {
    while (formatPosition < format.Length() && IsWhiteSpace(format[formatPosition]))
        ++formatPosition;
    const std::int32_t start = subjectPosition;
    while (subjectPosition < subject.Length() && IsWhiteSpace(subject[subjectPosition]))
        ++subjectPosition;
    return subjectPosition > start;
}

void MStringScanner::Take(const FormatPlaceholder& placeholder) {
    char16_t end = format[formatPosition];
    if (end == u'}') end = format[formatPosition + 1];
    const std::int32_t start = subjectPosition;
    while (subjectPosition < subject.Length()) {
        const char16_t unit = subject[subjectPosition];
        if (IsWhiteSpace(end) ? IsWhiteSpace(unit) : unit == end) break;
        ++subjectPosition;
    }
    if (!placeholder.NamesArgument()) return;
    Capture& capture = captures[static_cast<std::size_t>(placeholder.argument)];
    if (!capture.isFound) ++count;
    capture = {subject.SubString(start, subjectPosition - start), true, placeholder.hexadecimal};
}

const MStringScanner::Capture& MStringScanner::At(int index) const {
    if (index < 0 || index >= FormatPlaceholder::kArguments)
        throw MException("Index out of range.");
    return captures[static_cast<std::size_t>(index)];
}

const MString& MStringScanner::Get(int index) const { return At(index).text; }

int MStringScanner::GetRadix(int index) const { return At(index).hexadecimal ? 16 : 10; }
