// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/mstream.h"

#include <algorithm>
#include <limits>
#include <string>

#include "foundation/streams/read_line_inl.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

constexpr std::int64_t kBlockSize = 1024;  // of skipping and filling

std::int64_t SaturatingSum(std::int64_t a, std::int64_t b) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (b > 0 && a > Limits::max() - b) return Limits::max();
    if (b < 0 && a < Limits::min() - b) return Limits::min();
    return a + b;
}

void WriteBytes(MStream& stream, const std::string& bytes) {
    if (!bytes.empty()) stream.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

}  // namespace

void RaiseUnsupportedService(const MString& action) {
    throw MException(MStringFormatter("Service \"{0}\" is not implemented.") << action, 1);
}

MStream& MStream::GetSubStream() { RaiseUnsupportedService("return substream"); }

void MStream::Write(const void*, std::int32_t) { RaiseUnsupportedService("write to stream"); }

void MStream::WriteFill(std::int64_t count) {
    static constexpr char kFiller[kBlockSize] = {};
    for (std::int64_t left = count; left > 0; left -= kBlockSize)
        Write(kFiller, static_cast<std::int32_t>(std::min(left, kBlockSize)));
}

std::int32_t MStream::Read(void*, std::int32_t) { RaiseUnsupportedService("read from stream"); }

int MStream::ReadLine(char* buffer, std::int32_t size) {
    return ReadLineFrom([this](char& byte) { return Read(&byte, 1) > 0; }, buffer, size);
}

void MStream::WriteString(const MString& text) { WriteBytes(*this, text.ToUtf8()); }

void MStream::WriteStringLine(const MString& text) {
    std::string bytes = text.ToUtf8();
    bytes += '\n';
    WriteBytes(*this, bytes);
}

std::int64_t MStream::SeekTarget(std::int64_t offset, int origin) {
    switch (origin) {
        case kFromStart:
            return offset;
        case kFromPosition:
            return SaturatingSum(GetPosition(), offset);
        case kFromEnd:
            return SaturatingSum(GetSize(), offset);
        default:
            throw MException("Invalid seek origin.", 2);
    }
}

void MStream::Seek(std::int64_t offset, int origin) {
    const std::int64_t target = SeekTarget(offset, origin);
    const std::int64_t position = GetPosition();
    if (target < position) RaiseUnsupportedService("backward seek in a stream");
    char skipped[kBlockSize];
    for (std::int64_t left = target - position; left > 0;) {
        const auto part = static_cast<std::int32_t>(std::min(left, kBlockSize));
        if (Read(skipped, part) != part) RaiseEndOfStream();
        left -= part;
    }
}

std::int64_t MStream::GetPosition() { RaiseUnsupportedService("get stream position"); }

void MStream::Flush() { RaiseUnsupportedService("flush stream"); }

bool MStream::IsEnd() { RaiseUnsupportedService("end of stream test"); }

void MStream::Truncate() { RaiseUnsupportedService("truncate stream"); }

std::int64_t MStream::GetSize() { RaiseUnsupportedService("stream size detection"); }

bool MStream::IsOpen() { return true; }
