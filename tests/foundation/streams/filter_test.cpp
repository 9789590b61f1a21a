// SPDX-License-Identifier: GPL-3.0-or-later
// Filters against the outside world: Python's zlib, published vectors, broken data.
#include "foundation/streams/blowfish_stream.h"
#include "foundation/streams/hash_stream.h"
#include "foundation/streams/hexa_stream.h"
#include "foundation/streams/rsa_stream.h"
#include "foundation/streams/stream_support.h"
#include "foundation/streams/zlib_stream.h"

namespace {

std::string Hexa(const std::string& bytes) {
    MMemoryStream memory;
    MHexaStream hexa(memory);
    WriteAll(hexa, bytes);
    memory.Seek(0, MStream::kFromStart);
    return ReadAll(memory);
}

std::string Unhexa(const std::string& digits, std::int32_t part = 1000) {
    MMemoryStream memory = Over(digits);
    MHexaStream hexa(memory);
    return ReadAll(hexa, part);
}

std::string Compressed(const std::string& plain) {
    MMemoryStream memory;
    MZLibStream packed;
    packed.OpenForCompressing(memory);
    WriteAll(packed, plain.substr(0, 3000));
    if (plain.size() > 3000) WriteAll(packed, plain.substr(3000));
    EXPECT_EQ(packed.GetPosition(), static_cast<std::int64_t>(plain.size()));
    packed.Close();
    memory.Seek(0, MStream::kFromStart);
    return ReadAll(memory);
}

// The plain bytes, and what reading and closing raise.
std::string Unpacked(const std::string& packed, std::int32_t part = 1000) {
    MMemoryStream memory = Over(packed);
    MZLibStream stream;
    std::string plain;
    stream.OpenForDecompressing(memory);
    const std::string reading = Raised([&] { plain = ReadAll(stream, part); });
    return plain + (reading != "nothing" ? reading + "; " : "") + Raised([&] { stream.Close(); });
}

// Unpacks what was packed here, and packs it for the way back.
constexpr const char* kPython =
    "import zlib; plain = open(\"plain\", \"rb\").read(); "
    "assert zlib.decompress(open(\"packed\", \"rb\").read()) == plain; "
    "open(\"theirs\", \"wb\").write(zlib.compress(plain))";

}  // namespace

TEST(HexaStream, DigitsAreUpperCaseInAndEitherCaseOut) {
    EXPECT_EQ(Hexa(std::string("\x00\x7f\xab\xff", 4)), "007FABFF");
    const std::string bytes = RandomBytes(1000);
    for (const int part : {1, 63, 64, 65}) EXPECT_EQ(Unhexa(Hexa(bytes), part), bytes);
    EXPECT_EQ(Unhexa("aBcD4"), "\xab\xcd");
    for (const char* const bad : {"0G", "0/", "0:", "@0", "`0", "g0", "0 "})
        EXPECT_EQ(Raised([&] { Unhexa(bad); }),
                  "256 Invalid character to be converted to a number.");
}

TEST(ZLibStream, PythonReadsWhatIsWrittenAndTheOtherWayRound) {
    const TestFolder folder;
    for (const std::string& plain : {std::string(), std::string(100000, 'a'), RandomBytes(50000)}) {
        folder.SetContent("plain", plain);
        folder.SetContent("packed", Compressed(plain));
        const std::string python =
            "cd " + folder.path.string() + " && '" QUILLOREA_PYTHON "' -c '" + kPython + "'";
        ASSERT_EQ(std::system(python.c_str()), 0);  // NOLINT(concurrency-mt-unsafe)
        for (const std::int32_t part : {1, 4096, 200000})
            EXPECT_EQ(Unpacked(folder.Content("theirs"), part), plain + "nothing");
    }
}

TEST(ZLibStream, ClosesQuietlyOnceAllPlainBytesAreRead) {
    const std::string packed = Compressed("twelve bytes") + "behind";
    MMemoryStream memory = Over(packed);
    MZLibStream stream;
    stream.OpenForDecompressing(memory);
    char text[12];
    EXPECT_EQ(stream.Read(text, 11), 11);
    EXPECT_FALSE(stream.IsEnd());
    EXPECT_EQ(stream.Read(text, 1), 1);
    EXPECT_EQ(Raised([&] { stream.Close(); }), "nothing");
    EXPECT_FALSE(stream.IsOpen());
}

TEST(ZLibStream, BrokenAndUnfinishedDataRaise) {
    const std::string packed = Compressed(RandomBytes(9000));
    std::string flipped = packed, wrongSum = packed;
    flipped[0] = 'x' ^ 1;
    wrongSum.back() = static_cast<char>(wrongSum.back() ^ 1);
    for (const std::string& bad : {packed.substr(0, 8000), packed.substr(0, packed.size() - 1),
                                   std::string(), flipped, wrongSum})
        EXPECT_EQ(Unpacked(bad),
                  "256 Source compressed stream has invalid content.; 256 ZLIB "
                  "stream has not been terminated.");
}

TEST(ZLibStream, TellsWhatItCannotDo) {
    MMemoryStream memory;
    MZLibStream stream, reader;
    ExpectRaised(
        {{"257 Could not initialize deflating.", [&] { stream.OpenForCompressing(memory, 99); }},
         {"1 Service \"write to stream\" is not implemented.",
          [&] { reader.OpenForDecompressing(memory), WriteAll(reader, "a"); }}});
    struct Full : MStream {
    } full;  // writing is no service of it
    stream.OpenForCompressing(full, 0);
    EXPECT_NE(Raised([&] { WriteAll(stream, RandomBytes(100000)); }), "nothing");
    EXPECT_NE(Raised([&] { stream.Close(); }), "nothing");
}

TEST(HashStreams, GiveThePublishedValuesOfWhatPasses) {
    // RFC 1321, appendix A.5, and the examples of the authors of RIPEMD-160.
    const char* const kKnown[][3] = {
        {"", "D41D8CD98F00B204E9800998ECF8427E", "9C1185A5C5E9FC54612808977EE8F548B2258D31"},
        {"abc", "900150983CD24FB0D6963F7D28E17F72", "8EB208F7E05D987A9B044A8E98C6B087F15A0BFC"}};
    for (const auto& [text, md5Hash, ripemdHash] : kKnown) {
        MMemoryStream memory;
        MMD5Stream md5(&memory), sink;
        MRIPEMDStream ripemd(&memory);
        for (const char* byte = text; *byte != '\0'; ++byte) md5.Write(byte, 1), md5.GetHash();
        memory.Seek(0, MStream::kFromStart);
        EXPECT_EQ(ReadAll(ripemd, 2), text);
        EXPECT_EQ(md5.GetHashText(), md5Hash);
        EXPECT_EQ(ripemd.GetHashText(), ripemdHash);
        WriteAll(sink, text);
        EXPECT_EQ(sink.GetHash(), md5.GetHash());
        EXPECT_EQ(Raised([&] { ReadAll(sink); }),
                  "258 Cryptographic hash stream has not been initialized.");
    }
}

TEST(BlowfishStream, GivesThePublishedChain) {
    // E. Young's vector for the chaining mode, its text filled up with zero bytes.
    const std::string plain("7654321 Now is the time for \0", 29);
    MMemoryStream memory;
    MBlowfishStream stream(memory);
    stream.SetInitialBlock({0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10});
    stream.SetKeyBytes(Unhexa("0123456789ABCDEFF0E1D2C3B4A59687"));
    WriteAll(stream, plain);
    stream.Close();
    memory.Seek(0, MStream::kFromStart);
    EXPECT_EQ(ReadAll(stream, 7), plain + std::string(3, '\0'));
    memory.Seek(0, MStream::kFromStart);
    EXPECT_EQ(Hexa(ReadAll(memory)),
              "6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC");
}

TEST(CryptoStreams, RefuseMissingKeysAndBrokenBlocks) {
    const std::string data = RandomBytes(25);
    MMemoryStream first = Over(data), second(first), third(first);
    MBlowfishStream keyless(first), blowfish(first);
    MRSAStream rsa(second), publicOnly(third);
    blowfish.SetKey("eight or more");
    rsa.SetPrivateKey("1ffffffffffffffffffffff", "7ffffffffffffffffffffffffff", "10001");
    publicOnly.SetPublicKey("ffffffffffffffffffffff7fffe0000000000000000000001", "10001");
    const std::string invalid = "2 Invalid crypto key.";
    ExpectRaised(
        {{"258 Buffering stream has not been initialized.", [&] { ReadAll(keyless); }},
         {"256 No more data in source stream.", [&] { ReadAll(blowfish, 25); }},
         {"256 Invalid file contents.", [&] { ReadAll(rsa); }},
         {"1 Service \"read from stream\" is not implemented.", [&] { ReadAll(publicOnly); }},
         {invalid, [&] { blowfish.SetKey("short"); }},
         {invalid, [&] { blowfish.SetKeyLength(60); }},
         {invalid, [&] { blowfish.SetKeyLength(456); }},
         {invalid, [&] { rsa.SetPublicKey("no digits", "3"); }},
         {invalid, [&] { rsa.SetPublicKey("35", "3"); }},
         {invalid, [&] { rsa.SetPublicKey("eeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee", "3"); }}});
    EXPECT_EQ(blowfish.GetPosition(), 24);
}
