// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "foundation/module/resource_container.h"
#include "foundation/streams/std_file_stream.h"
#include "foundation/xml/xml_support.h"

// A container, byte by byte: two sizes, the directory, the data.
inline std::string ContainerBytes(std::string_view resources, std::string_view data) {
    std::string xml("<solution><resources>");
    xml.append(resources).append("</resources></solution>");
    std::string bytes;
    for (const std::size_t size : {xml.size(), data.size()}) {
        for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(size >> shift);
    }
    return bytes.append(xml).append(data);
}

// In small reads, as most users read.
inline std::string ReadAll(MStream& stream) {
    std::string all;
    char part[7];
    while (const std::int32_t count = stream.Read(part, sizeof part))
        all.append(part, static_cast<std::size_t>(count));
    return all;
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
    MStdFileStream file(MString::FromUtf8(path), MStdFileStream::Mode::Write);
    file.Write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    file.Close();
}
