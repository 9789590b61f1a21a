// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_container.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "container_support.h"
#include "foundation/module/resource_writer.h"

namespace {

std::string Packed(std::string_view plain) {
    uLongf size = compressBound(plain.size());
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size,
             reinterpret_cast<const Bytef*>(plain.data()), plain.size());
    packed.resize(size);
    return packed;
}

std::string Raised(const std::string& bytes) {
    return RaisedBy([&] { MResourceContainer container(StreamOver(bytes)); });
}

}  // namespace

TEST(ResourceContainer, OpensWhatStandsInItsBlock) {
    const std::string text(5000, 'x');
    const std::string packed = Packed(text);
    const std::string entries =
        "<resource id=\"\xc3\x89tude\" offset=\"3\" size=\"4\" compressed=\"0\"/>"
        "<resourceEq id=big offset=7 size=" +
        std::to_string(packed.size()) +
        " compressed=1 />"
        "<xresource id=other filename=other.mrf /><resource id=big offset=0 size=1 />"
        "<resource id=none offset=0 size=0 />";
    const std::string bytes = ContainerBytes(entries, "...plan" + packed) + "what follows";
    const MResourceContainer container(StreamOver(bytes));

    EXPECT_EQ(ReadAll(*container.Open("etude")), "plan");
    EXPECT_EQ(ReadAll(*container.Open("big")), text) << "the first of two";
    EXPECT_EQ(container.Open("none")->GetSize(), 0);
    const std::unique_ptr<MStream> half = container.Open("BIG");
    char part[10];
    EXPECT_EQ(half->Read(part, sizeof part), 10) << "and dropped before its end";

    const MMemoryStream block = container.Attach("ETUDE");
    const auto* const end = reinterpret_cast<const std::uint8_t*>(bytes.data() + bytes.size());
    EXPECT_EQ(block.GetData(), end - 12 - packed.size() - 4) << "not a copy";
    EXPECT_EQ(RaisedBy([&] { container.Attach("big"); }),
              "0 Attempt to attach compressed resource using memory-stream.");
    for (const char* const id : {"other", "unknown"}) {
        EXPECT_EQ(RaisedBy([&] { container.Open(id); }),
                  std::string("0 Cannot find requested resource (") + id + ").");
    }
    EXPECT_EQ(RaisedBy([&] { container.Attach("unknown"); }),
              "0 Cannot find requested resource (unknown).");
    EXPECT_EQ(container.Resources().SubItems()[1]->GetName(), "resourceEq");
}

TEST(ResourceContainer, RefusesWhatIsNoContainer) {
    const std::string incomplete =
        "256 Invalid file contents. The resource container is incomplete.";
    const std::string invalid = "256 Invalid file contents. Invalid resource directory.";
    const std::string good = ContainerBytes("<resource id=a offset=1 size=2 />", "123");
    EXPECT_EQ(Raised(good), "");
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_EQ(Raised(good.substr(0, size)), incomplete) << size;
    for (const char* const entry :
         {"offset=1 size=3 id=a", "offset=4 size=0 id=a", "offset=-1 size=2 id=a",
          "offset=1 size=-1 id=a", "offset=0 id=a", "size=1 id=a", "offset=0 size=1",
          "offset=0x size=1 id=a", "offset=\"\" size=1 id=a",
          "offset=18446744073709551616 size=1 id=a", "offset=4294967296 size=1 id=a"}) {
        const std::string element = std::string("<resource ") + entry + " />";
        EXPECT_EQ(Raised(ContainerBytes(element, "123")), invalid) << entry;
    }
    EXPECT_EQ(Raised(ContainerBytes("<xresource id=a />", "")), invalid);
    EXPECT_EQ(Raised(ContainerBytes("<xresource filename=a />", "")), invalid);
    EXPECT_EQ(Raised(std::string("\x04\0\0\0\0\0\0\0<a/>", 12)), invalid);
    EXPECT_EQ(Raised(std::string("\x0b\0\0\0\0\0\0\0<solution/>", 19)), invalid);
    EXPECT_EQ(Raised(std::string(8, '\0')),
              "256 Invalid file contents. The XML does not contain any elements.");
    EXPECT_EQ(Raised(std::string(100, '\xff')), incomplete) << "sizes beyond any memory";

    const std::string broken =
        ContainerBytes("<resource id=a offset=0 size=3 compressed=1 />", "xyz");
    const MResourceContainer container(StreamOver(broken));
    EXPECT_EQ(RaisedBy([&] { ReadAll(*container.Open("a")); }),
              "256 Source compressed stream has invalid content.");
}

TEST(ResourceContainer, ReadsWhatTheWriterMakes) {
    MResourceWriter writer;
    const std::string text(3000, 'y');
    MMemoryStream plain = StreamOver("plain"), large = StreamOver(text), empty;
    writer.Add("resource", "a&b", plain, MResourceWriter::Packing::Plain);
    writer.Add("resourceEq", "large", large, MResourceWriter::Packing::Compressed)
        .SetAttribute("width", "16");
    writer.AddExternal("mstyle", "mstyle.mrf");
    writer.Add("resource", "empty", empty, MResourceWriter::Packing::Compressed);
    MMemoryStream bytes;
    writer.Save(bytes);
    EXPECT_LT(bytes.GetSize(), 600) << "compressed";
    EXPECT_EQ(MResourceContainer::SizeOf(bytes.GetData()), bytes.GetSize());

    const MResourceContainer container(bytes);
    bytes = MMemoryStream();
    EXPECT_EQ(ReadAll(*container.Open("a&b")), "plain");
    EXPECT_EQ(ReadAll(*container.Open("large")), text);
    EXPECT_EQ(ReadAll(*container.Open("empty")), "");
    EXPECT_EQ(container.Find("large")->GetAttribute("width"), "16");
    EXPECT_EQ(container.Resources().GetSubItem("xresource").GetAttribute("filename"), "mstyle.mrf");
}
