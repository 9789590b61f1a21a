// SPDX-License-Identifier: GPL-3.0-or-later
// What every stream promises, and the memory stream.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "foundation/streams/blowfish_stream.h"
#include "foundation/streams/hash_stream.h"
#include "foundation/streams/hexa_stream.h"
#include "foundation/streams/memory_stream.h"
#include "foundation/streams/rsa_stream.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/streams/zlib_stream.h"

namespace {

using StreamPointer = std::unique_ptr<MStream>;

// The primes 2^89 - 1 and 2^107 - 1, and (2^89 - 1) * (2^107 - 1).
constexpr const char* kPrimeP = "1ffffffffffffffffffffff";
constexpr const char* kPrimeQ = "7ffffffffffffffffffffffffff";
constexpr const char* kModulus = "ffffffffffffffffffffff7fffe0000000000000000000001";

// One class: how its writer and reader come to be over a memory stream, and where it differs.
struct StreamKind {
    const char* name;
    std::function<StreamPointer(MMemoryStream&)> makeWriter;
    std::function<StreamPointer(MMemoryStream&)> makeReader;
    int seekUnit = 1;  // positions for a plain byte
    bool seeksBack = false;
    bool knowsSize = false;
};

template <typename Stream>
StreamPointer Over(MMemoryStream& memory) {
    return std::make_unique<Stream>(memory);
}

StreamPointer MakeBlowfish(MMemoryStream& memory) {
    auto stream = std::make_unique<MBlowfishStream>(memory);
    stream->SetKey("a key of its own");
    return stream;
}

template <bool compress>
StreamPointer MakeZLib(MMemoryStream& memory) {
    auto stream = std::make_unique<MZLibStream>();
    compress ? stream->OpenForCompressing(memory) : stream->OpenForDecompressing(memory);
    return stream;
}

StreamPointer MakeRSAWriter(MMemoryStream& memory) {
    auto stream = std::make_unique<MRSAStream>(memory);
    stream->SetPublicKey(kModulus, "10001");
    return stream;
}

StreamPointer MakeRSAReader(MMemoryStream& memory) {
    auto stream = std::make_unique<MRSAStream>(memory);
    stream->SetPrivateKey(kPrimeP, kPrimeQ, "10001");
    return stream;
}

StreamPointer MakeMD5(MMemoryStream& memory) { return std::make_unique<MMD5Stream>(&memory); }
StreamPointer MakeRIPEMD(MMemoryStream& memory) { return std::make_unique<MRIPEMDStream>(&memory); }

const TestFolder& ThisFolder() {
    static const TestFolder folder;
    return folder;
}

template <MStdFileStream::Mode mode>
StreamPointer MakeFile(MMemoryStream&) {
    return std::make_unique<MStdFileStream>(ThisFolder() / "file", mode);
}

const StreamKind kKinds[] = {
    {"dispatch", Over<MDispatchStream>, Over<MDispatchStream>, 1, true, true},
    {"hexadecimal", Over<MHexaStream>, Over<MHexaStream>, 2, true, true},
    {"file", MakeFile<MStdFileStream::Mode::Write>, MakeFile<MStdFileStream::Mode::Read>, 1, true,
     true},
    {"zlib", MakeZLib<true>, MakeZLib<false>},
    {"blowfish", MakeBlowfish, MakeBlowfish},
    {"rsa", MakeRSAWriter, MakeRSAReader},
    {"md5", MakeMD5, MakeMD5},
    {"ripemd", MakeRIPEMD, MakeRIPEMD},
};

constexpr std::int64_t kFill = 1499;
const std::string kTail = "\xc5\xbelu\xc5\xa5";         // 6 bytes
constexpr std::int64_t kTotal = 6 + 8 + kFill + 6 + 1;  // whole blocks of 8

void WriteSample(MStream& writer) {
    writer.WriteStringLine("first");
    writer.Write("sec\rond\n", 8);
    writer.WriteFill(kFill);
    writer.WriteString(u"\u017elu\u0165!");
    writer.Write(nullptr, 0);
}

std::string Line(MStream& stream, std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(std::max(size, 1)), '#');
    const int result = stream.ReadLine(buffer.data(), size);
    return std::to_string(result) + buffer.c_str();
}

// A stream that can only read, so that all else is what the base class makes of it.
class OnlyReads : public MStream {
public:
    explicit OnlyReads(std::string bytes) : bytes(std::move(bytes)) {}
    std::int32_t Read(void* buffer, std::int32_t size) override {
        const auto count = bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(size));
        bytes.erase(0, count);
        position += static_cast<std::int64_t>(count);
        return static_cast<std::int32_t>(count);
    }
    std::int64_t GetPosition() override { return position; }
    std::int64_t GetSize() override { return 10; }

private:
    std::string bytes;
    std::int64_t position = 0;
};

}  // namespace

TEST(Stream, EveryClassGivesBackWhatItTook) {
    for (const StreamKind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        MMemoryStream memory;
        WriteSample(*kind.makeWriter(memory));
        memory.Seek(0, MStream::kFromStart);
        const StreamPointer reader = kind.makeReader(memory);
        EXPECT_TRUE(reader->IsOpen());
        EXPECT_FALSE(reader->IsEnd());
        EXPECT_EQ(Line(*reader, 64), "0first");
        EXPECT_EQ(Line(*reader, 64), "0second");
        EXPECT_EQ(Raised([&] { reader->Seek(0, 3); }), "2 Invalid seek origin.");
        reader->Seek(kFill * kind.seekUnit, MStream::kFromPosition);
        EXPECT_EQ(reader->GetPosition(), (14 + kFill) * kind.seekUnit);
        EXPECT_EQ(ReadAll(*reader, 5), kTail + "!");
        EXPECT_TRUE(reader->IsEnd());
        EXPECT_EQ(reader->GetPosition(), kTotal * kind.seekUnit);
        char byte = 0;
        EXPECT_EQ(reader->Read(&byte, 1), 0);
    }
}

TEST(Stream, SeeksAndSizesAreThoseThatAClassCan) {
    for (const StreamKind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        MMemoryStream memory;
        WriteSample(*kind.makeWriter(memory));
        memory.Seek(0, MStream::kFromStart);
        const StreamPointer reader = kind.makeReader(memory);
        EXPECT_EQ(Line(*reader, 64), "0first");
        const std::string back = Raised([&] { reader->Seek(0, MStream::kFromStart); });
        EXPECT_EQ(back, kind.seeksBack
                            ? "nothing"
                            : "1 Service \"backward seek in a stream\" is not implemented.");
        EXPECT_EQ(Line(*reader, 3), kind.seeksBack ? "1fi" : "1se");
        if (kind.knowsSize) {
            EXPECT_EQ(reader->GetSize(), kTotal * kind.seekUnit);
            reader->Seek(-2 * kind.seekUnit, MStream::kFromEnd);
            EXPECT_EQ(ReadAll(*reader), "\xa5!");
        } else {
            EXPECT_EQ(Raised([&] { reader->GetSize(); }),
                      "1 Service \"stream size detection\" is not implemented.");
            EXPECT_EQ(Raised([&] { reader->Seek(kTotal + 1, MStream::kFromStart); }),
                      "256 No more data in source stream.");
        }
    }
}

TEST(Stream, ServicesThatAClassLacksHaveNames) {
    class Bare : public MStream {
    } bare;
    char byte = 0;
    const std::pair<const char*, std::function<void()>> kServices[] = {
        {"return substream", [&] { bare.GetSubStream(); }},
        {"write to stream", [&] { bare.WriteStringLine("a"); }},
        {"write to stream", [&] { bare.WriteFill(1); }},
        {"read from stream", [&] { bare.Read(&byte, 1); }},
        {"read from stream", [&] { Line(bare, 2); }},
        {"get stream position", [&] { bare.Seek(0, MStream::kFromPosition); }},
        {"stream size detection", [&] { bare.Seek(0, MStream::kFromEnd); }},
        {"flush stream", [&] { bare.Flush(); }},
        {"end of stream test", [&] { bare.IsEnd(); }},
        {"truncate stream", [&] { bare.Truncate(); }},
        {"set crypto key length",
         [] {
             MMemoryStream m;
             MRSAStream(m).SetKeyLength(64);
         }},
        {"set crypto-stream key in text form",
         [] {
             MMemoryStream m;
             MRSAStream(m).SetKey("k");
         }},
    };
    for (const auto& [name, call] : kServices)
        EXPECT_EQ(Raised(call), "1 Service \"" + std::string(name) + "\" is not implemented.");
    bare.WriteFill(0);
    bare.WriteString("");
    EXPECT_TRUE(bare.IsOpen());
}

TEST(Stream, LinesEndAtLineFeedsNulsAndTheBufferSize) {
    const struct {
        std::string bytes;
        std::int32_t size;
        std::vector<const char*> lines;
    } kCases[] = {
        {"ab\ncd", 8, {"0ab", "0cd", "1"}},
        {"\r\na\r\rb\r\n", 8, {"0", "0ab", "1"}},
        {std::string("a\0b\n", 4), 8, {"0a", "0b"}},
        {"abc\nd", 4, {"1abc", "0", "0d", "1"}},
        {"abcd\n", 4, {"1abc", "0d"}},
        {"ab\r\nc", 4, {"0ab", "0c"}},
        {"abc", 4, {"1abc", "1"}},
        {"ab", 1, {"1", "1"}},
        {"ab", 0, {"1"}},
        {"\r\r", 8, {"1"}},
    };
    for (const auto& line : kCases) {
        OnlyReads plain(line.bytes);
        MMemoryStream memory(line.bytes.data(), static_cast<std::int32_t>(line.bytes.size()));
        for (const std::string expected : line.lines) {
            const bool atEnd = memory.IsEnd();
            EXPECT_EQ(Line(memory, line.size), atEnd ? "2" : expected) << line.bytes;
            EXPECT_EQ(Line(plain, line.size), expected) << line.bytes;
        }
    }
}

TEST(Stream, SkippingReadsOnAndFarOffsetsStayInRange) {
    OnlyReads stream(std::string(3000, 'x') + "end");
    stream.Seek(2990, MStream::kFromEnd);
    EXPECT_EQ(ReadAll(stream), "end");
    constexpr auto kFar = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(Raised([&] { stream.Seek(kFar, MStream::kFromPosition); }),
              "256 No more data in source stream.");
    EXPECT_EQ(Raised([&] { stream.Seek(-kFar, MStream::kFromPosition); }),
              "1 Service \"backward seek in a stream\" is not implemented.");
}

TEST(MemoryStream, CapacityDoublesAndPullsTheSizeDown) {
    MMemoryStream stream;
    WriteAll(stream, "12345");
    EXPECT_EQ(stream.GetCapacity(), 5);
    WriteAll(stream, std::string(16, 'x'));
    EXPECT_EQ(stream.GetCapacity(), 40);
    stream.Seek(2, MStream::kFromStart);
    WriteAll(stream, "ab");
    EXPECT_EQ(stream.GetSize(), 21);
    stream.SetCapacity(3);
    EXPECT_EQ(stream.GetPosition(), 3);
    EXPECT_TRUE(stream.IsEnd());
    stream.Seek(1, MStream::kFromStart);
    stream.Truncate();
    EXPECT_EQ(stream.GetSize(), 1);
    stream.SetCapacity(0);
    EXPECT_EQ(stream.GetSize(), 0);
    EXPECT_EQ(Raised([&] { stream.Seek(-1, 0); }), "256 Could not perform file seek.");
    EXPECT_EQ(Raised([&] { stream.Seek(1, 0); }), "256 No more data in source stream.");
    EXPECT_EQ(Line(stream, 8), "2");
}

TEST(MemoryStream, CopiesSeeTheirOwnChangesOnlyAndOutsideMemoryStays) {
    const std::string outside = "constant";
    MMemoryStream first(outside.data(), 8);
    EXPECT_EQ(static_cast<const void*>(first.GetData()), outside.data());
    MMemoryStream second(first);
    second.Seek(0, MStream::kFromStart);
    WriteAll(second, "C");
    EXPECT_EQ(outside, "constant");
    EXPECT_EQ(ReadAll(first), "constant");
    MMemoryStream third(second);
    EXPECT_EQ(third.GetData(), second.GetData());
    WriteAll(third, "O and more");
    EXPECT_EQ(ReadAll(second), "onstant");
    third.Seek(0, MStream::kFromStart);
    EXPECT_EQ(ReadAll(third), "CO and more");
    const MMemoryStream moved = std::move(third);
    EXPECT_EQ(third.GetSize(), 0);  // NOLINT(bugprone-use-after-move): moved-from is empty
}

TEST(MemoryStream, CopiesOnTwoThreadsWriteToBlocksOfTheirOwn) {
    MMemoryStream shared;
    WriteAll(shared, std::string(64, 's'));
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b'}) {
        threads.emplace_back([copy = shared, letter]() mutable {
            for (int i = 0; i < 1000; ++i) {
                MMemoryStream own(copy);
                own.Seek(i % 64, MStream::kFromStart);
                WriteAll(own, std::string(1, letter));
                copy = own;
            }
            EXPECT_EQ(copy.GetData()[63], letter);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.GetData()[0], 's');
}
