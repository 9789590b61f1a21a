// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "foundation/text/byte_stream.h"

// A stream over bytes in memory: writes append, reads take from the front.
class ByteString final : public MByteStream {
public:
    explicit ByteString(std::string bytes = {}) : bytes(std::move(bytes)) {}

    void Write(const void* buffer, std::int32_t size) override {
        bytes.append(static_cast<const char*>(buffer), static_cast<std::size_t>(size));
        ++writes;
    }
    std::int32_t Read(void* buffer, std::int32_t size) override {
        const std::size_t count =
            bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(size));
        bytes.erase(0, count);
        return static_cast<std::int32_t>(count);
    }

    std::string bytes;
    int writes = 0;
};
