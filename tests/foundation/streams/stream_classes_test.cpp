// SPDX-License-Identifier: GPL-3.0-or-later
// What every stream promises, the memory stream, and filters against the outside world.
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "foundation/streams/blowfish_stream.h"
#include "foundation/streams/hash_stream.h"
#include "foundation/streams/hexa_stream.h"
#include "foundation/streams/rsa_stream.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/streams/tcp_client.h"
#include "foundation/streams/zlib_stream.h"

namespace {

using Mode = MStdFileStream::Mode;

std::unique_ptr<MStream> MakeCipher(std::string_view kind, MMemoryStream& memory, bool writing) {
    if (kind == "keyless") return std::make_unique<MBlowfishStream>(memory);
    if (kind == "blowfish") {
        auto stream = std::make_unique<MBlowfishStream>(memory);
        stream->SetKeyLength(writing ? 64 : 0);  // cuts a text key
        stream->SetKey(writing ? "a key of its own" : "a key of");
        return stream;
    }
    if (kind == "chained") {
        auto stream = std::make_unique<MBlowfishStream>(memory);
        stream->SetInitialBlock({0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10});
        stream->SetKeyBytes("\x01\x23\x45\x67\x89\xab\xcd\xef\xf0\xe1\xd2\xc3\xb4\xa5\x96\x87");
        return stream;
    }
    // The primes 2^61 - 1 and 2^127 - 1, and their product.
    auto stream = std::make_unique<MRSAStream>(memory);
    stream->SetPublicKey("fffffffffffffff7fffffffffffffffe000000000000001", "10001");
    if (!writing && kind == "rsa")
        stream->SetPrivateKey("1fffffffffffffff", "7fffffffffffffffffffffffffffffff", "10001");
    return stream;
}

std::unique_ptr<MStream> MakeFile(std::string_view kind, bool writing) {
    static const TestFolder folder;
    const Mode mode = writing ? Mode::Write : Mode::Read;
    if (kind == "closed") return std::make_unique<MStdFileStream>();
    if (kind == "full") return std::make_unique<MStdFileStream>("/dev/full", mode);
    if (kind == "unreadable") return std::make_unique<MStdFileStream>("/proc/self/mem", Mode::Read);
    if (kind == "file") return std::make_unique<MStdFileStream>(folder / "file", mode);
    folder.SetContent("file", "0123456789");
    return std::make_unique<MStdFileStream>(folder / "file", Mode::Update);
}

std::unique_ptr<MStream> Make(std::string_view kind, MMemoryStream& memory, bool writing) {
    if (kind == "bare") return std::make_unique<MStream>();
    if (kind == "memory") return std::make_unique<MMemoryStream>(memory);
    if (kind == "dispatch") return std::make_unique<MDispatchStream>(memory);
    if (kind == "hexadecimal") return std::make_unique<MHexaStream>(memory);
    if (kind == "md5") return std::make_unique<MMD5Stream>(&memory);
    if (kind == "hash") return std::make_unique<MMD5Stream>();
    if (kind == "ripemd") return std::make_unique<MRIPEMDStream>(&memory);
    if (kind == "client") return std::make_unique<MTCPClient>();
    for (const char* const cipher : {"blowfish", "chained", "keyless", "rsa", "public"})
        if (kind == cipher) return MakeCipher(kind, memory, writing);
    if (kind != "zlib" && kind != "unstored") return MakeFile(kind, writing);
    auto stream = std::make_unique<MZLibStream>();
    static MStream bare;
    if (kind == "unstored") return stream->OpenForCompressing(bare), std::move(stream);
    writing ? stream->OpenForCompressing(memory) : stream->OpenForDecompressing(memory);
    return stream;
}

std::string Line(MStream& stream, std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(size), '#');
    const int result = stream.ReadLine(buffer.data(), size);
    return std::to_string(result) + buffer.c_str();
}

template <typename Class>
Class& As(MStream& stream) {
    return dynamic_cast<Class&>(stream);
}

// An operation that only one class has.
std::string PerformOwn(MStream& stream, const std::string& name, const std::string& text) {
    const std::int32_t number = std::atoi(text.c_str());
    if (name == "capacity") return std::to_string(As<MMemoryStream>(stream).GetCapacity());
    if (name == "limit") return As<MMemoryStream>(stream).SetCapacity(number), "";
    if (name == "open") return As<MStdFileStream>(stream).Open(text.c_str(), Mode::Read), "";
    if (name == "update") return As<MStdFileStream>(stream).Open(text.c_str(), Mode::Update), "";
    if (name == "create") return As<MStdFileStream>(stream).Open(text.c_str(), Mode::Write), "";
    if (name == "hash") return As<MHashStream>(stream).GetHashText().ToUtf8();
    if (name == "key") return As<MCryptoStream>(stream).SetKey(text.c_str()), "";
    if (name == "bits") return As<MCryptoStream>(stream).SetKeyLength(number), "";
    if (name == "modulus") return As<MRSAStream>(stream).SetPublicKey(text, "3"), "";
    if (name == "level")
        return As<MZLibStream>(stream).OpenForCompressing(stream.GetSubStream(), number), "";
    if (name != "close") throw std::invalid_argument(name);
    if (auto* const zlib = dynamic_cast<MZLibStream*>(&stream)) return zlib->Close(), "";
    return As<MStdFileStream>(stream).Close(), "";
}

// One operation of the cases, and its answer where it has one.
std::string Perform(MStream& stream, const std::string& name, const std::string& text) {
    const std::int64_t number = std::strtoll(text.c_str(), nullptr, 10);
    const auto size = static_cast<std::int32_t>(number);
    if (name == "write") return WriteAll(stream, text), "";
    if (name == "line") return stream.WriteStringLine(MString::FromUtf8(text)), "";
    if (name == "fill") return stream.WriteFill(number), "";
    if (name == "read") return ReadSome(stream, size);
    if (name == "readline") return Line(stream, size);
    if (name == "start") return stream.Seek(number, MStream::kFromStart), "";
    if (name == "skip") return stream.Seek(number, MStream::kFromPosition), "";
    if (name == "end") return stream.Seek(number, MStream::kFromEnd), "";
    if (name == "origin") return stream.Seek(0, size), "";
    if (name == "position") return std::to_string(stream.GetPosition());
    if (name == "size") return std::to_string(stream.GetSize());
    if (name == "atend") return stream.IsEnd() ? "yes" : "no";
    if (name == "flush") return stream.Flush(), "";
    if (name == "truncate") return stream.Truncate(), "";
    if (name == "below") return ReadAll(stream.GetSubStream());
    return PerformOwn(stream, name, text);
}

// The answers to all operations on a stream of that class, and to what is raised.
std::string Answers(const std::string& given) {
    std::istringstream words(given);
    std::string kind, word, answers;
    std::getline(words, kind, ' ');
    MMemoryStream memory;
    auto stream = Make(kind, memory, true);
    while (std::getline(words, word, ' ')) {
        const std::size_t colon = std::min(word.find(':'), word.size());
        const std::string name = word.substr(0, colon);
        const std::string text = colon < word.size() ? word.substr(colon + 1) : "";
        if (name == "reopen" || name == "stored") {
            stream.reset();
            if (name == "stored") WriteAll(memory = MMemoryStream(), text);
            memory.Seek(0, MStream::kFromStart);
            stream = Make(kind, memory, false);
            continue;
        }
        std::string answer;
        const std::string error = Raised([&] { answer = Perform(*stream, name, text); });
        answer += error;
        answers += answers.empty() || answer.empty() ? answer : " | " + answer;
    }
    return answers;
}

}  // namespace

TEST(Stream, EveryClassKeepsToItsCases) {
    CheckCases(QUILLOREA_STREAM_CASES "/stream_cases.txt", Answers);
}

TEST(MemoryStream, CopiesWriteToBlocksOfTheirOwn) {
    const std::string constant = "shared";
    MMemoryStream outside = Over(constant), inside;
    WriteAll(inside, constant);
    const auto change = [&](char letter) {
        for (int i = 0; i < 1000; ++i) {
            MMemoryStream own(i % 2 == 0 ? outside : inside), other(own);
            own.Seek(0, MStream::kFromStart);
            WriteAll(own, std::string(1, letter));
            EXPECT_TRUE(own.GetData()[0] == static_cast<std::uint8_t>(letter) &&
                        other.GetData()[0] == 's');
        }
    };
    std::thread other(change, 'a');
    change('b');
    other.join();
}

TEST(ZLibStream, PythonReadsWhatIsWrittenAndTheOtherWayRound) {
    const TestFolder folder;
    const std::string python = "cd " + folder.path.string() +
                               " && '" QUILLOREA_PYTHON
                               "' -c 'import zlib; "
                               "plain = open(\"plain\", \"rb\").read(); "
                               "assert zlib.decompress(open(\"packed\", \"rb\").read()) == plain; "
                               "open(\"theirs\", \"wb\").write(zlib.compress(plain))'";
    // The check sum of 4087 random bytes stands in two blocks that are read.
    for (const std::string& plain : {std::string(100000, 'a'), RandomBytes(4087), std::string()}) {
        MMemoryStream memory;
        WriteAll(*Make("zlib", memory, true), plain);
        folder.SetContent("plain", plain);
        memory.Seek(0, MStream::kFromStart);
        folder.SetContent("packed", ReadAll(memory));
        ASSERT_EQ(std::system(python.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
        const std::string theirs = folder.Content("theirs");
        memory = Over(theirs);
        const auto unpacked = Make("zlib", memory, false);
        EXPECT_EQ(ReadSome(*unpacked, static_cast<std::int32_t>(plain.size())), plain);
        EXPECT_TRUE(unpacked->IsEnd());
    }
}
