// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/tcp_client.h"

#include <limits>
#include <string>
#include <system_error>
#include <vector>

#include "foundation/streams/bounded_call.h"
#include "foundation/text/exception.h"
#include "foundation/text/string_formatter.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// A number needs no look-up and no thread.
std::vector<SocketAddress> ResolveInTime(const std::string& host, int port, milliseconds timeout) {
    std::vector<SocketAddress> numeric = ResolveName(host, port, NameKind::Numeric);
    if (!numeric.empty()) return numeric;
    auto found = ResultInTime([=] { return ResolveName(host, port, NameKind::Any); }, timeout);
    return found ? std::move(*found) : std::vector<SocketAddress>();
}

struct Connection {
    OpenedSocket socket;
    int error = 0;  // of the last socket that could not connect; 0 where there was none
};

// To the first address that answers; each has an equal share of the time that is left.
Connection ConnectToAny(const std::vector<SocketAddress>& addresses, Deadline end) {
    Connection result;
    auto untried = static_cast<int>(addresses.size());
    for (const SocketAddress& address : addresses) {
        const auto share = (end - Clock::now()) / untried--;
        const OpenedSocket opened = OpenSocket(address);
        result.socket.isProtocolKnown = opened.isProtocolKnown;
        if (opened.handle == kNoSocket) continue;
        const int error = ConnectSocket(opened.handle, address, Clock::now() + share);
        if (error == 0) return {opened};
        CloseSocket(opened.handle);
        result.error = error;
    }
    return result;
}

[[noreturn]] void RaiseNotConnected(const MString& host, int port, int error) {
    throw MException(
        MStringFormatter("Could not connect to a TCP server (host {0}, port {1}, code {2}).")
            << host << port << error,
        512);
}

}  // namespace

void MTCPClient::Connect(const MString& host, int port) {
    Close();
    // The system's look-up would drop the upper bits.
    if (port < 1 || port > std::numeric_limits<std::uint16_t>::max())
        RaiseNotConnected(host, port, static_cast<int>(std::errc::invalid_argument));
    const auto addresses = ResolveInTime(host.ToUtf8(), port, GetTimeout());
    if (addresses.empty())
        throw MException(MStringFormatter("Could not resolve network name \"{0}\".") << host, 512);
    const Connection connection = ConnectToAny(addresses, Clock::now() + GetTimeout());
    if (connection.error != 0) RaiseNotConnected(host, port, connection.error);
    if (!connection.socket.isProtocolKnown)
        throw MException("Could not retrieve TCP protocol info.", 512);
    if (connection.socket.handle == kNoSocket)
        throw MException("Could not create TCP socket.", 512);
    Attach(connection.socket.handle);
    this->host = host;
    this->port = port;
}
