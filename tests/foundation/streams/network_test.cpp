// SPDX-License-Identifier: GPL-3.0-or-later
// Sockets against a peer in this process, HTTP against a server in another.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <list>
#include <thread>

#include "foundation/streams/bounded_call.h"
#include "foundation/streams/http_stream.h"
#include "foundation/streams/stream_support.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kShort = 300;    // milliseconds of patience where the peer is silent
constexpr milliseconds kPatience(2000);  // a busy machine needs some; a hang would be longer

// A listening socket, and one peer that does what it is told.
class Peer {
public:
    explicit Peer(const std::function<void(int)>& behaviour = {}, int backlog = 8) {
        sockaddr_in address = {};
        socklen_t length = sizeof address;
        listen(listener, backlog);
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
        port = ntohs(address.sin_port);
        if (!behaviour) return;
        thread = std::thread([this, behaviour] {
            const int connection = accept(listener, nullptr, nullptr);
            behaviour(connection);
            close(connection);
        });
    }
    ~Peer() {
        if (thread.joinable()) thread.join();
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

class HTTPTest : public testing::Test {
protected:
    HTTPTest() { EXPECT_EQ(std::fscanf(server, "%d", &port), 1); }
    ~HTTPTest() override {
        Result(RequestFor("/quit"));
        pclose(server);
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
    // Of a server that says that, does the rest and closes.
    std::string ResultOf(const std::string& reply,
                         const std::function<void(int)>& rest = {}) const {
        const Peer peer([&](int connection) {
            char request[4096];
            recv(connection, request, sizeof request, 0);
            Say(connection, reply);
            if (rest) rest(connection);
        });
        MHTTPStream::Request request = RequestFor("/");
        request.port = peer.port;
        return Result(request);
    }
    std::string Told(const std::string& path) const {
        return "200 GET " + path + " HTTP/1.0|Host: 127.0.0.1:" + std::to_string(port) +
               "|Connection: Close|";
    }

    int port = 0;
    std::uint32_t timeout = 10000;  // milliseconds; where nobody is silent, time enough
    std::FILE* const server = popen("'" QUILLOREA_PYTHON "' '" QUILLOREA_HTTP_SERVER "'", "re");
};

const std::string kNoHeader = "513 Invalid HTTP reply header.";
const std::string kNoLine = "513 Invalid HTTP reply header line.";
const std::string kNoBody = "513 Invalid HTTP reply body.";
const std::string kNoMore = "256 No more data in source stream.";

}  // namespace

TEST(Socket, IsRefusedBeforeItIsConnected) {
    MTCPClient client;
    char byte = 0;
    const std::string refused = "512 The network socket stream has not been initialized.";
    ExpectRaised({{refused, [&] { client.Read(&byte, 0); }},
                  {refused, [&] { client.Write(&byte, 1); }},
                  {refused, [&] { client.IsEnd(); }}});
    EXPECT_FALSE(MNetEntity::GetHostName().IsEmpty());
}

TEST(Socket, ReadsUntilThePeerClosesOrIsSilentOrTrickles) {
    Peer answering([](int connection) {
        char bytes[5];
        recv(connection, bytes, 5, MSG_WAITALL);
        Say(connection, std::string(bytes, 5));
        std::this_thread::sleep_for(milliseconds(20));
        Say(connection, " again");
    });
    Peer silent([](int connection) { Say(connection, "abc"), AwaitEnd(connection); });
    Peer trickling(Trickle);
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
    for (Client* const closed : {&client, &impatient, &slow}) closed->Close();
}

TEST(Socket, WritingTellsHowItFailed) {
    {
        Peer lazy([](int connection) {
            std::this_thread::sleep_for(milliseconds(4 * kShort)), AwaitEnd(connection);
        });
        Client client(lazy.port);
        EXPECT_EQ(Raised([&] { WriteAll(client, std::string(32 << 20, 'x')); }),
                  "512 Not all data have been sent.");
    }
    Peer gone([](int) {});
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
    const auto refused = [](int port, int code) {
        return "512 Could not connect to a TCP server (host localhost, port " +
               std::to_string(port) + ", code " + std::to_string(code) + ").";
    };
    const int closed = Peer().port;
    Peer full({}, 0);  // its queue takes one or two, further ones get no answer
    std::list<Client> waiting;
    const auto start = Clock::now();
    ExpectRaised({{"512 Could not resolve network name \"no.such.host.invalid\".",
                   [] { Client(80, "no.such.host.invalid"); }},
                  {refused(closed, ECONNREFUSED), [&] { waiting.emplace_back(closed); }},
                  {refused(full.port, ETIMEDOUT), [&] {
                       for (;;) waiting.emplace_back(full.port);
                   }}});
    EXPECT_LT(Clock::now() - start, milliseconds(3 * kShort) + kPatience);
    EXPECT_TRUE(HoldsInChild([&] {
        const rlimit none = {3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        return Raised([&] { Client(closed, "127.0.0.1"); }) == "512 Could not create TCP socket.";
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
    request = RequestFor("");
    request.host = "localhost";
    request.formData = "a=1&b=2";
    EXPECT_EQ(Result(request),
              "200 POST / HTTP/1.0|Content-Type: application/x-www-form-urlencoded|Content-Length: "
              "7|Host: localhost:" +
                  std::to_string(port) + "|Connection: Close|a=1&b=2");
}

TEST_F(HTTPTest, RedirectsAreFollowedWithinTheBudget) {
    const struct {
        std::string path;
        int budget;
        std::string expected;
    } kCases[] = {
        {"/dir/to?/plain", 1, Told("/plain")},   {"/dir/to?plain%3Fq", 1, Told("/dir/plain?q")},
        {"/dir/to?../plain", 1, Told("/plain")}, {"/to?/to%3F/plain", 2, Told("/plain")},
        {"/to?/to%3F/plain", 1, "302 "},         {"/to?/plain", 0, "302 "},
        {"/to?to%3Fto", 5, Told("/to")},         {"/to?https://localhost/", 5, "302 "},
        {"/to?http://a%20b/", 5, kNoLine},
    };
    for (const auto& redirect : kCases)
        EXPECT_EQ(Result(RequestFor(redirect.path.c_str(), redirect.budget)), redirect.expected)
            << redirect.path << ' ' << redirect.budget;
    const std::string other = "/to?http://127.0.0.1:" + std::to_string(port) + "/dir/c%23part";
    EXPECT_EQ(Result(RequestFor(other.c_str(), 1)), Told("/dir/c"));
}

TEST_F(HTTPTest, BrokenRepliesAreToldAndBounded) {
    const std::string ok = "HTTP/1.0 200 OK\r\n", body(1000, 'y'), text(16376, 'z');
    const std::string line = "A: " + text.substr(0, 8188) + '\n';  // 8 KiB
    const std::string lines = line + line + line + line + line + line + line;
    const std::pair<std::string, std::string> kCases[] = {
        {"", kNoHeader},
        {"HTTP/1.0\r\n\r\n", kNoHeader},
        {"SSH-2.0-server 200\r\n\r\n", kNoHeader},
        {"HTTP/1.0 2x0 OK\r\n\r\n", kNoHeader},
        {"HTTP/1.0 99 OK\r\n\r\n", kNoHeader},
        {"HTTP/1.1 204\n\n", "204 "},
        {ok + "no colon here\r\n\r\n", kNoLine},
        {ok + ": value\r\n\r\n", kNoLine},
        {ok + "Content-Length: 4\r\n", kNoHeader},
        {ok + "Content-Length: -1\r\n\r\n", kNoLine},
        {ok + "Content-Length: 99999999999999999999\r\n\r\n", kNoLine},
        {ok + "Content-Length: 10\r\n\r\nhalf", "200 half" + kNoMore},
        {ok + "Content-Length: 1001\r\n\r\n", kNoBody},
        {ok + "CONTENT-LENGTH: 3\r\n\r\nall and more", "200 all"},
        {ok + "\r\n" + body, "200 " + body},
        {ok + "\r\n" + body + "y", "200 " + body + kNoBody},
        {ok + "A: 123" + text + "\r\n\r\nbody", "200 body"},
        {ok + "A: 1234" + text + "\r\n\r\nbody", kNoHeader},
        {ok + lines + "\nbody", "200 body"},
        {ok + lines + line + "\nbody", kNoHeader}};
    for (const auto& [reply, expected] : kCases)
        EXPECT_EQ(ResultOf(reply), expected) << reply.substr(0, 100);
}

TEST_F(HTTPTest, ASilentServerIsGivenUp) {
    const std::string ok = "HTTP/1.0 200 OK\r\n";
    timeout = 2 * kShort;
    const auto start = Clock::now();
    EXPECT_EQ(ResultOf("", AwaitEnd), kNoHeader);
    EXPECT_EQ(ResultOf(ok, AwaitEnd), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "A: ", Trickle), kNoHeader);
    EXPECT_EQ(ResultOf(ok + "\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_EQ(ResultOf(ok + "Content-Length: 10\r\n\r\nsome", AwaitEnd), "200 some" + kNoMore);
    EXPECT_LT(Clock::now() - start, milliseconds(10 * kShort) + kPatience);
}
