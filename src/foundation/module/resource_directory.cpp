// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_directory.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/streams/mfile.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/text/exception.h"
#include "foundation/xml/invalid_file.h"

namespace {

using Container = std::shared_ptr<const MResourceContainer>;

// Of the file only the container, which has to be there as a whole before memory is taken for it.
Container ReadContainer(const MString& path) {
    MStdFileStream file(path, MStdFileStream::Mode::Read);
    const std::int64_t fileSize = file.GetSize();
    std::uint8_t header[MResourceContainer::kHeaderSize] = {};
    file.Read(header, sizeof header);
    const std::int64_t size = MResourceContainer::SizeOf(header);
    if (size > std::min<std::int64_t>(fileSize, std::numeric_limits<std::int32_t>::max()))
        RaiseInvalidFile("The resource container is incomplete.");
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    file.Seek(0, MStream::kFromStart);
    if (file.Read(bytes.data(), static_cast<std::int32_t>(size)) != size) RaiseEndOfStream();
    MMemoryStream block;
    block.Write(bytes.data(), static_cast<std::int32_t>(size));
    return std::make_shared<const MResourceContainer>(block);
}

bool IsPlainFileName(const MString& name) {
    for (std::int32_t i = 0; i < name.Length(); ++i) {
        if (name[i] == u'/' || name[i] == u'\\') return false;
    }
    return !name.IsEmpty();
}

// Null where none of the folders has it, or the one that has it has a broken one.
Container FindFile(const MString& name, const MResourceDirectory::Folders& folders) {
    if (!IsPlainFileName(name)) return nullptr;
    for (const MString& folder : folders) {
        const MString path = MString(folder).Append(u'/').Append(name);
        if (!MFile::Exists(path)) continue;
        try {
            return ReadContainer(path);
        } catch (const MException&) {
            return nullptr;
        }
    }
    return nullptr;
}

}  // namespace

void MResourceDirectory::Add(const MMemoryStream& block, const Folders& folders) {
    AddContainer(std::make_shared<const MResourceContainer>(block), folders);
}

void MResourceDirectory::AddFile(const MString& path, const Folders& folders) {
    AddContainer(ReadContainer(path), folders);
}

// Files may name each other and themselves; each is read once.
void MResourceDirectory::AddContainer(Container container, const Folders& folders) {
    containers.push_back(container);
    std::map<MString, Container> files;
    std::vector<Container> pending = {std::move(container)};
    while (!pending.empty()) {
        const Container next = std::move(pending.back());
        pending.pop_back();
        for (const MAttribute* const resource : next->Resources().SubItems()) {
            if (!MResourceContainer::IsExternal(*resource)) continue;
            const MString name = resource->GetAttribute("filename");
            const auto [file, isNew] = files.try_emplace(name);
            if (isNew) file->second = FindFile(name, folders);
            if (file->second == nullptr) continue;
            externals.try_emplace(resource->GetAttribute("id"), file->second);
            if (isNew) pending.push_back(file->second);
        }
    }
}

const MResourceContainer* MResourceDirectory::FindContainer(const MString& id) const {
    const auto found = externals.find(id);
    return found != externals.end() ? found->second.get() : nullptr;
}

const MResourceContainer& MResourceDirectory::Holder(const MString& id) const {
    for (const Container& container : containers) {
        if (container->Find(id) != nullptr) return *container;
    }
    RaiseResourceMissing(id);
}
