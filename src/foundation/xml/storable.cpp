// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/storable.h"

bool MStorable::Save(MAttribute& item) {
    item.SetAttribute(name, GetText());
    return true;
}

bool MStorable::Load(MAttribute& item) {
    if (!item.HasAttribute(name)) return OnMissing();
    SetText(item.GetCachedAttribute());
    return true;
}
