// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/socket_stream.h"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/text/exception.h"

MNetEntity::MNetEntity() {
    static const bool started = StartNetwork();
    if (!started) throw MException("WinSock could not be initializated.", 512);
}

MString MNetEntity::GetHostName() {
    const std::string name = OwnHostName();
    if (name.empty()) throw MException("Could not resolve host network name.", 512);
    return MString::FromUtf8(name);
}

void MSocketStream::Close() {
    const SocketHandle closed = std::exchange(handle, kNoSocket);
    if (closed != kNoSocket) CloseSocket(closed);
}

void MSocketStream::Write(const void* buffer, std::int32_t size) {
    RequireSocket();
    const char* bytes = static_cast<const char*>(buffer);
    const Deadline slowest = Slowest(size);
    for (std::int32_t left = size; left > 0;) {
        const SocketTransfer sent =
            SendSome(handle, bytes, left, std::min(After(GetTimeout()), slowest));
        if (sent.state == SocketState::Failed)
            throw MException("Could not write to socket stream.", 512);
        if (sent.state == SocketState::Closed)
            throw MException("All data were not sent before target disconnected.", 512);
        if (sent.state == SocketState::TimedOut)
            throw MException("Not all data have been sent.", 512);
        bytes += sent.count;
        left -= sent.count;
    }
}

std::int32_t MSocketStream::Read(void* buffer, std::int32_t size) {
    RequireSocket();
    auto* const bytes = static_cast<char*>(buffer);
    std::int32_t count = 0;
    timedOut = false;
    const Deadline slowest = Slowest(size);
    while (count < size) {
        const Deadline silence = std::min(After(GetTimeout()), slowest);
        const SocketTransfer received = ReceiveSome(handle, bytes + count, size - count, silence);
        timedOut = received.state == SocketState::TimedOut;
        if (received.state != SocketState::Moved) break;
        count += received.count;
    }
    return count;
}

bool MSocketStream::IsEnd() {
    RequireSocket();
    const SocketState state = AwaitData(handle, After(GetTimeout())).state;
    timedOut = state == SocketState::TimedOut;
    return state != SocketState::Moved;
}

void MSocketStream::RequireSocket() const {
    if (handle == kNoSocket)
        throw MException("The network socket stream has not been initialized.", 512);
}

Deadline MSocketStream::After(std::chrono::milliseconds duration) const {
    return std::min(std::chrono::steady_clock::now() + duration, limit);
}

Deadline MSocketStream::Slowest(std::int32_t size) const {
    return After(GetTimeout() + std::chrono::milliseconds(std::max(size, 0)));
}
