// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/number_text.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "foundation/text/format_placeholder.h"
#include "foundation/text/string_formatter.h"
#include "foundation/text/string_scanner.h"

namespace {

bool IsBrace(char16_t unit) { return unit == u'{' || unit == u'}'; }

std::int32_t FindBrace(const MString& format, std::int32_t from) {
    while (from < format.Length() && !IsBrace(format[from])) ++from;
    return from;
}

void PutPart(NumberText& out, const MString& format, std::int32_t from, std::int32_t end) {
    for (; from < end; ++from) out.Put(format[from]);
}

bool PutArgument(NumberText& out, const FormatPlaceholder& placeholder, double number) {
    if (placeholder.precision >= 10) return false;
    if (placeholder.forcedSign && number - 1e-20 > 0) out.Put(u'+');
    const bool isSignedZero = placeholder.forcedSign && number == 0;
    out.PutFixed(isSignedZero ? 0.0 : number, placeholder.precision);
    return true;
}

bool PutArgument(NumberText& out, const FormatPlaceholder& placeholder, std::int64_t number) {
    if (placeholder.hexadecimal || placeholder.width > 0) return false;
    if (placeholder.forcedSign && number > 0) out.Put(u'+');
    out.PutWhole(number);
    return true;
}

// Plain text around one placeholder is written at once; any other format is the formatter's, which
// takes several times as long.
template <typename Number>
MString Format(const MString& format, Number number) {
    const std::int32_t opening = FindBrace(format, 0);
    if (format[opening] == u'{' && format[opening + 1] != u'{') {
        std::int32_t behind = opening + 1;
        const FormatPlaceholder placeholder = ReadPlaceholder(format, behind);
        if (placeholder.argument == 0 && FindBrace(format, behind) == format.Length()) {
            NumberText out;
            PutPart(out, format, 0, opening);
            if (PutArgument(out, placeholder, number)) {
                PutPart(out, format, behind, format.Length());
                return out.Take();
            }
        }
    }
    return MStringFormatter(format) << number;
}

}  // namespace

NumberText& NumberText::Put(const MString& part) {
    for (std::int32_t i = 0; i < part.Length(); ++i) buffer.Put(part[i]);
    return *this;
}

NumberText& NumberText::PutWhole(std::int64_t number) {
    char digits[24] = {};
    return PutDigits(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

NumberText& NumberText::PutFixed(double number, int decimals) {
    char digits[400];  // the largest double has 309 digits before the point
    const auto result =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::fixed, decimals);
    return PutDigits(digits, result.ptr);
}

NumberText& NumberText::PutDigits(const char* first, const char* end) {
    for (; first < end; ++first) buffer.Put(static_cast<char16_t>(*first));
    return *this;
}

MString NumberText::Take() {
    buffer.Flush();
    return std::move(text);
}

double RoundHalfUp(double number) { return std::floor(number + 0.5); }

MString FormatNumber(const MString& format, double number) { return Format(format, number); }

MString FormatNumber(const MString& format, std::int64_t number) { return Format(format, number); }

std::optional<double> ScanNumber(const MString& format, const MString& text) {
    return ReadNumber(MStringScanner(format, text).Get(0));
}

std::optional<std::int64_t> ScanInteger(const MString& format, const MString& text) {
    const MStringScanner scanner(format, text);
    return ReadInteger(scanner.Get(0), scanner.GetRadix(0));
}
