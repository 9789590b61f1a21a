// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/streams/memory_stream.h"
#include "foundation/text/mstring.h"
#include "foundation/xml/xml_document.h"

// Resources in one block of bytes: an "mrf" file or a part of the library.
//
//     MResourceContainer container(MMemoryStream(block, size));
//     const std::unique_ptr<MStream> image = container.Open("MultiBandMute0");
//
// The block begins with two 32-bit sizes, least significant byte first: of the directory and of the
// data. Behind them stand the directory, an XML document in UTF-8, and the data, the resources end
// to end. What follows is ignored.
//
//     <solution><resources>
//     <resource id="layout" offset="0" size="1200" compressed="1"/>
//     <xresource id="mstyle" filename="mstyle.mrf"/>
//     </resources></solution>
//
// The name of an element is the group of a resource, which its users choose; an xresource stands
// for a container in a file of its own. compressed tells that the bytes are zlib data. Identifiers
// are compared without regard to case and accents, and the first match counts.
//
// Units    bytes
// Ranges   a container has at most 2^31 - 1 bytes
// Threads  made by one, then read by any
// Memory   resources are never copied: the container keeps the block, and outlives all streams over
//          it
// Errors   MException "Cannot find requested resource ({0})." with code 0; where the block is no
//          container, with code 256 and "Invalid file contents. " before "The resource container is
//          incomplete.", "Invalid resource directory." or what is wrong with the XML

// MException "Cannot find requested resource ({0}).".
[[noreturn]] void RaiseResourceMissing(const MString& id);

class MResourceContainer {
public:
    static constexpr std::int32_t kHeaderSize = 8;
    // The name of an element that stands for another container.
    static constexpr MString kExternal = "xresource";

    // How long a container is that begins with these kHeaderSize bytes.
    static std::int64_t SizeOf(const std::uint8_t* header);

    // Over the block of the stream from its start on, which it shares.
    explicit MResourceContainer(const MMemoryStream& block);

    // The item whose children are the resources of all groups. Valid as long as the container.
    const MAttribute& Resources() const { return *resources; }

    static bool IsExternal(const MAttribute& resource) {
        return resource.GetName().CompareNoCase(kExternal) == 0;
    }

    // Null where there is none. An xresource is none.
    const MAttribute* Find(const MString& id) const;
    // Its plain bytes, whether or not it is compressed.
    std::unique_ptr<MStream> Open(const MString& id) const;
    // Its bytes as a block. Raises "Attempt to attach compressed resource using memory-stream."
    MMemoryStream Attach(const MString& id) const;

private:
    bool IsDirectoryValid() const;
    const MAttribute& Get(const MString& id) const;
    MMemoryStream BytesOf(const MAttribute& resource) const;

    const MMemoryStream block;
    const std::uint8_t* data = nullptr;  // in the block
    std::int64_t dataLength = 0;
    MXMLDocument directory;
    const MAttribute* resources = nullptr;  // in the directory
};
