// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "foundation/module/resource_container.h"

// The resources of the module: containers linked into it and files beside it.
//
//     resources.Add(MMemoryStream(linkedBlock, linkedSize), {dataFolder, libraryFolder});
//     const std::unique_ptr<MStream> layout = resources.Open("layout");
//     const MResourceContainer* const style = resources.FindContainer("mstyle");
//
// Containers are asked in the order in which they were added. The file of an xresource is attached
// under its identifier, by which its container is asked for: its resources are found there only. An
// identifier keeps the first container it gets.
//
// Threads  added to by one, then read by any
// Memory   containers are kept in memory until the directory ends; streams do not copy them
// Errors   those of MResourceContainer and of reading a file; the directory is then as it was.
//          Files that an xresource names and that are missing or broken are left out: what was
//          added has to work without

class MResourceDirectory {
public:
    using Folders = std::vector<MString>;

    // The files of the container's xresources stand in one of the folders, the first that has one.
    // Only plain file names are followed.
    void Add(const MMemoryStream& block, const Folders& folders);
    void AddFile(const MString& path, const Folders& folders);

    // See MResourceContainer.
    std::unique_ptr<MStream> Open(const MString& id) const { return Holder(id).Open(id); }
    MMemoryStream Attach(const MString& id) const { return Holder(id).Attach(id); }

    // That of an xresource; null where there is none.
    const MResourceContainer* FindContainer(const MString& id) const;
    // Those that were added, to enumerate a group.
    const std::vector<std::shared_ptr<const MResourceContainer>>& Containers() const {
        return containers;
    }

private:
    using Container = std::shared_ptr<const MResourceContainer>;

    struct LessNoCase {
        bool operator()(const MString& a, const MString& b) const { return a.CompareNoCase(b) < 0; }
    };

    const MResourceContainer& Holder(const MString& id) const;
    void AddContainer(Container container, const Folders& folders);

    std::vector<Container> containers;
    std::map<MString, Container, LessNoCase> externals;  // by identifier
};
