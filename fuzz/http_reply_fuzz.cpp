// SPDX-License-Identifier: GPL-3.0-or-later
// A server's reply of arbitrary bytes: its header, its body, and where its redirect leads.
#include <cstdlib>

#include "foundation/streams/http_reply.h"
#include "foundation/streams/memory_stream.h"
#include "foundation/streams/web_address.h"
#include "foundation/text/exception.h"

namespace {

constexpr std::int64_t kBodyLimit = 1000;

void ReadReply(HttpReply& reply, MStream& wire) {
    char block[100];
    std::int64_t total = 0;
    reply.ReadHeader(wire, kBodyLimit);
    if (reply.GetStatus() < 100 || reply.GetStatus() > 999) std::abort();
    while (const std::int32_t count = reply.ReadBody(wire, block, sizeof block)) total += count;
    if (total > kBodyLimit || total != reply.GetBodyPosition()) std::abort();
    if (!reply.IsBodyEnd(wire)) std::abort();
}

// A path that goes into a request begins with a slash, and resolves to itself.
void CheckPath(const std::string& path) {
    if (!path.starts_with('/') || ResolvePath("/", path) != path) std::abort();
}

void FollowRedirect(const HttpReply& reply) {
    const MString* const location = reply.FindHeader("location");
    if (location == nullptr) return;
    const std::string text = location->ToUtf8();
    CheckPath(ResolvePath("/folder/file?query", text));
    if (AddressScheme(text).empty()) return;
    const auto address = ParseWebAddress(text);
    if (!address) return;
    if (address->host.empty() || address->port == 0) std::abort();
    CheckPath(address->path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MMemoryStream wire(data, static_cast<std::int32_t>(size));
    HttpReply reply;
    try {
        ReadReply(reply, wire);
    } catch (const MException& error) {
        if (error.code != 513 && error.code != 256) std::abort();
    }
    FollowRedirect(reply);
    return 0;
}
