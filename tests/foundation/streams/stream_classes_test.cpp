// SPDX-License-Identifier: GPL-3.0-or-later
// What every stream promises, the memory stream, and filters against the outside world.
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

std::string Stored(MMemoryStream& memory) {
    memory.Seek(0, MStream::kFromStart);
    return ReadAll(memory);
}

std::string Line(MStream& stream, std::int32_t size) {
    std::string buffer(static_cast<std::size_t>(std::max(size, 1)), '#');
    const int result = stream.ReadLine(buffer.data(), size);
    return std::to_string(result) + buffer.c_str();
}

std::string Unsupported(const std::string& service) {
    return "1 Service \"" + service + "\" is not implemented.";
}

struct Bare : MStream {};

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
        EXPECT_EQ(back, kind.seeks ? "" : Unsupported("backward seek in a stream"));
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

TEST(Stream, LinesEndAtLineFeedsNulsAndTheBufferSize) {
    CheckCases(QUILLOREA_STREAM_CASES "/line_cases.txt", [](const std::string& given) {
        const int size = given[0] - '0';
        const std::string bytes = given.substr(2);
        MMemoryStream memory = Over(bytes), digits;
        MHexaStream plain(digits);  // reads lines as the base class does
        WriteAll(plain, bytes);
        digits.Seek(0, MStream::kFromStart);
        std::string lines;
        for (int i = 0; i < 4; ++i) {
            const bool atEnd = memory.IsEnd();
            const std::string line = Line(plain, size);
            EXPECT_EQ(Line(memory, size), atEnd ? "2" : line) << given;
            lines += line + '|';
        }
        return lines;
    });
}

TEST(Stream, WhatAClassLacksOrRefusesHasAText) {
    const std::string data = RandomBytes(25);
    MMemoryStream memory, first = Over(data), second(first), third(first);
    Bare bare;
    MBlowfishStream keyless(first), blowfish(first);
    MRSAStream rsa(second), publicOnly(third);
    MZLibStream packing, reading, full;
    blowfish.SetKey("eight or more");
    rsa.SetPrivateKey("1ffffffffffffffffffffff", "7ffffffffffffffffffffffffff", "10001");
    publicOnly.SetPublicKey("ffffffffffffffffffffff7fffe0000000000000000000001", "10001");
    reading.OpenForDecompressing(memory);
    full.OpenForCompressing(bare, 0);
    const std::string invalid = "2 Invalid crypto key.";
    ExpectRaised(
        {{Unsupported("return substream"), [&] { bare.GetSubStream(); }},
         {Unsupported("write to stream"), [&] { bare.WriteStringLine("a"); }},
         {Unsupported("read from stream"), [&] { Line(bare, 2); }},
         {Unsupported("get stream position"), [&] { bare.Seek(0, MStream::kFromPosition); }},
         {Unsupported("stream size detection"), [&] { bare.Seek(0, MStream::kFromEnd); }},
         {Unsupported("flush stream"), [&] { bare.Flush(); }},
         {Unsupported("end of stream test"), [&] { bare.IsEnd(); }},
         {Unsupported("truncate stream"), [&] { bare.Truncate(); }},
         {Unsupported("set crypto key length"), [&] { rsa.SetKeyLength(64); }},
         {Unsupported("set crypto-stream key in text form"), [&] { rsa.SetKey("k"); }},
         {Unsupported("read from stream"), [&] { ReadAll(publicOnly); }},
         {"258 Buffering stream has not been initialized.", [&] { ReadAll(keyless); }},
         {"258 Cryptographic hash stream has not been initialized.",
          [] { MMD5Stream().Read(nullptr, 0); }},
         {"256 No more data in source stream.", [&] { ReadAll(blowfish, 25); }},
         {"256 Invalid file contents.", [&] { ReadAll(rsa); }},
         {invalid, [&] { blowfish.SetKey("short"); }},
         {invalid, [&] { blowfish.SetKeyLength(60); }},
         {invalid, [&] { blowfish.SetKeyLength(456); }},
         {invalid, [&] { rsa.SetPublicKey("no digits", "3"); }},
         {invalid, [&] { rsa.SetPublicKey("35", "3"); }},
         {invalid, [&] { rsa.SetPublicKey("eeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee", "3"); }},
         {"257 Could not initialize deflating.", [&] { packing.OpenForCompressing(memory, 99); }},
         {Unsupported("write to stream"), [&] { WriteAll(reading, "a"); }},
         {Unsupported("write to stream"), [&] { WriteAll(full, data + RandomBytes(100000)); }},
         {Unsupported("write to stream"), [&] { full.Close(); }}});
    EXPECT_EQ(blowfish.GetPosition(), 24);
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

TEST(MemoryStream, CopiesWriteToBlocksOfTheirOwn) {
    const std::string constant = "shared";
    MMemoryStream outside = Over(constant), inside;
    WriteAll(inside, constant);
    const auto change = [&](char letter) {
        for (int i = 0; i < 1000; ++i) {
            MMemoryStream own(i % 2 == 0 ? outside : inside), other(own);
            const std::int64_t place = own.GetPosition();
            WriteAll(own, std::string(1, letter));
            EXPECT_TRUE(own.GetData()[place] == static_cast<std::uint8_t>(letter) &&
                        other.GetSize() == 6);
        }
    };
    std::thread other(change, 'a');
    change('b');
    other.join();
    EXPECT_EQ(constant, "shared");
    EXPECT_EQ(static_cast<const void*>(outside.GetData()), constant.data());
}

TEST(Filters, ReadWhatIsStoredAndTellWhatIsWrong) {
    CheckCases(QUILLOREA_STREAM_CASES "/filter_cases.txt", [](const std::string& given) {
        const std::size_t blank = given.find(' ');
        const std::string stored = given.substr(blank + 1);
        MMemoryStream memory = Over(stored);
        const auto stream = Make(given.substr(0, blank), memory, false);
        std::string result;
        const std::string reading = Raised([&] { result = ReadAll(*stream, 2); });
        result += reading;
        if (const auto* const hash = dynamic_cast<MHashStream*>(stream.get()))
            result += hash->GetHashText().ToUtf8();
        if (auto* const zlib = dynamic_cast<MZLibStream*>(stream.get())) {
            const std::string closing = Raised([&] { zlib->Close(); });
            if (!closing.empty()) result += "; " + closing;
        }
        return result;
    });
}

TEST(HexaStream, DigitsAreUpperCaseAndReadInAnyPart) {
    MMemoryStream memory;
    MHexaStream hexa(memory);
    const std::string bytes = "\xab\xcd" + RandomBytes(1000);
    WriteAll(hexa, bytes);
    EXPECT_EQ(Stored(memory).substr(0, 4), "ABCD");
    for (const int part : {1, 63, 64, 65}) {
        memory.Seek(0, MStream::kFromStart);
        EXPECT_EQ(ReadAll(hexa, part), bytes);
    }
}

TEST(ZLibStream, PythonReadsWhatIsWrittenAndTheOtherWayRound) {
    const TestFolder folder;
    const std::string python = "cd " + folder.path.string() +
                               " && '" QUILLOREA_PYTHON
                               "' -c 'import zlib; "
                               "plain = open(\"plain\", \"rb\").read(); "
                               "assert zlib.decompress(open(\"packed\", \"rb\").read()) == plain; "
                               "open(\"theirs\", \"wb\").write(zlib.compress(plain))'";
    for (const std::string& plain : {std::string(), std::string(100000, 'a'), RandomBytes(50000)}) {
        MMemoryStream memory;
        WriteAll(*Make("zlib", memory, true), plain);
        folder.SetContent("plain", plain);
        folder.SetContent("packed", Stored(memory));
        ASSERT_EQ(std::system(python.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
        const std::string theirs = folder.Content("theirs");
        for (const std::int32_t part : {1, 4096, 200000}) {
            memory = Over(theirs);
            EXPECT_EQ(ReadAll(*Make("zlib", memory, false), part), plain);
        }
    }
}

TEST(ZLibStream, ClosesQuietlyOnceAllPlainBytesAreRead) {
    MMemoryStream memory;
    WriteAll(*Make("zlib", memory, true), "twelve bytes");
    memory.Seek(0, MStream::kFromStart);
    MZLibStream stream;
    stream.OpenForDecompressing(memory);
    char text[12];
    EXPECT_TRUE(stream.Read(text, 11) == 11 && !stream.IsEnd() && stream.Read(text, 1) == 1);
    EXPECT_EQ(Raised([&] { stream.Close(); }), "");
    EXPECT_FALSE(stream.IsOpen());
}

TEST(HashStreams, GoOnBehindAHashAndNeedNoSource) {
    MMD5Stream sink;
    for (const char byte : {'a', 'b', 'c'}) sink.Write(&byte, 1), sink.GetHash();
    EXPECT_EQ(sink.GetHashText(), "900150983CD24FB0D6963F7D28E17F72");
}

TEST(BlowfishStream, GivesThePublishedChain) {
    // E. Young's vector for the chaining mode, its text filled up with zero bytes.
    const std::string plain("7654321 Now is the time for \0", 29);
    MMemoryStream memory, digits;
    MHexaStream hexa(digits);
    MBlowfishStream stream(memory);
    stream.SetInitialBlock({0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10});
    stream.SetKeyBytes("\x01\x23\x45\x67\x89\xab\xcd\xef\xf0\xe1\xd2\xc3\xb4\xa5\x96\x87");
    WriteAll(stream, plain);
    stream.Close();
    WriteAll(hexa, Stored(memory));
    EXPECT_EQ(Stored(digits), "6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC");
    memory.Seek(0, MStream::kFromStart);
    EXPECT_EQ(ReadAll(stream, 7), plain + std::string(3, '\0'));
}
