// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/streams/http_reply.h"
#include "foundation/streams/tcp_client.h"

// The body of a reply to one HTTP/1.0 request.
//
//     MHTTPStream stream;
//     stream.Open({.host = "example.org", .path = "/list.php", .redirects = 3});
//     if (stream.GetStatus() == 200) ...   // stream.Read(...)
//
// Units    bytes
// Threads  one at a time
// Errors   those of MTCPClient and HttpReply. Where Open raises, the stream is closed

class MHTTPStream : public MTCPClient {
public:
    struct Request {
        MString host = {};
        int port = 80;
        MString path = "/";         // with its query
        std::string formData = {};  // encoded by the caller; not empty: posted
        std::vector<std::pair<MString, MString>> headers = {};  // names and values
        int redirects = 0;  // how many are followed; the next one is a reply like any other
        std::int64_t bodyLimit = std::int64_t{64} << 20;
    };

    MHTTPStream() : wire(*this) {}

    // Sends the request and reads the header of the reply, which may take the timeout together,
    // besides the connecting. A redirect repeats the request, form data included, where the reply
    // sends it; one to a scheme other than "http" is not followed. Line breaks and other control
    // characters in headers are sent as blanks.
    void Open(const Request& request);

    int GetStatus() const { return reply.GetStatus(); }
    // Names in any case. Raises "Requested HTTP header not found." with code 513.
    const MString& GetHeader(const MString& name) const { return reply.GetHeader(name); }

    // Only Open sends.
    void Write(const void*, std::int32_t) override { RaiseUnsupportedService("write to stream"); }
    // Where the peer ends before the announced length, or is silent for too long: what has come,
    // and with the next call "No more data in source stream.".
    std::int32_t Read(void* buffer, std::int32_t size) override;
    bool IsEnd() override;
    std::int64_t GetPosition() override { return reply.GetBodyPosition(); }
    // Not supported where the server does not tell.
    std::int64_t GetSize() override;

private:
    // The bytes of the connection itself, below the body.
    class Wire : public MStream {
    public:
        explicit Wire(MHTTPStream& client) : client(client) {}
        std::int32_t Read(void* buffer, std::int32_t size) override;
        bool IsEnd() override;

    private:
        MHTTPStream& client;
    };

    void OpenAndFollow(Request request);
    void Perform(const Request& request);

    Wire wire;
    HttpReply reply;
};
