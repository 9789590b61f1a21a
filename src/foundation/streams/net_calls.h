// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// TCP as the system has it, with a time limit on everything that waits. A peer that has gone raises
// no signal.
//
// Threads  any; one socket by one thread at a time
// Errors   told by the result

using SocketHandle = std::intptr_t;
inline constexpr SocketHandle kNoSocket = -1;

using Deadline = std::chrono::steady_clock::time_point;

// An address as the system writes it.
struct SocketAddress {
    int family = 0;
    std::uint32_t length = 0;
    alignas(std::max_align_t) std::array<std::byte, 128> bytes = {};
};

enum class SocketState {
    Moved,     // count bytes, at least one
    Closed,    // the peer takes or gives no more
    TimedOut,  // nothing happened until the deadline
    Failed,
};

struct SocketTransfer {
    SocketState state = SocketState::Failed;
    std::int32_t count = 0;
};

struct OpenedSocket {
    SocketHandle handle = kNoSocket;
    bool isProtocolKnown = true;
};

// Whether this module may use the network.
bool StartNetwork();
// Of this machine; empty on failure.
std::string OwnHostName();

enum class NameKind { Numeric, Any };

// In the order in which they are to be tried; none where the name is not known. Only the kind Any
// asks other machines, for as long as it takes.
std::vector<SocketAddress> ResolveName(const std::string& host, int port, NameKind kind);

OpenedSocket OpenSocket(const SocketAddress& address);
// 0, or the system's error number.
int ConnectSocket(SocketHandle socket, const SocketAddress& address, Deadline deadline);
void CloseSocket(SocketHandle socket);

// At least one byte, as many as are there. size is 1 or more.
SocketTransfer ReceiveSome(SocketHandle socket, void* buffer, std::int32_t size, Deadline deadline);
// Moved where a byte is there to be received.
SocketTransfer AwaitData(SocketHandle socket, Deadline deadline);
SocketTransfer SendSome(SocketHandle socket, const void* buffer, std::int32_t size,
                        Deadline deadline);
