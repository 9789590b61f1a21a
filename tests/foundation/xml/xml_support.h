// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

#include "foundation/streams/memory_stream.h"
#include "foundation/text/exception.h"
#include "foundation/xml/tree_walk.h"
#include "foundation/xml/xml_document.h"

// How a failure of GoogleTest shows a text.
inline void PrintTo(const MString& text, std::ostream* out) { *out << text.ToUtf8(); }

inline MMemoryStream StreamOver(std::string_view bytes) {
    return {bytes.data(), static_cast<std::int32_t>(bytes.size())};
}

inline std::string BytesOf(const MMemoryStream& written) {
    MMemoryStream stream(written);
    const auto* const data = reinterpret_cast<const char*>(stream.GetData());
    return std::string(data, static_cast<std::size_t>(stream.GetSize()));
}

// "" where nothing is raised, else the code and the text.
template <typename Action>
std::string RaisedBy(Action action) {
    try {
        action();
    } catch (const MException& error) {
        return std::to_string(error.code) + " " + error.what();
    }
    return "";
}

inline void Load(MXMLDocument& document, std::string_view xml, const MXMLOptions& options = {}) {
    MMemoryStream stream = StreamOver(xml);
    document.Load(stream, options);
}

inline std::string Save(const MXMLDocument& document, bool compact,
                        const MString& encoding = "utf-8") {
    MMemoryStream stream;
    document.Save(stream, compact, encoding);
    return BytesOf(stream);
}

inline std::string TextOf(const MAttributeList& attributes) {
    std::string text;
    for (const MAttributePair* const pair : attributes) {
        text.append(" ").append(pair->name.ToUtf8());
        text.append("=[").append(pair->value.ToUtf8()).append("]");
    }
    return text;
}

// Every name, value and attribute of a tree in their order.
inline std::string Describe(const MAttribute& root) {
    std::string text;
    WalkTree(
        root,
        [&](const MAttribute& item) {
            text.append("(").append(item.GetName().ToUtf8()).append(TextOf(item.Attributes()));
            if (!item.GetValue().IsEmpty())
                text.append(" [").append(item.GetValue().ToUtf8()).append("]");
        },
        [&](const MAttribute&) { text += ')'; });
    return text;
}

inline std::string Unescape(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t kind = text[i] == '\\' ? std::string("ntr0x").find(text[i + 1]) : 5;
        plain += kind < 4 ? "\n\t\r\0"[kind] : text[i];
        if (kind == 4)
            plain.back() = static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
        if (kind <= 4) i += kind == 4 ? 3 : 1;
    }
    return plain;
}

// Each line of a file: what is given, a tab, what comes of it. How many there were.
template <typename Action>
int CheckCases(const char* path, Action action) {
    std::ifstream cases(path);
    int count = 0;
    for (std::string line; std::getline(cases, line);) {
        if (line.starts_with('#')) continue;
        const std::size_t tab = line.find('\t');
        EXPECT_EQ(action(Unescape(line.substr(0, tab))), Unescape(line.substr(tab + 1))) << line;
        ++count;
    }
    return count;
}
