// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/styled_text.h"

void MStyledText::Append(const MString& part, const MStringList& styles) {
    if (part.IsEmpty()) return;
    const std::int32_t added = part.Length();
    const bool isSame = !runs.empty() && runs.back().styles == styles;
    if (!isSame) runs.push_back({0, styles});
    text.Append(part);
    runs.back().length += added;
}
