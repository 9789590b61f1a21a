// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/http_stream.h"

#include <algorithm>

#include "foundation/streams/web_address.h"
#include "foundation/text/encoding.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

// What a path may hold besides letters, digits and "-._~": what is encoded already stays.
constexpr std::string_view kPathCharacters = "!\"#$%&'()*+,/:;<=>?@[\\]^`{|}";

// A line break from outside would begin a header of its own.
MString OneLine(const MString& text) {
    MString line = text;
    for (char16_t control = 1; control < u' '; ++control) line.Replace(control, " ");
    return line;
}

MString Line(const char* format, const MString& first, const MString& second = MString()) {
    return MStringFormatter(format) << first << second;
}

std::string RequestText(const MHTTPStream::Request& request) {
    const bool hasForm = !request.formData.empty();
    const std::string path = PercentEncode(request.path.ToUtf8(), kPathCharacters);
    MString text = Line(hasForm ? "POST {0} HTTP/1.0\n" : "GET {0} HTTP/1.0\n",
                        path.empty() ? MString("/") : MString::FromUtf8(path));
    if (hasForm) {
        text.Append("Content-Type: application/x-www-form-urlencoded\n");
        text.Append(MStringFormatter("Content-Length: {0}\n") << request.formData.size());
    }
    const bool isIPv6 = request.host.ToUtf8().find(':') != std::string::npos;
    const MString host = isIPv6 ? Line("[{0}]", request.host) : OneLine(request.host);
    text.Append(Line("Host: {0}:{1}\n", host, MString::FromInt(request.port)));
    text.Append("Connection: Close\n");
    for (const auto& [name, value] : request.headers)
        text.Append(Line("{0}: {1}\n", OneLine(name), OneLine(value)));
    text.Append("\n");
    return MEncoding::GetCodec("utf-8").Encode(text, false) + request.formData;
}

// False where the location is of a kind that this client does not speak.
bool MoveTo(MHTTPStream::Request& request, const std::string& location) {
    std::string scheme(AddressScheme(location));
    if (scheme.empty()) {
        request.path = MString::FromUtf8(ResolvePath(request.path.ToUtf8(), location));
        return true;
    }
    if (MString::FromUtf8(scheme).CompareNoCase("http") != 0) return false;
    const auto address = ParseWebAddress(location);
    if (!address)
        throw MException("MHTTPStream invalid HTTP reply header line.",
                         "Invalid HTTP reply header line.", 513);
    request.host = MString::FromUtf8(address->host);
    request.port = address->port;
    request.path = MString::FromUtf8(address->path);
    return true;
}

}  // namespace

void MHTTPStream::Open(const Request& request) {
    try {
        OpenAndFollow(request);
    } catch (const MException&) {
        Close();
        throw;
    }
}

void MHTTPStream::OpenAndFollow(Request request) {
    for (;; --request.redirects) {
        Perform(request);
        if (GetStatus() / 100 != 3 || request.redirects <= 0) return;
        if (!MoveTo(request, GetHeader("Location").ToUtf8())) return;
    }
}

void MHTTPStream::Perform(const Request& request) {
    Connect(request.host, request.port);
    SetTimeLimit(std::chrono::steady_clock::now() + GetTimeout());
    const std::string text = RequestText(request);
    MSocketStream::Write(text.data(), static_cast<std::int32_t>(text.size()));
    reply.ReadHeader(wire, request.bodyLimit);
    SetTimeLimit(kNoLimit);
}

// A silent peer is not taken for one that has ended.
std::int32_t MHTTPStream::Read(void* buffer, std::int32_t size) {
    const std::int32_t count = reply.ReadBody(wire, buffer, size);
    if (count == 0 && HasTimedOut()) RaiseEndOfStream();
    return count;
}

bool MHTTPStream::IsEnd() {
    const bool ended = reply.IsBodyEnd(wire);
    if (ended && HasTimedOut()) RaiseEndOfStream();
    return ended;
}

std::int64_t MHTTPStream::GetSize() {
    const auto size = reply.GetBodySize();
    return size ? *size : MStream::GetSize();
}

std::int32_t MHTTPStream::Wire::Read(void* buffer, std::int32_t size) {
    return client.MSocketStream::Read(buffer, size);
}

bool MHTTPStream::Wire::IsEnd() { return client.MSocketStream::IsEnd(); }
