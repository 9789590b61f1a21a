// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "foundation/streams/stream_support.h"
#include "foundation/xml/tree_walk.h"
#include "foundation/xml/xml_document.h"

// How a failure of GoogleTest shows a text.
inline void PrintTo(const MString& text, std::ostream* out) { *out << text.ToUtf8(); }

inline void Load(MXMLDocument& document, std::string_view xml, const MXMLOptions& options = {}) {
    MMemoryStream stream = Over(xml);
    document.Load(stream, options);
}

inline std::string Save(const MXMLDocument& document, bool compact,
                        const MString& encoding = "utf-8") {
    MMemoryStream stream;
    document.Save(stream, compact, encoding);
    stream.Seek(0, MStream::kFromStart);
    return ReadAll(stream);
}

inline std::string TextOf(const MAttributeList& attributes) {
    std::string text;
    for (const MAttributePair* const pair : attributes) {
        text.append(" ").append(pair->name.ToUtf8());
        text.append("=[").append(pair->value.ToUtf8()).append("]");
    }
    return text;
}

// Every name, value and attribute of a tree in their order, whose links it checks.
inline std::string Describe(const MAttribute& root) {
    std::string text;
    WalkTree(
        root,
        [&](const MAttribute& item) {
            const MAttribute* const parent = item.Parent();
            const bool isFirst = parent == nullptr || parent->SubItems()[0] == &item;
            EXPECT_EQ(item.Level(), parent == nullptr ? 0 : parent->Level() + 1);
            EXPECT_EQ(isFirst ? &item : item.Previous()->Next(), &item);
            EXPECT_EQ(item.Previous() == nullptr, isFirst);
            text.append("(").append(item.GetName().ToUtf8()).append(TextOf(item.Attributes()));
            if (!item.GetValue().IsEmpty())
                text.append(" [").append(item.GetValue().ToUtf8()).append("]");
        },
        [&](const MAttribute&) { text += ')'; });
    return text;
}
