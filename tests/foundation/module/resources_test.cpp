// SPDX-License-Identifier: GPL-3.0-or-later
// Containers byte by byte, their directory with external files, and one that the build packed.
#include <gtest/gtest.h>

#include "foundation/module/resource_directory.h"
#include "foundation/streams/stream_support.h"

namespace {

// Two sizes, the directory, the data.
std::string ContainerBytes(const std::string& entries, const std::string& data) {
    const std::string xml = "<solution><resources>" + entries + "</resources></solution>";
    std::string bytes;
    for (const std::size_t size : {xml.size(), data.size()}) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(size >> shift);
    }
    return bytes + xml + data;
}

// A container whose first resource is all of its data.
std::string One(const std::string& id, const std::string& data, const std::string& more = "") {
    const std::string size = std::to_string(data.size());
    return ContainerBytes("<resource id=" + id + " offset=0 size=" + size + " />" + more, data);
}

std::string External(const std::string& id, const std::string& filename) {
    return "<xresource id=" + id + " filename=\"" + filename + "\"/>";
}

const std::string kIncomplete = "256 Invalid file contents. The resource container is incomplete.";

}  // namespace

TEST(ResourceContainer, OpensWhatStandsInItsBlock) {
    // RFC 1950 around a block that is stored as it is.
    const std::string packed(
        "\x78\x01\x01\x02\0\xfd\xff"
        "ab\x01\x26\0\xc4",
        13);
    std::string entries = "<r id=\"\xc3\x89tude\" offset=\"3\" size=\"4\" compressed=\"0\"/>";
    entries += "<r id=big offset=7 size=13 compressed=1 />";
    entries += External("other", "o") + "<r id=big offset=0 size=1 />";
    const std::string bytes = ContainerBytes(entries, "...plan" + packed) + "what follows";
    const MResourceContainer container(Over(bytes));
    EXPECT_EQ(ReadAll(*container.Open("etude")), "plan");
    EXPECT_EQ(ReadAll(*container.Open("big")), "ab") << "the first of two";
    const auto* const place = bytes.data() + bytes.find("plan");
    EXPECT_EQ(static_cast<const void*>(container.Attach("ETUDE").GetData()), place) << "no copy";
    ExpectRaised({{"0 Attempt to attach compressed resource using memory-stream.",
                   [&] { container.Attach("big"); }},
                  {"0 Cannot find requested resource (other).", [&] { container.Open("other"); }}});
}

TEST(ResourceContainer, RefusesWhatIsNoContainer) {
    const auto raised = [](const std::string& bytes) {
        return Raised([&] { MResourceContainer container(Over(bytes)); });
    };
    CheckCases(QUILLOREA_MODULE_CASES "/invalid_elements.txt", [&](const std::string& elements) {
        return raised(ContainerBytes(elements, "123"));
    });
    const std::string good = One("a", "123");
    EXPECT_EQ(raised(good), "");
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_EQ(raised(good.substr(0, size)), kIncomplete) << size;
    EXPECT_EQ(raised(std::string(100, '\xff')), kIncomplete) << "sizes beyond any memory";
}

TEST(ResourceDirectory, AttachesTheFilesOfExternalContainers) {
    const TestFolder user, library;
    user.SetContent("style.mrf", One("a", "style", External("deep", "deep.mrf")) + "behind");
    library.SetContent("style.mrf", One("a", "shadowed"));
    library.SetContent("deep.mrf", One("a", "deep", External("me", "deep.mrf")));
    user.SetContent("broken.mrf", One("a", "broken").substr(0, 20));
    library.SetContent("broken.mrf", One("a", "whole"));
    const std::string elsewhere = "../" + library.path.filename().string() + "/deep.mrf";
    const std::string linked =
        One("a", "linked",
            External("Style", "style.mrf") + External("style", "deep.mrf") +
                External("broken", "broken.mrf") + External("missing", "missing.mrf") +
                External("path", elsewhere));
    MResourceDirectory resources;
    resources.Add(Over(linked), {user / "", library / ""});
    const auto found = [&](const char* container) {
        return ReadAll(*resources.FindContainer(container)->Open("a"));
    };
    EXPECT_EQ(found("style"), "style");
    EXPECT_EQ(found("deep"), "deep");
    EXPECT_EQ(resources.FindContainer("me"), resources.FindContainer("deep")) << "read once";
    for (const char* const id : {"broken", "missing", "path", "a"})
        EXPECT_EQ(resources.FindContainer(id), nullptr) << id;
    EXPECT_EQ(ReadAll(*resources.Open("a")), "linked");
    ExpectRaised({{kIncomplete, [&] { resources.AddFile(user / "broken.mrf", {}); }},
                  {"0 File \"" + user.Path("none") + "\" could not be open. Make sure it exists.",
                   [&] { resources.AddFile(user / "none", {}); }}});
}

TEST(Pack, TheBuildPacksAFolder) {
    MResourceDirectory resources;
    resources.AddFile(QUILLOREA_SAMPLE_CONTAINER, {});
    const std::string later = One("NOTE", "of a later one");
    resources.Add(Over(later), {});
    MMemoryStream note = resources.Attach("note");
    EXPECT_EQ(ReadAll(note), "a note\n");
    EXPECT_EQ(ReadAll(*resources.Open("layout")),
              FileBytes(QUILLOREA_MODULE_CASES "/sample/layout.xml"));
    const MResourceContainer& container = *resources.Containers()[0];
    EXPECT_EQ(container.Find("layout")->GetAttribute("compressed"), "1");
    EXPECT_EQ(container.Find("note")->GetAttribute("width"), "16");
    EXPECT_EQ(container.Find("note")->GetAttribute("size"), "7");
    EXPECT_EQ(container.Resources().GetSubItem("xresource").GetAttribute("id"), "mstyle");
}
