// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <span>

#include "foundation/text/mstring.h"

// The characters that stand in a document under a name.
//
// Threads  any
// Errors   std::bad_alloc

struct XmlEntity {
    char16_t character;
    MString name;
};

// The six there are, in the order in which they are looked for.
std::span<const XmlEntity> XmlEntities();

// Every '&' before the name of an entity, in any case, becomes the entity's character together with
// the name and with whatever single character stands behind it. Any other '&' stays as it is.
MString ResolveXmlEntities(MString text);

// Appends text to out, each character of the table as "&name;".
void AppendXmlEscaped(MString& out, const MString& text);
