// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/adapter/state_text.h"

#include "foundation/xml/invalid_file.h"
#include "foundation/xml/store_visitor.h"
#include "foundation/xml/xml_document.h"
#include "plugin/frame/audio_plugin.h"

namespace {

constexpr const char* kRootName = "settings";
constexpr const char* kEncoding = "utf-8";
constexpr int kBadData = 256;

}  // namespace

void WriteState(MAudioPlugin& plugin, MByteStream& stream) {
    MXMLDocument document;
    document.Root().SetName(kRootName);
    if (!plugin.Store({true, document.Root()}))
        throw MException("Could not store the settings.", kBadData);
    document.Save(stream, false, kEncoding);
}

void ReadState(MAudioPlugin& plugin, MByteStream& stream) {
    MXMLOptions options;
    options.encoding = kEncoding;
    options.maximumBytes = kLargestState;
    options.mustBeClosed = true;
    MXMLDocument document;
    document.Load(stream, options);
    if (document.Root().GetName().CompareNoCase(kRootName) != 0)
        RaiseInvalidFile("These are no settings.");
    if (!plugin.Store({false, document.Root()}))
        throw MException("Could not load the settings.", kBadData);
}
