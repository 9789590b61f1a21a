// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/http_reply.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "foundation/text/encoding.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::int32_t kLargestHeader = 64 * 1024;
constexpr std::int32_t kLargestLine = 16 * 1024;

[[noreturn]] void RaiseInvalidHeader() {
    throw MException("MHTTPStream reading HTTP reply header.", "Invalid HTTP reply header.", 513);
}

[[noreturn]] void RaiseInvalidLine() {
    throw MException("MHTTPStream invalid HTTP reply header line.",
                     "Invalid HTTP reply header line.", 513);
}

[[noreturn]] void RaiseInvalidBody() {
    throw MException("MHTTPStream reading HTTP reply body.", "Invalid HTTP reply body.", 513);
}

constexpr bool IsWhite(char c) { return static_cast<unsigned char>(c) <= ' '; }

std::string_view Trim(std::string_view text) {
    while (!text.empty() && IsWhite(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsWhite(text.back())) text.remove_suffix(1);
    return text;
}

// Digits only. False also for what is too large.
template <typename Number>
bool ParseDigits(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && read == end && text.front() != '-';
}

// "HTTP/1.0 200 OK", of which the last word may be missing.
int ParseStatus(std::string_view line) {
    if (!line.starts_with("HTTP/")) RaiseInvalidHeader();
    line = Trim(line.substr(std::min(line.find(' '), line.size())));
    int status = 0;
    if (!ParseDigits(line.substr(0, line.find(' ')), status) || status < 100 || status > 999)
        RaiseInvalidHeader();
    return status;
}

// The lines of a header, within the limits. What ends before its empty line is no header.
class HeaderLines : public MStream {
public:
    explicit HeaderLines(MStream& wire) : wire(wire), buffer(kLargestLine) {}

    std::string_view Next() {
        if (ReadLine(buffer.data(), kLargestLine) != 0) RaiseInvalidHeader();
        return buffer.data();
    }
    // Counts all bytes, also those that no line keeps.
    std::int32_t Read(void* bytes, std::int32_t size) override {
        total += size;
        if (total > kLargestHeader) RaiseInvalidHeader();
        return wire.Read(bytes, size);
    }

private:
    MStream& wire;
    std::vector<char> buffer;
    std::int32_t total = 0;
};

}  // namespace

void HttpReply::ReadHeader(MStream& wire, std::int64_t bodyLimit) {
    *this = HttpReply();
    HeaderLines lines(wire);
    status = ParseStatus(lines.Next());
    for (std::string_view line = lines.Next(); !line.empty(); line = lines.Next()) AddHeader(line);
    TakeBodySize(bodyLimit);
}

void HttpReply::AddHeader(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == 0 || colon == std::string_view::npos) RaiseInvalidLine();
    const MEncoding::Codec& codec = MEncoding::GetCodec("utf-8");
    headers.push_back(
        {codec.Decode(line.substr(0, colon)), codec.Decode(Trim(line.substr(colon + 1)))});
}

void HttpReply::TakeBodySize(std::int64_t limit) {
    bodyLimit = limit;
    const MString* const text = FindHeader("Content-length");
    if (text == nullptr) return;
    std::int64_t size = 0;
    if (!ParseDigits(text->ToUtf8(), size)) RaiseInvalidLine();
    if (size > limit) RaiseInvalidBody();
    bodySize = size;
}

const MString* HttpReply::FindHeader(const MString& name) const {
    const auto found = std::find_if(headers.begin(), headers.end(), [&](const Header& header) {
        return header.name.CompareNoCase(name) == 0;
    });
    return found != headers.end() ? &found->value : nullptr;
}

const MString& HttpReply::GetHeader(const MString& name) const {
    const MString* const value = FindHeader(name);
    if (value == nullptr) throw MException("Requested HTTP header not found.", 513);
    return *value;
}

std::int32_t HttpReply::ReadBody(MStream& wire, void* buffer, std::int32_t size) {
    if (size <= 0) return 0;
    const std::int64_t left = bodySize.value_or(bodyLimit) - position;
    if (left <= 0) {
        if (!bodySize && !wire.IsEnd()) RaiseInvalidBody();
        return 0;
    }
    const std::int32_t count =
        wire.Read(buffer, static_cast<std::int32_t>(std::min<std::int64_t>(left, size)));
    position += count;
    if (count == 0 && bodySize) RaiseEndOfStream();
    return count;
}

bool HttpReply::IsBodyEnd(MStream& wire) const {
    return bodySize ? position >= *bodySize : wire.IsEnd();
}
