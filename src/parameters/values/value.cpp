// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value.h"

#include <algorithm>

bool MValue::OnMissing() {
    SetDefault();
    return false;
}

bool MValue::Load(MAttribute& item) {
    const bool wasThere = MStorable::Load(item);
    Limit();
    return wasThere;
}

void MValue::LoadXmlAttributes(MAttribute& item) {
    if (item.HasAttribute("id")) name = item.GetCachedAttribute();
}

MString MValue::GetText() {
    if (!customText.IsConnected()) return GetTextInternal();
    MString text;
    customText.Call({*this, text, MOnCustomTextParams::Mode::Get});
    return text;
}

bool MValue::SetText(const MString& text) {
    bool result = true;
    if (customText.IsConnected()) {
        MString typed = text;
        customText.Call({*this, typed, MOnCustomTextParams::Mode::Set});
    } else {
        result = SetTextInternal(text);
    }
    Limit();
    return result;
}

double MValue::ItemPosition(int i) const {
    const int count = GetItemCount();
    return count > 1 ? static_cast<double>(i) / (count - 1) : 0;
}

double Limited01(double position) { return position > 0 ? std::min(position, 1.0) : 0; }
