// SPDX-License-Identifier: GPL-3.0-or-later
// Sockets against a peer in this process, HTTP against a server in another.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <list>
#include <memory>
#include <thread>

#include "foundation/streams/bounded_call.h"
#include "foundation/streams/http_stream.h"
#include "foundation/streams/stream_support.h"

namespace fs = std::filesystem;

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kShort = 300;    // milliseconds of patience where the peer is silent
constexpr milliseconds kPatience(2000);  // a busy machine needs some; a hang would be longer

using Behaviour = std::function<void(int)>;

// A listening socket, and peers that do what they are told, one after the other.
class Peer {
public:
    explicit Peer(const std::vector<Behaviour>& behaviours = {}, int backlog = 8) {
        sockaddr_in address = {};
        socklen_t length = sizeof address;
        listen(listener, backlog);
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(address.sin_port);
        thread = std::thread([this, behaviours] {
            for (const Behaviour& behaviour : behaviours) {
                const int connection = accept(listener, nullptr, nullptr);
                if (connection < 0) return;
                behaviour(connection);
                close(connection);
            }
        });
    }
    ~Peer() {
        shutdown(listener, SHUT_RDWR);  // ends a wait for somebody
        thread.join();
        close(listener);
    }

    int port = 0;

private:
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::thread thread;
};

void Say(int connection, const std::string& text) {
    send(connection, text.data(), text.size(), MSG_NOSIGNAL);
}

void Trickle(int connection) {
    while (send(connection, "x", 1, MSG_NOSIGNAL) == 1)
        std::this_thread::sleep_for(milliseconds(20));
}

void DoNothing(int) {}

// Until the other side closes.
void AwaitEnd(int connection) {
    char bytes[4096];
    while (recv(connection, bytes, sizeof bytes, 0) > 0) {
    }
}

// An impatient one.
struct Client : MTCPClient {
    explicit Client(int port, const char* host = "localhost") {
        SetTimeout(kShort), Connect(host, port);
    }
};

MHTTPStream::Request RequestFor(int port, const char* path = "/", int redirects = 0) {
    return {
        .host = "127.0.0.1", .port = port, .path = path, .redirects = redirects, .bodyLimit = 20};
}

// "STATUS BODY", or what was raised, behind what was read before where anything was.
std::string Result(const MHTTPStream::Request& request, std::uint32_t timeout = 10000) {
    MHTTPStream stream;
    stream.SetTimeout(timeout);
    std::string result;
    const std::string error = Raised([&] {
        stream.Open(request);
        result = std::to_string(stream.GetStatus()) + ' ';
        while (!stream.IsEnd()) result += ReadSome(stream, 1);
    });
    EXPECT_TRUE(!result.empty() || !stream.IsOpen());
    return result + error;
}

// A server that says this, does the rest and closes.
Behaviour Replying(const std::string& reply, const Behaviour& rest = DoNothing,
                   std::string* request = nullptr) {
    return [=](int connection) {
        char bytes[4096];
        const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
        if (request != nullptr) request->assign(bytes, static_cast<std::size_t>(count));
        Say(connection, reply);
        rest(connection);
    };
}

std::string ResultOf(const std::string& reply, const Behaviour& rest = DoNothing) {
    const std::vector<Behaviour> thrice(3, Replying(reply, rest));
    return Result(RequestFor(Peer(thrice).port, "/", 2), 3 * kShort);
}

const std::string kNoHeader =
    "513 MHTTPStream reading HTTP reply header. Invalid HTTP reply header.";
const std::string kNoMore = "256 No more data in source stream.";

thread_local bool socketsAreRefused = false;

}  // namespace

// Stands before the system's: a limit on descriptors would fail the sanitizers' checks as well.
extern "C" int socket(int domain, int type, int protocol) noexcept {
    if (!socketsAreRefused) return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
    errno = EMFILE;
    return -1;
}

TEST(Socket, ReadsUntilThePeerClosesOrIsSilentOrTrickles) {
    Peer answering({[](int connection) {
        char bytes[5];
        recv(connection, bytes, 5, MSG_WAITALL);
        Say(connection, std::string(bytes, 5));
        std::this_thread::sleep_for(milliseconds(20));
        Say(connection, " again");
    }});
    Peer silent({[](int connection) { Say(connection, "abc"), AwaitEnd(connection); }});
    Peer trickling({Trickle});
    Client client(answering.port), impatient(silent.port), slow(trickling.port);
    WriteAll(client, "hello");
    EXPECT_EQ(ReadSome(client, 0) + ReadSome(client, 7), "hello a");
    EXPECT_FALSE(client.IsEnd());
    EXPECT_EQ(ReadSome(client, 100), "gain");
    EXPECT_TRUE(client.IsEnd());
    const auto start = Clock::now();
    EXPECT_EQ(ReadSome(impatient, 10), "abc");
    EXPECT_TRUE(impatient.IsEnd());
    EXPECT_LT(ReadSome(slow, 200).size(), 200u);
    EXPECT_GE(Clock::now() - start, milliseconds(3 * kShort));
    EXPECT_LT(Clock::now() - start, 3 * milliseconds(kShort) + kPatience);
}

TEST(Socket, WritingTellsHowItFailed) {
    {
        Peer lazy({[](int connection) {
            std::this_thread::sleep_for(milliseconds(4 * kShort)), AwaitEnd(connection);
        }});
        Client client(lazy.port);
        EXPECT_EQ(Raised([&] { WriteAll(client, std::string(32 << 20, 'x')); }),
                  "512 Not all data have been sent.");
    }
    Peer gone({[](int) {}});
    Client client(gone.port);
    const auto writeOn = [&] {
        for (int i = 0; i < 100; ++i, std::this_thread::sleep_for(milliseconds(10)))
            WriteAll(client, "x");
    };
    EXPECT_EQ(Raised(writeOn), "512 All data were not sent before target disconnected.");
    struct NoSocket : MSocketStream {
        NoSocket() { Attach(open("/dev/null", O_RDWR)); }
    } file;
    EXPECT_EQ(Raised([&] { WriteAll(file, "x"); }), "512 Could not write to socket stream.");
}

TEST(TCPClient, TellsWhyItCouldNotConnect) {
    EXPECT_FALSE(MNetEntity::GetHostName().IsEmpty());
    const auto refused = [](int port, int code) {
        return "512 Could not connect to a TCP server (host localhost, port " +
               std::to_string(port) + ", code " + std::to_string(code) + ").";
    };
    const int closed = Peer().port;
    socketsAreRefused = true;
    EXPECT_EQ(Raised([&] { Client(closed, "127.0.0.1"); }), "512 Could not create TCP socket.");
    socketsAreRefused = false;
    Peer full({}, 0);  // its queue takes one or two, further ones get no answer
    std::list<Client> waiting;
    const auto start = Clock::now();
    ExpectRaised({{"512 Could not resolve network name \"no.such.host.invalid\".",
                   [] { Client(80, "no.such.host.invalid"); }},
                  {refused(closed, ECONNREFUSED), [&] { waiting.emplace_back(closed); }},
                  {refused(closed + 65536, EINVAL), [&] { waiting.emplace_back(closed + 65536); }},
                  {refused(full.port, ETIMEDOUT), [&] {
                       for (;;) waiting.emplace_back(full.port);
                   }}});
    EXPECT_LT(Clock::now() - start, milliseconds(3 * kShort) + kPatience);
}

TEST(BoundedCall, GivesUpOnWorkThatTakesTooLong) {
    const auto start = Clock::now();
    const auto slow = [] { return std::this_thread::sleep_for(milliseconds(600)), 1; };
    EXPECT_FALSE(ResultInTime(slow, milliseconds(20)) || Clock::now() - start > milliseconds(500));
    EXPECT_EQ(ResultInTime(slow, milliseconds(600) + kPatience), 1);
}

TEST(HTTPStream, SendsTheRequestAndGivesTheReply) {
    std::string get, post;
    const std::string reply = "HTTP/1.0 200 OK\nX-Padded:  middle of it \t\r\n";
    auto peer = std::make_unique<Peer>(
        std::vector{Replying(reply + "Content-LENGTH: 5\n\nhello", DoNothing, &get),
                    Replying(reply + "\n", DoNothing, &post)});
    MHTTPStream stream;
    MHTTPStream::Request request = RequestFor(peer->port, "");
    request.formData = "a=1&b=2";
    MHTTPStream::Request getting = RequestFor(peer->port);
    getting.path = u"/a b?\u00fc=%20";
    getting.headers = {{"X-One", "1\r\nX-Bad: 2"}, {"X-Two", "two"}};
    stream.Open(getting);
    EXPECT_EQ(stream.GetHeader("x-padded"), "middle of it");
    EXPECT_EQ(ReadAll(stream, 2), "hello");
    EXPECT_TRUE(stream.IsEnd() && stream.GetPosition() == 5 && stream.GetSize() == 5);
    EXPECT_EQ(Result(request), "200 ");
    peer.reset();  // the requests are complete then
    const std::string common =
        "Host: 127.0.0.1:" + std::to_string(request.port) + "\nConnection: Close\n";
    const std::string form = "Content-Type: application/x-www-form-urlencoded\nContent-Length: 7\n";
    EXPECT_EQ(get,
              "GET /a%20b?%C3%BC=%20 HTTP/1.0\n" + common + "X-One: 1  X-Bad: 2\nX-Two: two\n\n");
    EXPECT_EQ(post, "POST / HTTP/1.0\n" + form + common + "\na=1&b=2");
}

TEST(HTTPStream, ReadsFromPythonsServer) {
    const TestFolder folder;
    folder.SetContent("plain", "hello");
    fs::create_directory(folder.path / "dir");
    folder.SetContent("dir/index.html", "index");
    const std::string command =
        "cd " + folder.path.string() +
        " && exec '" QUILLOREA_PYTHON
        "' -uc 'import http.server; "
        "s = http.server.HTTPServer((\"127.0.0.1\", 0), http.server.SimpleHTTPRequestHandler); "
        "s.timeout = 10; print(s.server_port); "
        "[s.handle_request() for i in range(4)]' 2>/dev/null";
    std::FILE* const server = popen(command.c_str(), "r");
    int port = 0;
    EXPECT_EQ(std::fscanf(server, "%d", &port), 1);
    EXPECT_EQ(Result(RequestFor(port, "/plain")), "200 hello");
    EXPECT_EQ(Result(RequestFor(port, "/dir", 1)), "200 index");
    EXPECT_EQ(Result(RequestFor(port, "/dir")), "301 ");
    pclose(server);
}

TEST(HTTPStream, FollowsRedirectsToAddressesAndPaths) {
    std::string request;
    std::string host = "localhost:";
    {  // the second has done with the request once it has gone
        const Peer second({Replying("HTTP/1.0 301\nLocation: ../c\n\n"),
                           Replying("HTTP/1.0 200\n\nend", DoNothing, &request)});
        host += std::to_string(second.port);
        const Peer first(
            {Replying("HTTP/1.0 302 Found\r\nLocation: HTTP://" + host + "/a/b/d#e\r\n\r\n")});
        EXPECT_EQ(Result(RequestFor(first.port, "/", 2)), "200 end");
    }
    EXPECT_THAT(request, testing::StartsWith("GET /a/c HTTP/1.0\nHost: " + host + "\n"));
}

TEST(HTTPStream, BrokenRepliesAreTold) {
    CheckCases(QUILLOREA_STREAM_CASES "/http_cases.txt",
               [](const std::string& reply) { return ResultOf(reply); });
}

TEST(HTTPStream, LinesAndHeadersAreBounded) {
    const std::string ok = "HTTP/1.0 200 OK\r\n", text(16376, 'z');
    const std::string line = "A: " + text.substr(0, 8188) + '\n';  // 8 KiB
    const std::string lines = line + line + line + line + line + line + line;
    EXPECT_EQ(ResultOf(ok + "A: 123" + text + "\r\n\r\nbody"), "200 body");
    EXPECT_EQ(ResultOf(ok + lines + "\nbody"), "200 body");
    for (const std::string& header :
         {"A: 1234" + text + "\n", lines + line, "A:" + std::string(65536, '\r') + '\n'})
        EXPECT_EQ(ResultOf(ok + header + "\n"), kNoHeader) << header.size();
}

TEST(HTTPStream, GivesUpASilentServer) {
    const std::string ok = "HTTP/1.0 200 OK\r\n";
    const auto start = Clock::now();
    EXPECT_EQ(ResultOf("", AwaitEnd), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "A: ", Trickle), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_EQ(ResultOf(ok + "Content-Length: 10\r\n\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_LT(Clock::now() - start, milliseconds(15 * kShort) + kPatience);
}
