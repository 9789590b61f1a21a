// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_document.h"
#include "plugin/frame/audio_plugin.h"
#include "support/byte_string.h"

// The state of a plug-in as it stands in a file.

inline bool LoadState(MAudioPlugin& plugin, const std::string& state) {
    ByteString bytes(state);
    MXMLDocument document;
    document.Load(bytes);
    return plugin.Store({false, document.Root()});
}

// From the root element on, in one line.
inline std::string StoredState(MAudioPlugin& plugin, bool compact = true) {
    ByteString bytes;
    MXMLDocument document;
    document.Root().SetName("settings");
    EXPECT_TRUE(plugin.Store({true, document.Root()}));
    document.Save(bytes, compact, "utf-8");
    std::erase_if(bytes.bytes, [](char c) { return c == '\r' || c == '\n'; });
    return bytes.bytes.substr(bytes.bytes.find("<settings"));
}
