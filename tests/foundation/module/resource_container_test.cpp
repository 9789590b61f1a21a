// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_container.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>

#include "container_support.h"

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
    std::string entries = "<r id=\"\xc3\x89tude\" offset=\"3\" size=\"4\" compressed=\"0\"/>";
    entries += "<r id=big offset=7 size=" + std::to_string(packed.size()) + " compressed=1 />";
    entries += "<xresource id=other filename=o /><r id=big offset=0 size=1 />";
    const std::string bytes = ContainerBytes(entries, "...plan" + packed) + "what follows";
    const MResourceContainer container(StreamOver(bytes));
    EXPECT_EQ(ReadAll(*container.Open("etude")), "plan");
    EXPECT_EQ(ReadAll(*container.Open("big")), text) << "the first of two";

    const MMemoryStream block = container.Attach("ETUDE");
    const auto* const end = reinterpret_cast<const std::uint8_t*>(bytes.data() + bytes.size());
    EXPECT_EQ(block.GetData(), end - 12 - packed.size() - 4) << "not a copy";
    EXPECT_EQ(RaisedBy([&] { container.Attach("big"); }),
              "0 Attempt to attach compressed resource using memory-stream.");
    for (const char* const id : {"other", "unknown"}) {
        EXPECT_EQ(RaisedBy([&] { container.Open(id); }),
                  std::string("0 Cannot find requested resource (") + id + ").");
    }
}

TEST(ResourceContainer, RefusesWhatIsNoContainer) {
    const std::string incomplete =
        "256 Invalid file contents. The resource container is incomplete.";
    const std::string invalid = "256 Invalid file contents. Invalid resource directory.";
    const std::string good = ContainerBytes("<resource id=a offset=1 size=2 />", "123");
    EXPECT_EQ(Raised(good), "");
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_EQ(Raised(good.substr(0, size)), incomplete) << size;
    std::ifstream elements(QUILLOREA_INVALID_ELEMENTS);
    for (std::string element; std::getline(elements, element);)
        EXPECT_EQ(Raised(ContainerBytes(element, "123")), invalid) << element;
    EXPECT_EQ(Raised(std::string(8, '\0')),
              "256 Invalid file contents. The XML does not contain any elements.");
    EXPECT_EQ(Raised(std::string(100, '\xff')), incomplete) << "sizes beyond any memory";
}
