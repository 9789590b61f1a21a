// SPDX-License-Identifier: GPL-3.0-or-later
// Documents of arbitrary bytes. The first byte picks the encoding that reading begins with. What
// was read is written in both forms, and reads as the same tree again.
#include <cstdlib>
#include <iterator>
#include <string>

#include "foundation/streams/memory_stream.h"
#include "foundation/text/exception.h"
#include "foundation/xml/tree_walk.h"
#include "foundation/xml/xml_document.h"

namespace {

constexpr const char* kEncodings[] = {"utf-8", "utf-16", "windows-1250", ""};

// A NUL ends a line, and a carriage return is left out.
bool Survives(const MString& text) {
    for (std::int32_t i = 0; i < text.Length(); ++i) {
        if (text[i] == 0 || text[i] == u'\r') return false;
    }
    return true;
}

bool Survives(const MAttribute& root) {
    bool survives = true;
    WalkTree(
        root,
        [&](const MAttribute& item) {
            survives = survives && Survives(item.GetName()) && Survives(item.GetValue());
            for (const MAttributePair* const pair : item.Attributes())
                survives = survives && Survives(pair->name) && Survives(pair->value);
        },
        [](const MAttribute&) {});
    return survives;
}

std::string Saved(const MXMLDocument& document, bool compact) {
    MMemoryStream stream;
    document.Save(stream, compact, "utf-8");
    const auto size = static_cast<std::size_t>(stream.GetSize());
    return std::string(reinterpret_cast<const char*>(stream.GetData()), size);
}

void CheckRoundTrip(const MXMLDocument& document) {
    const std::string compact = Saved(document, true);
    const std::string pretty = Saved(document, false);
    for (const std::string& bytes : {compact, pretty}) {
        MMemoryStream stream(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        MXMLDocument again;
        again.Load(stream);
        if (Survives(document.Root()) && Saved(again, true) != compact) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    MMemoryStream stream(data + 1, static_cast<std::int32_t>(size - 1));
    MXMLDocument document;
    bool isRead = false;
    try {
        document.Load(stream, {.encoding = kEncodings[data[0] % std::size(kEncodings)]});
        isRead = true;
    } catch (const MException&) {
    }
    if (isRead) CheckRoundTrip(document);
    return 0;
}
