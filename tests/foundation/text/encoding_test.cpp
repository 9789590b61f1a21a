// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/encoding.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include "foundation/text/charset_tables.h"
#include "foundation/text/raised_by.h"
#include "support/byte_string.h"

namespace {

using Bytes = std::string;

const auto kUnknown = reinterpret_cast<iconv_t>(-1);

// The unit of a byte as the C library sees it: U+FFFD where the charset leaves the byte open.
MString UnitByIconv(iconv_t converter, char byte) {
    char16_t unit = 0;
    char *in = &byte, *out = reinterpret_cast<char*>(&unit);
    std::size_t inLeft = 1, outLeft = sizeof unit;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &in, &inLeft, &out, &outLeft) != 0) return MString(u'\ufffd');
    iconv(converter, nullptr, nullptr, &out, &outLeft);  // a letter that waited for its accent
    return MString(unit);
}

}  // namespace

TEST(Encoding, CodecsAreFoundByAnyOfTheirNames) {
    constexpr std::pair<const char*, const char*> kNames[] = {
        {"", "ascii"},         {"ASCII", "ascii"},  {"Utf-8", "utf8"},
        {"utf16", "utf16"},    {"UTF-16", "utf16"}, {"iso-8859-1", "windows-1252"},
        {"koi8-ru", "KOI8-U"}, {"cp874", "IBM874"}, {"LATIN2", "ISO-8859-2"}};
    for (const auto& [name, canonical] : kNames)
        EXPECT_EQ(MEncoding::GetCodec(name).GetName(), canonical) << name;
    int count = 0;
    for (const CharsetRecord& charset : CharsetTables()) {
        for (int i = 0; i < 6 && charset.names[i] != nullptr; ++i, ++count)
            EXPECT_EQ(MEncoding::GetCodec(charset.names[i]).GetName(), charset.names[0]);
    }
    EXPECT_EQ(count, 72);
    EXPECT_EQ(RaisedBy([] { MEncoding::GetCodec("latin99"); }),
              "No codec found for encoding latin99.");
}

TEST(Encoding, TablesAreThoseOfTheCLibraryAndGoBothWays) {
    int compared = 0;
    for (const CharsetRecord& charset : CharsetTables()) {
        const Bytes name = charset.names[0];
        const bool isApple = name == "Apple Roman";
        const iconv_t converter = iconv_open("UTF-16LE", isApple ? "MACINTOSH" : name.c_str());
        const MEncoding::Codec& codec = MEncoding::GetCodec(charset.names[0]);
        for (int byte = 1; byte < 256; ++byte) {
            const Bytes bytes(1, static_cast<char>(byte));
            const MString text = codec.Decode(bytes);
            EXPECT_EQ(codec.Encode(text, false), text == u"\ufffd" ? "?" : bytes) << name << byte;
            // Two characters of the C library's Apple table are older than the published ones.
            if (converter == kUnknown || (isApple && (byte == 0xc6 || byte == 0xf0))) continue;
            EXPECT_EQ(text, UnitByIconv(converter, bytes[0])) << name << byte;
            ++compared;
        }
        if (converter != kUnknown) iconv_close(converter);
    }
    EXPECT_GT(compared, 20 * 255) << "charsets that the C library knows";
    EXPECT_EQ(MEncoding::GetCodec("latin2").Encode(u"\u017elu\u0165 \u20ac", true),
              Bytes("\xbelu\xbb ?\0", 7));
}

TEST(Encoding, UnitsSurviveAsciiAndUtf16) {
    const MEncoding::Codec& ascii = MEncoding::GetCodec("ascii");
    const MEncoding::Codec& utf16 = MEncoding::GetCodec("utf16");
    const MString lone = MString(u"\u00e9\u20ac\ufeff").Append(char16_t{0xd800}).Append(u'!');
    EXPECT_EQ(utf16.Encode(lone, true), Bytes("\xe9\0\xac\x20\xff\xfe\0\xd8!\0\0\0", 12));
    EXPECT_EQ(utf16.Decode(utf16.Encode(lone, true)), lone);
    EXPECT_EQ(utf16.Decode("a"), "") << "half a unit";
    EXPECT_EQ(ascii.Encode(u"\u00e9\u20ac", true), Bytes("\xe9\xac\0", 3));
    EXPECT_EQ(ascii.Decode("\xe9\xff"), u"\u00e9\u00ff");
}

TEST(Encoding, OnlyUtf16HasAHeader) {
    const MEncoding::Codec& utf16 = MEncoding::GetCodec("utf16");
    ByteString stream;
    utf16.WriteHeader(stream);
    for (const char* const name : {"ascii", "utf8", "latin2"}) {
        MEncoding::GetCodec(name).WriteHeader(stream);
        MEncoding::GetCodec(name).ReadHeader(stream);
        EXPECT_EQ(stream.bytes, "\xff\xfe") << name;
    }
    utf16.ReadHeader(stream);
    EXPECT_EQ(RaisedBy([&] { utf16.ReadHeader(stream); }), "No more data in source stream.");
    for (const char* const wrong : {"\xfe\xff+", "\xff\xff+"}) {
        stream.bytes = wrong;
        EXPECT_EQ(RaisedBy([&] { utf16.ReadHeader(stream); }), "Invalid UTF8 header.");
        EXPECT_EQ(stream.bytes, "+");
    }
}

TEST(Encoding, LinesComeBackAsTheyWereWritten) {
    const MString lines[] = {"", "a", MString::FromUtf8(Bytes(1000, 'x')), u"\u017e\u00e9", "last"};
    for (const char* const name : {"utf8", "utf16", "windows-1250"}) {
        const MEncoding::Codec& codec = MEncoding::GetCodec(name);
        for (const int size : {1, 7, 1024}) {
            ByteString stream;
            MTextWriter writer(stream, size);
            for (const MString& line : lines) codec.WriteLine(writer, line);
            EXPECT_EQ(stream.writes, static_cast<int>(stream.bytes.size()) / size);
            writer.Flush();
            MTextReader reader(stream, size);
            MString text;
            for (const MString& line : lines)
                EXPECT_TRUE(codec.ReadLine(reader, text) && text == line) << name << size;
            EXPECT_THROW(codec.ReadLine(reader, text), MException) << name << size;
        }
    }
}

TEST(Encoding, LinesEndAtLineFeedsAndNuls) {
    ByteString stream(Bytes("\ra\r\r\n\xe2\x82\nb\0\r\nlast\r", 17));
    MTextReader reader(stream, 4);
    MString text, lines;
    const auto readAll = [&] {
        while (MEncoding::GetCodec("utf8").ReadLine(reader, text)) lines.Append(text).Append("|");
    };
    EXPECT_EQ(RaisedBy(readAll), "No more data in source stream.");
    EXPECT_EQ(lines, "a||b||last|");
}
