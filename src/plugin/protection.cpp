// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/protection.h"

#include "foundation/text/string_formatter.h"

int NearestProtection(int subBlock) {
    for (const ProtectionRecord& protection : kProtections)
        if (protection.subBlock <= subBlock) return protection.subBlock;
    return kProtections.back().subBlock;
}

MString ProtectionText(const ProtectionRecord& protection) {
    return MStringFormatter("<p><b>{0}</b><p>{1}") << protection.name << protection.description;
}
