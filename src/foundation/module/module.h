// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/module/resource_directory.h"
#include "foundation/module/settings_store.h"
#include "foundation/module/user_folders.h"

// The library in the process: its name, resources, folders of the user and settings. There is one,
// made by the start-up and kept until the process ends.
//
//     MAttribute settings;
//     if (theModule != nullptr) theModule->configuration.CopyTo(settings);
//
// Nothing here writes to the user's folders; who writes a file makes its folder.
//
// Threads  made by one under the start-up's lock, read-only afterwards but for the settings, which
//          have a lock of their own
// Memory   never freed: objects that outlive the host's end may still ask it
class MModule : public MObject {
public:
    MModule() = default;
    MModule(const MModule&) = delete;
    MModule& operator=(const MModule&) = delete;

    // Once, behind the resources that are linked into the library: derives the name, unless it is
    // there already, looks for a container beside the library where none is linked into it, and
    // reads the settings. False where it did not come to its end; files that are missing or broken
    // don't matter.
    virtual bool Initialize();

    // Files that all plug-ins of this family share, and those of one of them. Empty where the user
    // has no folder.
    MString GetGlobalDataPath() const { return GetDataPath("Data"); }
    MString GetDataPath(const MString& name) const;

    // For developers: see guarded.h.
    void Log(const MString& text) const noexcept;

    // Has a sibling library, which was loaded into the process, share what this one has. Whether it
    // is one. library is the system's handle.
    bool DLLLoaded(void* library) const;

    MString moduleName;  // of the library's file, without folder and extension
    MResourceDirectory globalResources;
    MSettingsStore configuration{"GlobalConfiguration"};
    MSettingsStore pluginConfiguration{"MPluginConfiguration"};

protected:
    // The platform's part: the file of this library, and an entry of a loaded one, null where there
    // is none of that name.
    virtual MString GetLibraryFile() const = 0;
    virtual void* FindEntry(void* library, const char* entry) const = 0;

private:
    void AddArchive(const MString& libraryFile);

    const UserFolders folders = FindUserFolders();
};

// Null until the first use of the library.
extern MModule* theModule;
