// SPDX-License-Identifier: GPL-3.0-or-later
// What every stream promises, and the memory stream.
#include <memory>
#include <thread>

#include "foundation/streams/blowfish_stream.h"
#include "foundation/streams/hash_stream.h"
#include "foundation/streams/hexa_stream.h"
#include "foundation/streams/rsa_stream.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/streams/zlib_stream.h"

namespace {

std::unique_ptr<MStream> MakeCipher(std::string_view kind, MMemoryStream& memory, bool writing) {
    if (kind == "blowfish") {
        auto stream = std::make_unique<MBlowfishStream>(memory);
        stream->SetKeyLength(writing ? 64 : 0);  // cuts a text key
        stream->SetKey(writing ? "a key of its own" : "a key of");
        return stream;
    }
    // The primes 2^61 - 1 and 2^127 - 1, and their product.
    auto stream = std::make_unique<MRSAStream>(memory);
    stream->SetPublicKey("fffffffffffffff7fffffffffffffffe000000000000001", "10001");
    if (writing) return stream;
    stream->SetPrivateKey("1fffffffffffffff", "7fffffffffffffffffffffffffffffff", "10001");
    return stream;
}

std::unique_ptr<MStream> Make(std::string_view kind, MMemoryStream& memory, bool writing) {
    using Mode = MStdFileStream::Mode;
    static const TestFolder folder;
    const Mode mode = writing ? Mode::Write : Mode::Read;
    if (kind == "dispatch") return std::make_unique<MDispatchStream>(memory);
    if (kind == "hexadecimal") return std::make_unique<MHexaStream>(memory);
    if (kind == "md5") return std::make_unique<MMD5Stream>(&memory);
    if (kind == "ripemd") return std::make_unique<MRIPEMDStream>(&memory);
    if (kind == "file") return std::make_unique<MStdFileStream>(folder / "file", mode);
    if (kind != "zlib") return MakeCipher(kind, memory, writing);
    auto stream = std::make_unique<MZLibStream>();
    writing ? stream->OpenForCompressing(memory) : stream->OpenForDecompressing(memory);
    return stream;
}

std::string Line(MStream& stream, std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(std::max(size, 1)), '#');
    const int result = stream.ReadLine(buffer.data(), size);
    return std::to_string(result) + buffer.c_str();
}

class Bare : public MStream {};

constexpr const char* kNoWayBack = "1 Service \"backward seek in a stream\" is not implemented.";

}  // namespace

TEST(Stream, EveryClassGivesBackWhatItTookAndSeeksAsItCan) {
    const struct {
        const char* name;
        int unit;    // positions for a plain byte
        bool seeks;  // to any place, and knows its size
    } kKinds[] = {{"dispatch", 1, true}, {"hexadecimal", 2, true}, {"file", 1, true},
                  {"zlib", 1, false},    {"blowfish", 1, false},   {"rsa", 1, false},
                  {"md5", 1, false},     {"ripemd", 1, false}};
    constexpr std::int64_t kFill = 1499, kTotal = 6 + 8 + kFill + 6 + 1;  // whole blocks of 8
    for (const auto& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        MMemoryStream memory;
        auto stream = Make(kind.name, memory, true);
        stream->WriteStringLine("first");
        stream->Write("sec\rond\n", 8);
        stream->WriteFill(kFill);
        stream->WriteString(u"\u017elu\u0165!");
        stream->Write(nullptr, 0);
        stream.reset();
        memory.Seek(0, MStream::kFromStart);

        stream = Make(kind.name, memory, false);
        EXPECT_TRUE(stream->IsOpen() && !stream->IsEnd());
        EXPECT_EQ(Line(*stream, 64), "0first");
        EXPECT_EQ(Raised([&] { stream->Seek(0, 3); }), "2 Invalid seek origin.");
        const std::string back = Raised([&] { stream->Seek(0, MStream::kFromStart); });
        EXPECT_EQ(back, kind.seeks ? "nothing" : kNoWayBack);
        EXPECT_EQ(kind.seeks ? Line(*stream, 64) : "0first", "0first");
        EXPECT_EQ(Line(*stream, 64), "0second");
        stream->Seek(kFill * kind.unit, MStream::kFromPosition);
        EXPECT_EQ(stream->GetPosition(), (14 + kFill) * kind.unit);
        EXPECT_EQ(ReadAll(*stream, 5), "\xc5\xbelu\xc5\xa5!");
        EXPECT_TRUE(stream->IsEnd());
        EXPECT_EQ(stream->GetPosition(), kTotal * kind.unit);
        if (kind.seeks) {
            EXPECT_EQ(stream->GetSize(), kTotal * kind.unit);
            stream->Seek(-2 * kind.unit, MStream::kFromEnd);
            EXPECT_EQ(ReadAll(*stream), "\xa5!");
        } else {
            EXPECT_EQ(Raised([&] { stream->Seek(INT64_MAX, MStream::kFromPosition); }),
                      "256 No more data in source stream.");
        }
    }
}

TEST(Stream, ServicesThatAClassLacksHaveNames) {
    Bare bare;
    MMemoryStream memory;
    MRSAStream rsa(memory);
    const std::vector<Failure> kServices = {
        {"return substream", [&] { bare.GetSubStream(); }},
        {"write to stream", [&] { bare.WriteStringLine("a"); }},
        {"read from stream", [&] { Line(bare, 2); }},
        {"get stream position", [&] { bare.Seek(0, MStream::kFromPosition); }},
        {"stream size detection", [&] { bare.Seek(0, MStream::kFromEnd); }},
        {"flush stream", [&] { bare.Flush(); }},
        {"end of stream test", [&] { bare.IsEnd(); }},
        {"truncate stream", [&] { bare.Truncate(); }},
        {"set crypto key length", [&] { rsa.SetKeyLength(64); }},
        {"set crypto-stream key in text form", [&] { rsa.SetKey("k"); }}};
    for (const auto& [name, call] : kServices)
        EXPECT_EQ(Raised(call), "1 Service \"" + name + "\" is not implemented.");
}

TEST(Stream, LinesEndAtLineFeedsNulsAndTheBufferSize) {
    const struct {
        std::string bytes;
        std::int32_t size;
        std::vector<std::string> lines;
    } kCases[] = {{"ab\ncd", 8, {"0ab", "0cd", "1"}},
                  {"\r\na\r\rb\r\n", 8, {"0", "0ab", "1"}},
                  {std::string("a\0b\n", 4), 8, {"0a", "0b"}},
                  {"abc\nd", 4, {"1abc", "0", "0d", "1"}},
                  {"ab", 1, {"1", "1"}},
                  {"\r\r", 8, {"1"}}};
    for (const auto& sample : kCases) {
        MMemoryStream memory = Over(sample.bytes), digits;
        MHexaStream plain(digits);  // reads lines as the base class does
        WriteAll(plain, sample.bytes);
        digits.Seek(0, MStream::kFromStart);
        for (const std::string& expected : sample.lines) {
            const bool atEnd = memory.IsEnd();
            EXPECT_EQ(Line(memory, sample.size), atEnd ? "2" : expected) << sample.bytes;
            EXPECT_EQ(Line(plain, sample.size), expected) << sample.bytes;
        }
    }
}

TEST(MemoryStream, CapacityDoublesAndPullsTheSizeDown) {
    MMemoryStream stream;
    WriteAll(stream, "12345");
    EXPECT_EQ(stream.GetCapacity(), 5);
    WriteAll(stream, std::string(16, 'x'));
    EXPECT_EQ(stream.GetCapacity(), 40);
    stream.SetCapacity(3);
    EXPECT_TRUE(stream.IsEnd() && stream.GetPosition() == 3);
    stream.Seek(1, MStream::kFromStart);
    stream.Truncate();
    ExpectRaised({{"256 Could not perform file seek.", [&] { stream.Seek(-1, 0); }},
                  {"256 No more data in source stream.", [&] { stream.Seek(2, 0); }}});
}

TEST(MemoryStream, CopiesSeeTheirOwnChangesOnlyAndOutsideMemoryStays) {
    const std::string outside = "constant";
    MMemoryStream first = Over(outside);
    EXPECT_EQ(static_cast<const void*>(first.GetData()), outside.data());
    MMemoryStream second(first);
    WriteAll(second, "C");
    EXPECT_EQ(outside, "constant");
    EXPECT_EQ(ReadAll(first), "constant");
    EXPECT_EQ(ReadAll(second), "onstant");
}

TEST(MemoryStream, CopiesOnTwoThreadsWriteToBlocksOfTheirOwn) {
    MMemoryStream shared;
    WriteAll(shared, "shared");
    const auto change = [&shared](char letter) {
        for (int i = 0; i < 1000; ++i) {
            MMemoryStream own(shared), other(own);
            WriteAll(own, std::string(1, letter));
            EXPECT_TRUE(own.GetData()[6] == static_cast<std::uint8_t>(letter) &&
                        other.GetSize() == 6);
        }
    };
    std::thread other(change, 'a');
    change('b');
    other.join();
}
