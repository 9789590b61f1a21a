// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/memory_stream.h"
#include "foundation/xml/xml_document.h"

// Makes resource containers, see MResourceContainer.
//
//     MResourceWriter writer;
//     writer.Add("resource", "layout", file, MResourceWriter::Packing::Compressed);
//     writer.Save(container);
//
// Threads  one
// Memory   holds the container until the writer ends
// Errors   std::bad_alloc beyond 2^31 - 1 bytes of data; those of the streams

class MResourceWriter {
public:
    enum class Packing { Plain, Compressed };

    MResourceWriter();

    // The rest of the source becomes a resource of that group. The directory's item, which may get
    // further attributes; valid as long as the writer.
    MAttribute& Add(const MString& group, const MString& id, MStream& source, Packing packing);
    // An xresource.
    MAttribute& AddExternal(const MString& id, const MString& filename);

    void Save(MStream& stream) const;

private:
    MAttribute& AddItem(const MString& group, const MString& id);

    MXMLDocument directory;
    MAttribute* resources = nullptr;  // in the directory
    MMemoryStream data;
};
