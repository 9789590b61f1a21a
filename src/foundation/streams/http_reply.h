// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/streams/mstream.h"

// An HTTP/1.0 reply, read from whatever stream brings it.
//
// Units    bytes
// Ranges   a header of 64 KiB, a line of 16 KiB; a body as long as announced, but not above a limit
// Threads  one at a time
// Errors   MException with code 513 and a context "Invalid HTTP reply header.", "Invalid HTTP reply
//          header line.", "Invalid HTTP reply body."; "Requested HTTP header not found." with code
//          513; "No more data in source stream." with code 256 where an announced body is cut short

class HttpReply {
public:
    // Drops an earlier reply. wire outlives the reading of the body; one of more than bodyLimit
    // bytes raises "Invalid HTTP reply body.", here where it is announced, else when it gets there.
    void ReadHeader(MStream& wire, std::int64_t bodyLimit);

    // 100 .. 999
    int GetStatus() const { return status; }
    // Null where there is none; of several the first one.
    const MString* FindHeader(const MString& name) const;
    const MString& GetHeader(const MString& name) const;

    // As MStream has them.
    std::int32_t ReadBody(MStream& wire, void* buffer, std::int32_t size);
    bool IsBodyEnd(MStream& wire) const;
    std::int64_t GetBodyPosition() const { return position; }
    // None where the length is not announced: the body is then what comes until the wire ends.
    std::optional<std::int64_t> GetBodySize() const { return bodySize; }

private:
    struct Header {
        MString name;
        MString value;
    };

    void AddHeader(std::string_view line);
    void TakeBodySize(std::int64_t bodyLimit);

    int status = 0;
    std::vector<Header> headers;
    std::optional<std::int64_t> bodySize;
    std::int64_t bodyLimit = 0;
    std::int64_t position = 0;  // within the body
};
