// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/socket_stream.h"

// A connection to a server.
//
//     MTCPClient client;
//     client.Connect("example.org", 80);
//
// Units    port 1 .. 65535
// Threads  one at a time
// Errors   MException with code 512 "Could not resolve network name \"{0}\".", "Could not retrieve
//          TCP protocol info.", "Could not create TCP socket.", "Could not connect to a TCP server
//          (host {0}, port {1}, code {2})." with the system's error number; the stream is closed
//          then

class MTCPClient : public MSocketStream {
public:
    // Closes what was open. Looking up the name takes the timeout at most, and connecting to all of
    // its addresses together once more.
    void Connect(const MString& host, int port);

    const MString& GetHost() const { return host; }
    int GetPort() const { return port; }

private:
    MString host;
    int port = 0;
};
