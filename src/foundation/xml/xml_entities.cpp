// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/xml/xml_entities.h"

#include <algorithm>

#include "foundation/text/character_fold.h"
#include "foundation/xml/xml_characters.h"

namespace {

constexpr XmlEntity kEntities[] = {
    {u'&', "amp"}, {u'<', "lt"}, {u'>', "gt"}, {u'\'', "apos"}, {u'"', "quot"}, {u'\n', "#10"},
};

// Whether the unit can neither be an entity nor begin one.
bool IsPlain(char16_t unit) {
    return unit > u'>' ? unit != kRawByteStart
                       : unit != u'\n' && unit != u'"' && unit != u'&' && unit != u'\'' &&
                             unit != u'<' && unit != u'>';
}

const XmlEntity* EntityOf(char16_t unit) {
    const auto* const found = std::ranges::find(kEntities, unit, &XmlEntity::character);
    return found == std::end(kEntities) ? nullptr : found;
}

// The entity whose name stands at position, as CompareNoCase sees it.
const XmlEntity* EntityAt(const MString& text, std::int32_t position) {
    for (const XmlEntity& entity : kEntities) {
        const std::int32_t length = entity.name.Length();
        if (text.Length() - position < length) continue;
        std::int32_t same = 0;
        while (same < length && FoldCharacter(text[position + same]) == entity.name[same]) ++same;
        if (same == length) return &entity;
    }
    return nullptr;
}

std::int32_t FindAmpersand(const MString& text, std::int32_t position) {
    while (position < text.Length() && text[position] != u'&') ++position;
    return position;
}

}  // namespace

std::span<const XmlEntity> XmlEntities() { return kEntities; }

MString ResolveXmlEntities(MString text) {
    std::int32_t position = FindAmpersand(text, 0);
    if (position == text.Length()) return text;
    MString resolved;
    resolved.Reserve(std::int64_t{text.Length()} + 1);
    std::int32_t copied = 0;
    while (position < text.Length()) {
        if (const XmlEntity* const entity = EntityAt(text, position + 1)) {
            resolved.Append(text.SubString(copied, position - copied)).Append(entity->character);
            position += 1 + entity->name.Length();
            copied = ++position;
        } else {
            ++position;
        }
        position = FindAmpersand(text, std::min(position, text.Length()));
    }
    return resolved.Append(text.SubString(copied));
}

void AppendXmlEscaped(MString& out, const MString& text) {
    std::int32_t plain = 0;
    while (plain < text.Length() && IsPlain(text[plain])) ++plain;
    out.Append(text.SubString(0, plain));
    for (std::int32_t i = plain; i < text.Length(); ++i) {
        const char16_t rawByte = RawByteAt(text, i);
        const XmlEntity* const entity = EntityOf(rawByte != 0 ? rawByte : text[i]);
        if (entity == nullptr) {
            out.Append(text[i]);
        } else {
            out.Append(u'&').Append(entity->name).Append(u';');
            if (rawByte != 0) ++i;
        }
    }
}
