// SPDX-License-Identifier: GPL-3.0-or-later
// Sockets against a peer in this process, HTTP against a server in another.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "foundation/streams/bounded_call.h"
#include "foundation/streams/http_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/text/exception.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kShort = 300;    // milliseconds of patience where the peer is silent
constexpr milliseconds kPatience(2000);  // a busy machine needs some; a hang would be longer

// A listening socket on the loopback, and one peer that does what it is told.
class Peer {
public:
    explicit Peer(std::function<void(int)> behaviour = {}, int backlog = 8) {
        listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        bind(listener, plain, length);
        listen(listener, backlog);
        getsockname(listener, plain, &length);
        port = ntohs(address.sin_port);
        if (behaviour) thread = std::thread([this, behaviour] { Serve(behaviour); });
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        if (thread.joinable()) thread.join();
        close(listener);
    }

    int port = 0;

private:
    void Serve(const std::function<void(int)>& behaviour) const {
        const int connection = accept(listener, nullptr, nullptr);
        behaviour(connection);
        close(connection);
    }

    int listener = -1;
    std::thread thread;
};

void Say(int connection, const std::string& text) {
    EXPECT_EQ(send(connection, text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
}

// Until the other side closes.
void AwaitEnd(int connection) {
    char bytes[4096];
    while (recv(connection, bytes, sizeof bytes, 0) > 0) {
    }
}

// An impatient client of that peer.
class Client : public MTCPClient {
public:
    explicit Client(int port) {
        SetTimeout(kShort);
        Connect("localhost", port);
    }
    std::string ReadUpTo(std::int32_t size) {
        std::string bytes(static_cast<std::size_t>(size), '\0');
        bytes.resize(static_cast<std::size_t>(Read(bytes.data(), size)));
        return bytes;
    }
};

class HTTPTest : public testing::Test {
protected:
    HTTPTest() {
        int toServer[2], toTest[2];
        if (pipe2(toServer, O_CLOEXEC) != 0 || pipe2(toTest, O_CLOEXEC) != 0) return;
        if (fork() == 0) {
            dup2(toServer[0], STDIN_FILENO);
            dup2(toTest[1], STDOUT_FILENO);
            execl(QUILLOREA_PYTHON, "python3", QUILLOREA_HTTP_SERVER, nullptr);
            _exit(127);
        }
        close(toServer[0]);
        close(toTest[1]);
        input = toServer[1];
        char line[16] = {};
        output = toTest[0];
        port = read(output, line, sizeof line - 1) > 0 ? std::atoi(line) : 0;
    }
    ~HTTPTest() override {
        close(input);
        close(output);
    }

    MHTTPStream::Request RequestFor(const char* path, int redirects = 0) const {
        MHTTPStream::Request request;
        request.host = "127.0.0.1";
        request.port = port;
        request.path = path;
        request.redirects = redirects;
        request.bodyLimit = 1000;
        return request;
    }
    // "STATUS BODY", or what was raised, behind what was read before where anything was.
    std::string Result(const MHTTPStream::Request& request) const {
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
    std::string Result(const char* path, int redirects = 0) const {
        return Result(RequestFor(path, redirects));
    }
    std::string Told(const std::string& path) const {
        return "200 GET " + path + " HTTP/1.0|Host: 127.0.0.1:" + std::to_string(port) +
               "|Connection: Close|";
    }

    int port = 0;
    std::uint32_t timeout = 10000;  // milliseconds; where nobody is silent, time enough
    int input = -1;                 // the server ends with it
    int output = -1;
};

const std::string kNoHeader = "513 Invalid HTTP reply header.";
const std::string kNoLine = "513 Invalid HTTP reply header line.";
const std::string kNoBody = "513 Invalid HTTP reply body.";
const std::string kNoMore = "256 No more data in source stream.";

}  // namespace

TEST(Socket, IsRefusedBeforeItIsConnected) {
    MTCPClient client;
    char byte = 0;
    const std::function<void()> kUses[] = {
        [&] { client.Read(&byte, 0); }, [&] { client.Write(&byte, 1); }, [&] { client.IsEnd(); }};
    for (const auto& use : kUses)
        EXPECT_EQ(Raised(use), "512 The network socket stream has not been initialized.");
    EXPECT_FALSE(MNetEntity::GetHostName().IsEmpty());
}

TEST(Socket, ReadsWhatComesUntilThePeerCloses) {
    Peer peer([](int connection) {
        char bytes[5];
        recv(connection, bytes, 5, MSG_WAITALL);
        Say(connection, std::string(bytes, 5));
        std::this_thread::sleep_for(milliseconds(20));
        Say(connection, " again");
    });
    Client client(peer.port);
    WriteAll(client, "hello");
    client.Flush();
    EXPECT_EQ(client.ReadUpTo(0), "");
    EXPECT_EQ(client.ReadUpTo(7), "hello a");
    EXPECT_FALSE(client.IsEnd());
    EXPECT_EQ(client.ReadUpTo(100), "gain");
    EXPECT_TRUE(client.IsEnd());
}

TEST(Socket, ASilentOrTricklingPeerHoldsNobody) {
    Peer silent([](int connection) {
        Say(connection, "abc");
        AwaitEnd(connection);
    });
    Peer trickling([](int connection) {
        while (send(connection, "x", 1, MSG_NOSIGNAL) == 1)
            std::this_thread::sleep_for(milliseconds(20));
    });
    const auto start = Clock::now();
    {
        Client client(silent.port);
        EXPECT_EQ(client.ReadUpTo(10), "abc");
        EXPECT_TRUE(client.IsEnd());
        Client slow(trickling.port);
        EXPECT_LT(slow.ReadUpTo(200).size(), 200u);
    }
    EXPECT_GE(Clock::now() - start, milliseconds(3 * kShort));
    EXPECT_LT(Clock::now() - start, 3 * milliseconds(kShort) + kPatience);
}

TEST(Socket, WritingTellsHowItFailed) {
    {
        Peer lazy([](int connection) {
            std::this_thread::sleep_for(milliseconds(4 * kShort));
            AwaitEnd(connection);
        });
        Client client(lazy.port);
        EXPECT_EQ(Raised([&] { WriteAll(client, std::string(32 << 20, 'x')); }),
                  "512 Not all data have been sent.");
    }
    Peer gone([](int) {});
    Client client(gone.port);
    EXPECT_EQ(Raised([&] {
                  for (int i = 0; i < 100; ++i) {
                      WriteAll(client, "x");
                      std::this_thread::sleep_for(milliseconds(10));
                  }
              }),
              "512 All data were not sent before target disconnected.");
    class NoSocket : public MSocketStream {
    public:
        NoSocket() { Attach(open("/dev/null", O_RDWR)); }
    } file;
    EXPECT_EQ(Raised([&] { WriteAll(file, "x"); }), "512 Could not write to socket stream.");
}

TEST(TCPClient, TellsWhyItCouldNotConnect) {
    const auto error = [](const char* host, int port) {
        return Raised([&] {
            MTCPClient client;
            client.SetTimeout(kShort);
            client.Connect(host, port);
        });
    };
    const auto refused = [](int port, int code) {
        return "512 Could not connect to a TCP server (host 127.0.0.1, port " +
               std::to_string(port) + ", code " + std::to_string(code) + ").";
    };
    EXPECT_EQ(error("no.such.host.invalid", 80),
              "512 Could not resolve network name \"no.such.host.invalid\".");
    int closed = 0;
    { closed = Peer().port; }
    EXPECT_EQ(error("127.0.0.1", closed), refused(closed, ECONNREFUSED));

    Peer full({}, 0);  // its queue takes one or two, further ones get no answer
    std::vector<MTCPClient> waiting(3);
    const auto start = Clock::now();
    std::string last = "nothing";
    for (MTCPClient& client : waiting) {
        client.SetTimeout(kShort);
        if (last == "nothing") last = Raised([&] { client.Connect("127.0.0.1", full.port); });
    }
    EXPECT_EQ(last, refused(full.port, ETIMEDOUT));
    EXPECT_LT(Clock::now() - start, milliseconds(kShort) + kPatience);

    EXPECT_TRUE(HoldsInChild([&] {
        const rlimit none = {3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        return error("127.0.0.1", closed) == "512 Could not create TCP socket.";
    }));
}

TEST(BoundedCall, GivesUpOnWorkThatTakesTooLong) {
    const auto start = Clock::now();
    const auto slow = [] {
        std::this_thread::sleep_for(milliseconds(600));
        return 1;
    };
    EXPECT_FALSE(ResultInTime(slow, milliseconds(20)));
    EXPECT_LT(Clock::now() - start, milliseconds(600));
    EXPECT_EQ(ResultInTime(slow, milliseconds(600) + kPatience), 1);
    EXPECT_EQ(
        Raised([] { ResultInTime([]() -> int { RaiseUnsupportedService("work"); }, kPatience); }),
        "1 Service \"work\" is not implemented.");
}

TEST_F(HTTPTest, TheServerGetsTheRequestAndTheClientTheReply) {
    MHTTPStream stream;
    MHTTPStream::Request request = RequestFor("/a b?\xc3\xbc=%20");
    request.path = MString::FromUtf8("/a b?\xc3\xbc=%20");
    request.headers = {{"X-One", "1\r\nX-Bad: 2"}, {"X-Two", "two"}};
    stream.Open(request);
    EXPECT_EQ(stream.GetHeader("content-LENGTH"), MString::FromInt(stream.GetSize()));
    EXPECT_EQ(stream.GetHeader("x-padded"), "middle of it");
    EXPECT_EQ(Raised([&] { stream.GetHeader("X-None"); }), "513 Requested HTTP header not found.");
    EXPECT_EQ("200 " + ReadAll(stream, 7),
              Told("/a%20b?%C3%BC=%20") + "X-One: 1  X-Bad: 2|X-Two: two|");
    EXPECT_TRUE(stream.IsEnd() && stream.GetPosition() == stream.GetSize());
    EXPECT_EQ(Raised([&] { WriteAll(stream, "x"); }),
              "1 Service \"write to stream\" is not implemented.");

    request = RequestFor("");
    request.host = "localhost";
    request.formData = "a=1&b=2";
    EXPECT_EQ(Result(request),
              "200 POST / HTTP/1.0|Content-Type: application/x-www-form-urlencoded|Content-Length: "
              "7|Host: localhost:" +
                  std::to_string(port) + "|Connection: Close|a=1&b=2");
}

TEST_F(HTTPTest, RedirectsAreFollowedWithinTheBudget) {
    const std::string other = "/to?http://LOCALHOST:" + std::to_string(port) + "/dir/c%23part";
    const struct {
        std::string path;
        int budget;
        std::string expected;
    } kCases[] = {
        {"/dir/to?/plain", 1, Told("/plain")},
        {"/dir/to?plain%3Fq", 1, Told("/dir/plain?q")},
        {"/dir/to?../plain", 1, Told("/plain")},
        {"/to?/to%3F/plain", 2, Told("/plain")},
        {"/to?/to%3F/plain", 1, "302 "},
        {"/to?/plain", 0, "302 "},
        {"/to?to%3Fto", 5, Told("/to")},
        {"/to?https://localhost/", 5, "302 "},
        {"/to?http://a%20b/", 5, kNoLine},
        {"/no-location", 1, "513 Requested HTTP header not found."},
        {"/no-location", 0, "302 "},
    };
    for (const auto& redirect : kCases)
        EXPECT_EQ(Result(RequestFor(redirect.path.c_str(), redirect.budget)), redirect.expected)
            << redirect.path << ' ' << redirect.budget;
    EXPECT_NE(Result(RequestFor(other.c_str(), 1)).find("GET /dir/c HTTP/1.0|Host: LOCALHOST:"),
              std::string::npos);
}

TEST_F(HTTPTest, BrokenRepliesAreToldAndBounded) {
    const std::pair<const char*, std::string> kCases[] = {
        {"/empty", kNoHeader},
        {"/no-status", kNoHeader},
        {"/other-protocol", kNoHeader},
        {"/bad-status", kNoHeader},
        {"/low-status", kNoHeader},
        {"/bare-status", "204 "},
        {"/no-colon", kNoLine},
        {"/no-name", kNoLine},
        {"/cut-header", kNoHeader},
        {"/negative-length", kNoLine},
        {"/huge-length", kNoLine},
        {"/cut-body", "200 half" + kNoMore},
        {"/long-body", kNoBody},
        {"/more-than-told", "200 all"},
        {"/untold", "200 " + std::string(1000, 'y')},
        {"/untold-long", "200 " + std::string(1000, 'y') + kNoBody},
        {"/line-fits", "200 body"},
        {"/long-line", kNoHeader},
        {"/header-fits", "200 body"},
        {"/long-header", kNoHeader},
    };
    for (const auto& [path, expected] : kCases) EXPECT_EQ(Result(path), expected) << path;
    try {
        MHTTPStream().Open(RequestFor("/no-colon"));
        FAIL();
    } catch (const MException& error) {
        EXPECT_EQ(error.context, "MHTTPStream invalid HTTP reply header line.");
    }
}

TEST_F(HTTPTest, ASilentServerIsGivenUp) {
    const std::pair<const char*, std::string> kCases[] = {
        {"/silent", kNoHeader},
        {"/silent-header", kNoHeader},
        {"/trickle", kNoLine},
        {"/silent-body", "200 some" + kNoMore},
        {"/silent-told-body", "200 some" + kNoMore},
    };
    timeout = 2 * kShort;
    for (const auto& [path, expected] : kCases) {
        const auto start = Clock::now();
        EXPECT_EQ(Result(path), expected) << path;
        EXPECT_LT(Clock::now() - start, kPatience) << path;
    }
}
