// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>

#include "foundation/streams/net_calls.h"

namespace {

using std::chrono::milliseconds;

// Rounded up, so that a wait is never shorter than told.
int MillisecondsUntil(Deadline deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    constexpr milliseconds kLongest(std::numeric_limits<int>::max());
    return static_cast<int>(std::clamp(left, milliseconds(0), kLongest).count());
}

// True once the socket is ready for the events or broken; false at the deadline.
bool AwaitSocket(int socket, short events, Deadline deadline) {
    for (;;) {
        pollfd item = {socket, events, 0};
        const int left = MillisecondsUntil(deadline);
        const int ready = poll(&item, 1, left);
        if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
        if (ready == 0 && left < std::numeric_limits<int>::max()) return false;
    }
}

bool IsGone(int error) {
    return error == EPIPE || error == ECONNRESET || error == ECONNABORTED || error == ENOTCONN;
}

// Repeats a call that moves bytes and does not wait until one of them moves some.
template <typename Call>
SocketTransfer Transfer(int socket, short events, Deadline deadline, Call call) {
    for (;;) {
        const ssize_t count = call();
        if (count > 0) return {SocketState::Moved, static_cast<std::int32_t>(count)};
        if (count == 0) return {SocketState::Closed};
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return {IsGone(errno) ? SocketState::Closed : SocketState::Failed};
        if (!AwaitSocket(socket, events, deadline)) return {SocketState::TimedOut};
    }
}

int Descriptor(SocketHandle socket) { return static_cast<int>(socket); }

void SetBlocking(int socket, bool blocking) {
    const int flags = fcntl(socket, F_GETFL);
    fcntl(socket, F_SETFL, blocking ? flags & ~O_NONBLOCK : flags | O_NONBLOCK);
}

int AwaitConnection(int socket, Deadline deadline) {
    if (!AwaitSocket(socket, POLLOUT, deadline)) return ETIMEDOUT;
    int error = 0;
    socklen_t length = sizeof error;
    return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? error : errno;
}

}  // namespace

bool StartNetwork() { return true; }

std::string OwnHostName() {
    char name[256] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : std::string();
}

std::vector<SocketAddress> ResolveName(const std::string& host, int port, NameKind kind) {
    addrinfo wanted = {};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICSERV | (kind == NameKind::Numeric ? AI_NUMERICHOST : 0);
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0) return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, freeaddrinfo);
    std::vector<SocketAddress> addresses;
    for (const addrinfo* item = found; item != nullptr; item = item->ai_next) {
        SocketAddress address{item->ai_family, item->ai_addrlen};
        if (item->ai_addrlen > address.bytes.size()) continue;
        std::memcpy(address.bytes.data(), item->ai_addr, item->ai_addrlen);
        addresses.push_back(address);
    }
    return addresses;
}

OpenedSocket OpenSocket(const SocketAddress& address) {
    const int opened = socket(address.family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isKnown = opened >= 0 || (errno != EPROTONOSUPPORT && errno != EAFNOSUPPORT);
    return {opened < 0 ? kNoSocket : opened, isKnown};
}

// Does not block while it connects: a connect has no time limit of its own.
int ConnectSocket(SocketHandle handle, const SocketAddress& address, Deadline deadline) {
    const int socket = Descriptor(handle);
    SetBlocking(socket, false);
    const auto* const target = reinterpret_cast<const sockaddr*>(address.bytes.data());
    int error = connect(socket, target, address.length) == 0 ? 0 : errno;
    if (error == EINPROGRESS || error == EINTR) error = AwaitConnection(socket, deadline);
    SetBlocking(socket, true);
    return error;
}

void CloseSocket(SocketHandle socket) { close(Descriptor(socket)); }

SocketTransfer ReceiveSome(SocketHandle handle, void* buffer, std::int32_t size,
                           Deadline deadline) {
    const int socket = Descriptor(handle);
    return Transfer(socket, POLLIN, deadline, [=] {
        return recv(socket, buffer, static_cast<std::size_t>(size), MSG_DONTWAIT);
    });
}

SocketTransfer AwaitData(SocketHandle handle, Deadline deadline) {
    const int socket = Descriptor(handle);
    return Transfer(socket, POLLIN, deadline, [=] {
        char byte = 0;
        return recv(socket, &byte, 1, MSG_DONTWAIT | MSG_PEEK);
    });
}

SocketTransfer SendSome(SocketHandle handle, const void* buffer, std::int32_t size,
                        Deadline deadline) {
    const int socket = Descriptor(handle);
    return Transfer(socket, POLLOUT, deadline, [=] {
        return send(socket, buffer, static_cast<std::size_t>(size), MSG_DONTWAIT | MSG_NOSIGNAL);
    });
}
