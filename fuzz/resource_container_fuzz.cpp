// SPDX-License-Identifier: GPL-3.0-or-later
// Containers of arbitrary bytes. All resources of one that is accepted are read; what is compressed
// may be broken, what is not stands in the container.
#include <cstdlib>
#include <string>

#include "foundation/module/resource_container.h"
#include "foundation/text/exception.h"

namespace {

// Compressed data may be a thousand times as long as the container.
constexpr int kMaximumBlocks = 64;

void ReadSome(MStream& stream) {
    std::uint8_t block[4096];
    for (int i = 0; i < kMaximumBlocks && stream.Read(block, sizeof block) > 0; ++i) {
    }
}

void CheckBlock(const MResourceContainer& container, const MString& id, const std::string& bytes) {
    const auto* const start = reinterpret_cast<const std::uint8_t*>(bytes.data());
    MMemoryStream block = container.Attach(id);
    const std::uint8_t* const end = block.GetData() + block.GetSize();
    if (block.GetData() < start || end > start + bytes.size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        const MResourceContainer container(
            MMemoryStream(bytes.data(), static_cast<std::int32_t>(bytes.size())));
        for (const MAttribute* const resource : container.Resources().SubItems()) {
            const MString id = resource->GetAttribute("id");
            try {
                ReadSome(*container.Open(id));
                CheckBlock(container, id, bytes);
            } catch (const MException&) {
            }
        }
    } catch (const MException&) {
    }
    return 0;
}
