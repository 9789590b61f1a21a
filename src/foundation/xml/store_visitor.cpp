// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/store_visitor.h"

void MStoreVisitor::Text(const MString& key, MString& value, const MString& standard) const {
    if (!storing) {
        value = node.GetAttribute(key, standard);
    } else if (value == standard) {
        node.DeleteAttribute(key);
    } else {
        node.SetAttribute(key, value);
    }
}

void MStoreVisitor::Flag(const MString& key, bool& value, bool standard) const {
    std::int64_t number = value;
    WideNumber(key, number, standard);
    value = number != 0;
}

void MStoreVisitor::WideNumber(const MString& key, std::int64_t& value,
                               std::int64_t standard) const {
    MString text = MString::FromInt(value);
    Text(key, text, MString::FromInt(standard));
    value = MString::ToInt64(text);
}
