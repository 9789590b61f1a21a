// SPDX-License-Identifier: GPL-3.0-or-later
// Sockets against a peer in this process, HTTP against a server in another.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
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

std::string ReadSome(MStream& stream, std::int32_t size) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    bytes.resize(static_cast<std::size_t>(stream.Read(bytes.data(), size)));
    return bytes;
}

MHTTPStream::Request RequestFor(int port, const char* path = "/", int redirects = 0) {
    return {
        .host = "127.0.0.1", .port = port, .path = path, .redirects = redirects, .bodyLimit = 1000};
}

// "STATUS BODY", or what was raised, behind what was read before where anything was.
std::string Result(const MHTTPStream::Request& request, std::uint32_t timeout = 10000) {
    MHTTPStream stream;
    stream.SetTimeout(timeout);
    std::string result;
    const std::string error = Raised([&] {
        stream.Open(request);
        result = std::to_string(stream.GetStatus()) + ' ';
        char byte = 0;
        while (!stream.IsEnd() && stream.Read(&byte, 1) == 1) result += byte;
    });
    EXPECT_TRUE(!result.empty() || !stream.IsOpen());
    return error == "nothing" ? result : result + error;
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
    return Result(RequestFor(Peer({Replying(reply, rest)}).port), 3 * kShort);
}

const std::string kNoHeader =
    "513 MHTTPStream reading HTTP reply header. Invalid HTTP reply header.";
const std::string kNoLine =
    "513 MHTTPStream invalid HTTP reply header line. Invalid HTTP reply header line.";
const std::string kNoBody = "513 MHTTPStream reading HTTP reply body. Invalid HTTP reply body.";
const std::string kNoMore = "256 No more data in source stream.";

}  // namespace

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
    EXPECT_TRUE(HoldsInChild([&] {
        const rlimit none = {3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        return Raised([&] { Client(closed, "127.0.0.1"); }) == "512 Could not create TCP socket.";
    }));
    Peer full({}, 0);  // its queue takes one or two, further ones get no answer
    std::list<Client> waiting;
    MTCPClient fresh;
    const std::string unready = "512 The network socket stream has not been initialized.";
    const auto start = Clock::now();
    ExpectRaised({{unready, [&] { ReadSome(fresh, 0); }},
                  {unready, [&] { WriteAll(fresh, "x"); }},
                  {unready, [&] { fresh.IsEnd(); }},
                  {"512 Could not resolve network name \"no.such.host.invalid\".",
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
    MHTTPStream::Request request = RequestFor(peer->port);
    request.path = u"/a b?\u00fc=%20";
    request.headers = {{"X-One", "1\r\nX-Bad: 2"}, {"X-Two", "two"}};
    stream.Open(request);
    EXPECT_EQ(stream.GetHeader("x-padded"), "middle of it");
    EXPECT_EQ(Raised([&] { stream.GetHeader("X-None"); }), "513 Requested HTTP header not found.");
    EXPECT_EQ(ReadAll(stream, 2), "hello");
    EXPECT_TRUE(stream.IsEnd() && stream.GetPosition() == 5 && stream.GetSize() == 5);
    request = RequestFor(peer->port, "");
    request.formData = "a=1&b=2";
    EXPECT_EQ(Result(request), "200 ");
    peer.reset();
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
    int pipes[2];
    ASSERT_EQ(pipe2(pipes, O_CLOEXEC), 0);
    const pid_t server = fork();
    if (server == 0) {
        dup2(pipes[1], STDOUT_FILENO);
        dup2(pipes[1], STDERR_FILENO);
        execl(QUILLOREA_PYTHON, "python3", "-um", "http.server", "0", "-b", "127.0.0.1", "-d",
              folder.path.c_str(), nullptr);
        _exit(127);
    }
    int port = 0;
    EXPECT_EQ(std::fscanf(fdopen(pipes[0], "r"), "Serving HTTP on 127.0.0.1 port %d", &port), 1);
    EXPECT_EQ(Result(RequestFor(port, "/plain")), "200 hello");
    EXPECT_EQ(Result(RequestFor(port, "/dir", 1)), "200 index");
    EXPECT_EQ(Result(RequestFor(port, "/dir")), "301 ");
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
}

TEST(HTTPStream, FollowsRedirectsWithinTheBudget) {
    const auto found = [](const std::string& location) {
        return Replying("HTTP/1.0 302 Found\r\nLocation: " + location + "\r\n\r\n");
    };
    std::string request;
    const Behaviour last = Replying("HTTP/1.0 200\n\nend", DoNothing, &request);
    EXPECT_EQ(Result(RequestFor(Peer({found("../plain"), last}).port, "/a/b/to", 1)), "200 end");
    EXPECT_EQ(request.find("GET /a/plain HTTP/1.0\nHost: 127.0.0.1:"), 0u);
    const Peer end({Replying("HTTP/1.0 200\n\nother")});
    const std::string other = "HTTP://localhost:" + std::to_string(end.port) + "/a#b";
    const Peer loop({found("/a"), found("/a"), found("/a"), found("https://localhost"),
                     found("http://a b/"), Replying("HTTP/1.0 302\n\n"), found(other)});
    const std::string kResults[] = {"302 ", "302 ", kNoLine, "513 Requested HTTP header not found.",
                                    "200 other"};
    for (const std::string& expected : kResults)
        EXPECT_EQ(Result(RequestFor(loop.port, "/a", 2)), expected);
}

TEST(HTTPStream, BrokenRepliesAreToldAndBounded) {
    const std::string ok = "HTTP/1.0 200 OK\r\n", body(1000, 'y'), text(16376, 'z');
    const std::string line = "A: " + text.substr(0, 8188) + '\n';  // 8 KiB
    const std::string lines = line + line + line + line + line + line + line;
    for (const char* const bad : {"", "HTTP/1.0\r\n\r\n", "SSH-2.0-server 200\r\n\r\n",
                                  "HTTP/1.0 2x0 OK\r\n\r\n", "HTTP/1.0 99 OK\r\n\r\n"})
        EXPECT_EQ(ResultOf(bad), kNoHeader) << bad;
    for (const char* const bad : {"no colon", ": value", "Content-Length: -1",
                                  "Content-Length: ", "Content-Length: 99999999999999999999"})
        EXPECT_EQ(ResultOf(ok + bad + "\r\n\r\n"), kNoLine) << bad;
    const std::pair<std::string, std::string> kCases[] = {
        {"HTTP/1.1 204\n\n", "204 "},
        {ok + "Content-Length: 4\r\n", kNoHeader},
        {ok + "A: 1234" + text + "\n\n", kNoHeader},
        {ok + lines + line + "\n", kNoHeader},
        {ok + "A:" + std::string(65536, '\r') + "\n\n", kNoHeader},
        {ok + "Content-Length: 10\r\n\r\nhalf", "200 half" + kNoMore},
        {ok + "Content-Length: 1001\r\n\r\n", kNoBody},
        {ok + "CONTENT-LENGTH: 3\r\n\r\nall and more", "200 all"},
        {ok + "\r\n" + body, "200 " + body},
        {ok + "\r\n" + body + "y", "200 " + body + kNoBody},
        {ok + "A: 123" + text + "\r\n\r\nbody", "200 body"},
        {ok + lines + "\nbody", "200 body"}};
    for (const auto& [reply, expected] : kCases)
        EXPECT_EQ(ResultOf(reply), expected) << reply.substr(0, 100);
}

TEST(HTTPStream, GivesUpASilentServer) {
    const std::string ok = "HTTP/1.0 200 OK\r\n";
    const auto start = Clock::now();
    EXPECT_EQ(ResultOf("", AwaitEnd), kNoHeader);
    EXPECT_EQ(ResultOf(ok, AwaitEnd), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "A: ", Trickle), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_EQ(ResultOf(ok + "Content-Length: 10\r\n\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_LT(Clock::now() - start, milliseconds(15 * kShort) + kPatience);
}
