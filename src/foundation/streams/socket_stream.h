// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <cstdint>

#include "foundation/streams/mstream.h"
#include "foundation/streams/net_calls.h"

// The system's network, set up once for the module by the first object that needs it.
//
// Threads  any
// Errors   MException with code 512 "WinSock could not be initializated.", "Could not resolve host
//          network name."

class MNetEntity {
public:
    MNetEntity();
    // Of this machine.
    static MString GetHostName();
};

// Bytes to and from another machine. What waits for the peer waits for a limited time.
//
// Units    bytes; times in milliseconds
// Threads  one at a time
// Errors   MException with code 512 "The network socket stream has not been initialized.", "Could
//          not write to socket stream.", "All data were not sent before target disconnected.",
//          "Not all data have been sent."

class MSocketStream : public MStream, public MNetEntity {
public:
    static constexpr std::uint32_t kDefaultTimeout = 15000;

    MSocketStream() = default;
    MSocketStream(const MSocketStream&) = delete;
    MSocketStream& operator=(const MSocketStream&) = delete;
    ~MSocketStream() override { MSocketStream::Close(); }

    // How long the peer may be silent in one operation. Whoever is slower than a byte a millisecond
    // counts as silent too, so that trickling does not hold anybody for ever.
    void SetTimeout(std::uint32_t milliseconds) { timeout = milliseconds; }
    // May be repeated.
    virtual void Close();

    // Raises "Not all data have been sent." where the peer takes nothing for too long.
    void Write(const void* buffer, std::int32_t size) override;
    // Less than size where the peer closes or is silent for too long.
    std::int32_t Read(void* buffer, std::int32_t size) override;
    // Nothing is ever held back.
    void Flush() override { RequireSocket(); }
    // Waits for a byte or the peer's end; true as well where it is silent for too long.
    bool IsEnd() override;
    bool IsOpen() override { return handle != kNoSocket; }

protected:
    std::chrono::milliseconds GetTimeout() const { return std::chrono::milliseconds(timeout); }
    void Attach(SocketHandle socket) { handle = socket; }
    // Ends every operation at that time, in whatever state; kNoLimit takes it back.
    static constexpr Deadline kNoLimit = Deadline::max();
    void SetTimeLimit(Deadline end) { limit = end; }
    // Whether the last Read or IsEnd gave up waiting.
    bool HasTimedOut() const { return timedOut; }

private:
    void RequireSocket() const;
    Deadline After(std::chrono::milliseconds duration) const;
    // When a peer that moves a byte now and then has had its time for so many.
    Deadline Slowest(std::int32_t size) const;

    SocketHandle handle = kNoSocket;
    std::uint32_t timeout = kDefaultTimeout;
    Deadline limit = kNoLimit;
    bool timedOut = false;
};
