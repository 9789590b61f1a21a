// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_container.h"

#include <algorithm>
#include <utility>

#include "foundation/streams/zlib_stream.h"
#include "foundation/text/string_formatter.h"
#include "foundation/xml/invalid_file.h"

namespace {

std::int64_t ReadSize(const std::uint8_t* bytes) {
    std::int64_t size = 0;
    for (int i = 0; i < 4; ++i) size |= std::int64_t{bytes[i]} << (8 * i);
    return size;
}

// A decimal number of no more digits than 32 bits have; below 0 for anything else.
std::int64_t ParseSize(const MString& text) {
    std::int32_t consumed = 0;
    const std::int64_t size = MString::ToInt64(text, 10, &consumed);
    return text.IsEmpty() || text.Length() > 10 || consumed != text.Length() ? -1 : size;
}

bool IsCompressed(const MAttribute& resource) {
    return resource.GetAttribute("compressed", "0") == "1";
}

// Below 0 for what is no number.
struct Place {
    std::int64_t offset;
    std::int64_t size;
};

Place PlaceOf(const MAttribute& resource) {
    return {ParseSize(resource.GetAttribute("offset", "")),
            ParseSize(resource.GetAttribute("size", ""))};
}

struct PackedBytes {
    MMemoryStream source;
};

// The source is there before the stream over it, and longer.
class PackedResource final : private PackedBytes, public MZLibStream {
public:
    explicit PackedResource(MMemoryStream bytes) : PackedBytes{std::move(bytes)} {
        OpenForDecompressing(source);
    }
};

}  // namespace

void RaiseResourceMissing(const MString& id) {
    throw MException(MStringFormatter("Cannot find requested resource ({0}).") << id);
}

std::int64_t MResourceContainer::SizeOf(const std::uint8_t* header) {
    return kHeaderSize + ReadSize(header) + ReadSize(header + 4);
}

MResourceContainer::MResourceContainer(const MMemoryStream& source) : block(source) {
    const std::int64_t blockSize = MMemoryStream(block).GetSize();
    const std::uint8_t* const bytes = block.GetData();
    if (blockSize < kHeaderSize || blockSize < SizeOf(bytes))
        RaiseInvalidFile("The resource container is incomplete.");
    const std::int64_t directoryLength = ReadSize(bytes);
    dataLength = ReadSize(bytes + 4);
    data = bytes + kHeaderSize + directoryLength;
    MMemoryStream xml(bytes + kHeaderSize, static_cast<std::int32_t>(directoryLength));
    directory.Load(xml);
    resources = directory.Root().FindSubItem("resources");
    if (!IsDirectoryValid()) RaiseInvalidFile("Invalid resource directory.");
}

bool MResourceContainer::IsDirectoryValid() const {
    if (directory.Root().GetName().CompareNoCase("solution") != 0 || resources == nullptr)
        return false;
    return std::ranges::all_of(resources->SubItems(), [this](const MAttribute* resource) {
        const MAttributeList& attributes = resource->Attributes();
        if (attributes.Find("id") == nullptr) return false;
        if (IsExternal(*resource)) return attributes.Find("filename") != nullptr;
        const Place place = PlaceOf(*resource);
        return place.offset >= 0 && place.size >= 0 && place.offset + place.size <= dataLength;
    });
}

const MAttribute* MResourceContainer::Find(const MString& id) const {
    for (const MAttribute* const resource : resources->SubItems()) {
        if (!IsExternal(*resource) && resource->GetAttribute("id").CompareNoCase(id) == 0)
            return resource;
    }
    return nullptr;
}

const MAttribute& MResourceContainer::Get(const MString& id) const {
    const MAttribute* const resource = Find(id);
    if (resource == nullptr) RaiseResourceMissing(id);
    return *resource;
}

std::unique_ptr<MStream> MResourceContainer::Open(const MString& id) const {
    const MAttribute& resource = Get(id);
    if (IsCompressed(resource)) return std::make_unique<PackedResource>(BytesOf(resource));
    return std::make_unique<MMemoryStream>(BytesOf(resource));
}

MMemoryStream MResourceContainer::Attach(const MString& id) const {
    const MAttribute& resource = Get(id);
    if (IsCompressed(resource))
        throw MException("Attempt to attach compressed resource using memory-stream.");
    return BytesOf(resource);
}

MMemoryStream MResourceContainer::BytesOf(const MAttribute& resource) const {
    const Place place = PlaceOf(resource);
    return {data + place.offset, static_cast<std::int32_t>(place.size)};
}
