// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/module.h"

#include <cstdlib>
#include <string>

#include "foundation/module/library_context.h"
#include "foundation/objects/event_target.h"
#include "foundation/objects/guarded.h"
#include "foundation/streams/mfile.h"
#include "foundation/text/string_formatter.h"

MModule* theModule = nullptr;
MAllocator theAllocator{std::malloc, std::calloc, std::realloc, std::free, std::aligned_alloc};

namespace {

struct FilePath {
    MString folder;  // with a slash at its end, if there is any
    MString stem;    // of the file's name
};

FilePath SplitPath(const MString& path) {
    std::int32_t start = path.Length();
    while (start > 0 && path[start - 1] != u'/') --start;
    std::int32_t end = path.Length();
    for (std::int32_t i = start + 1; i < path.Length(); ++i) {
        if (path[i] == u'.') end = i;
    }
    return {path.SubString(0, start), path.SubString(start, end - start)};
}

}  // namespace

bool MModule::Initialize() {
    return Guarded("MModule::Initialize", false, [&] {
        const MString file = GetLibraryFile();
        if (moduleName.IsEmpty()) moduleName = SplitPath(file).stem;
        if (globalResources.Containers().empty()) AddArchive(file);
        configuration.Open(folders.settings);
        pluginConfiguration.Open(folders.settings);
        return true;
    });
}

// A container beside the library, which the library does without where it is missing or broken.
void MModule::AddArchive(const MString& libraryFile) {
    const auto [folder, stem] = SplitPath(libraryFile);
    const MString archive = MStringFormatter("{0}{1}.mrf") << folder << stem;
    if (!MFile::Exists(archive)) return;
    try {
        globalResources.AddFile(archive, {GetGlobalDataPath(), folder});
    } catch (const MException& exception) {
        Log(exception.message);
    }
}

MString MModule::GetDataPath(const MString& name) const {
    if (folders.data.IsEmpty()) return MString();
    return MStringFormatter("{0}/{1}") << folders.data << name;
}

void MModule::Log(const MString& text) const noexcept {
    Guarded("MModule::Log", [&] { ReportSwallowed("MModule::Log", MException(text)); });
}

bool MModule::DLLLoaded(void* library) const {
    return Guarded("MModule::DLLLoaded", false, [&] {
        const auto initialize =
            reinterpret_cast<LibraryEntry>(FindEntry(library, kLibraryEntryName));
        if (initialize == nullptr) return false;
        const std::string name = moduleName.ToUtf8();
        const LibraryContext context{theAllocator, &EventLock(), name.c_str()};
        return initialize(&context) != nullptr;
    });
}
