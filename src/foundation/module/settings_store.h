// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include "foundation/objects/lock.h"
#include "foundation/xml/xml_document.h"

// Settings of the user in an XML file, which all plug-ins of a process share.
//
//     MSettingsStore configuration("GlobalConfiguration");
//     configuration.Open(folder);   // reads folder/GlobalConfiguration.xml
//     MAttribute settings;
//     configuration.CopyTo(settings);
//     configuration.Change([](MAttribute& root) { root.SetAttribute("TabletMode", "1"); });
//
// A file that is missing, broken, unreadable or larger than kLargestFile gives no settings, which
// is what defaults are. Nothing is written but by Change, which also makes the folder.
//
// Threads  any
// Locks    the store's own, before the locks of a plug-in: neither operation may be called under
//          one of those
// Errors   std::bad_alloc, what the body of a Change raises; the settings are then as they were
// Method   Change reads the file again first, so that what other processes have written stays; the
//          new file takes the place of the old one at once, and is the user's alone
class MSettingsStore {
public:
    static constexpr std::int32_t kLargestFile = 1 << 20;  // bytes

    // The file's name without its extension, which is also that of its root element.
    explicit MSettingsStore(const MString& name) : name(name) {}

    // An empty folder is one that cannot be had: settings then hold until the process ends.
    void Open(const MString& newFolder);
    // The root with all below it.
    void CopyTo(MAttribute& target) const;
    // Whether the file could be written. Where it could not, the settings hold all the same until
    // the process ends.
    bool Change(const std::function<void(MAttribute&)>& body);

private:
    MString FilePath() const;
    void Read();
    bool Write() const;

    const MString name;
    mutable MLock lock;
    MString folder;  // under lock, like the rest
    std::unique_ptr<const MXMLDocument> document = std::make_unique<MXMLDocument>();
    bool unsaved = false;  // the file does not hold what the document does
};
