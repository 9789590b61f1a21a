// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/charset_names.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

struct NameRecord {
    MString name;
    const MEncoding::TableCodec* codec;
};

bool SortsBefore(const MString& a, const MString& b) { return a.CompareNoCase(b) < 0; }

// Buckets of names by the low five bits of their hash, each in order.
class CodecTable {
public:
    CodecTable() {
        codecs.reserve(CharsetTables().size());
        for (const CharsetRecord& charset : CharsetTables()) {
            const MEncoding::TableCodec& codec = codecs.emplace_back(charset);
            for (const char* const name : charset.names) {
                if (name != nullptr) BucketOf(name).push_back({name, &codec});
            }
        }
        for (auto& bucket : buckets) std::ranges::sort(bucket, SortsBefore, &NameRecord::name);
    }

    const MEncoding::TableCodec* Find(const MString& name) {
        const auto& bucket = BucketOf(name);
        const auto found = std::ranges::lower_bound(bucket, name, SortsBefore, &NameRecord::name);
        const bool isFound = found != bucket.end() && found->name.CompareNoCase(name) == 0;
        return isFound ? found->codec : nullptr;
    }

private:
    std::vector<NameRecord>& BucketOf(const MString& name) {
        return buckets[name.Hash() % buckets.size()];
    }

    std::vector<MEncoding::TableCodec> codecs;
    std::array<std::vector<NameRecord>, 32> buckets;
};

}  // namespace

const MEncoding::TableCodec* FindTableCodec(const MString& name) {
    static CodecTable table;
    return table.Find(name);
}
