// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/storable.h"

bool MStorable::Save(MAttribute& item) {
    item.SetAttribute(name, GetString());
    return true;
}

bool MStorable::Load(MAttribute& item) {
    if (!item.HasAttribute(name)) return OnMissing();
    SetString(item.GetCachedAttribute());
    return true;
}
