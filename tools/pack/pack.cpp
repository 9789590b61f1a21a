// SPDX-License-Identifier: GPL-3.0-or-later
#include "pack.h"

#include <algorithm>

#include "foundation/module/resource_container.h"
#include "foundation/module/resource_writer.h"
#include "foundation/streams/std_file_stream.h"

namespace {

using Packing = MResourceWriter::Packing;

MString InFolder(const MString& folder, const MString& name) {
    return MString(folder).Append(u'/').Append(name);
}

MAttribute& Add(MResourceWriter& writer, const MString& folder, const MAttribute& definition) {
    const MString& id = definition.GetAttribute("id");
    const MString& filename = definition.GetAttribute("filename");
    if (MResourceContainer::IsExternal(definition)) return writer.AddExternal(id, filename);
    MStdFileStream file(InFolder(folder, filename), MStdFileStream::Mode::Read);
    const bool isPacked = definition.GetAttribute("compressed", "0") == "1";
    return writer.Add(definition.GetName(), id, file,
                      isPacked ? Packing::Compressed : Packing::Plain);
}

// What the writer does not tell itself.
bool IsKept(const MString& attribute) {
    constexpr MString kOwn[] = {"id", "filename", "offset", "size", "compressed"};
    return std::ranges::none_of(
        kOwn, [&](const MString& own) { return own.CompareNoCase(attribute) == 0; });
}

}  // namespace

void PackFolder(const MString& folder, MStream& container) {
    MStdFileStream file(InFolder(folder, "resources.mrdef"), MStdFileStream::Mode::Read);
    MXMLDocument definitions;
    definitions.Load(file);
    MResourceWriter writer;
    for (const MAttribute* const definition :
         definitions.Root().GetSubItem("resources").SubItems()) {
        MAttribute& item = Add(writer, folder, *definition);
        for (const MAttributePair* const pair : definition->Attributes()) {
            if (IsKept(pair->name)) item.SetAttribute(pair->name, pair->value);
        }
    }
    writer.Save(container);
}
