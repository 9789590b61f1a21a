// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/module/resource_writer.h"

#include "foundation/module/resource_container.h"
#include "foundation/streams/zlib_stream.h"

namespace {

// 9 is zlib's smallest: what is packed once is read often.
constexpr int kLevel = 9;

void CopyAll(MStream& from, MStream& to) {
    char block[4096];
    while (const std::int32_t count = from.Read(block, sizeof block)) to.Write(block, count);
}

void WriteSize(MStream& stream, std::int64_t size) {
    std::uint8_t bytes[4];
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(size >> (8 * i));
    stream.Write(bytes, sizeof bytes);
}

}  // namespace

MResourceWriter::MResourceWriter() {
    directory.Root().SetName("solution");
    resources = &directory.Root().AddSubItem("resources");
}

MAttribute& MResourceWriter::Add(const MString& group, const MString& id, MStream& source,
                                 Packing packing) {
    const std::int64_t offset = data.GetSize();
    if (packing == Packing::Compressed) {
        MZLibStream packed;
        packed.OpenForCompressing(data, kLevel);
        CopyAll(source, packed);
        packed.Close();
    } else {
        CopyAll(source, data);
    }
    MAttribute& item = AddItem(group, id);
    item.SetAttribute("offset", MString::FromInt(offset));
    item.SetAttribute("size", MString::FromInt(data.GetSize() - offset));
    if (packing == Packing::Compressed) item.SetAttribute("compressed", "1");
    return item;
}

MAttribute& MResourceWriter::AddExternal(const MString& id, const MString& filename) {
    MAttribute& item = AddItem(MResourceContainer::kExternal, id);
    item.SetAttribute("filename", filename);
    return item;
}

MAttribute& MResourceWriter::AddItem(const MString& group, const MString& id) {
    MAttribute& item = resources->AddSubItem(group);
    item.SetAttribute("id", id);
    return item;
}

void MResourceWriter::Save(MStream& stream) const {
    MMemoryStream xml;
    directory.Save(xml, true, "utf-8");
    MMemoryStream bytes(data);
    WriteSize(stream, xml.GetSize());
    WriteSize(stream, bytes.GetSize());
    stream.Write(xml.GetData(), static_cast<std::int32_t>(xml.GetSize()));
    stream.Write(bytes.GetData(), static_cast<std::int32_t>(bytes.GetSize()));
}
