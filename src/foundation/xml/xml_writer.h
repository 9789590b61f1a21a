// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/byte_stream.h"
#include "foundation/text/encoding.h"
#include "foundation/xml/attribute.h"

// Writes trees as XML. White space at the ends of a value is lost when it is read again, line feeds
// included: entities are resolved before texts are trimmed. So are carriage returns and NULs
// anywhere. Names are not escaped, and the ASCII codec cuts units to a byte, which may be mark-up:
// what people type belongs into values and texts, in an encoding that has all characters.
//
// Threads  one; the tree does not change meanwhile
// Errors   MException "XML entity cannot have empty name." with code 256, before anything is
//          written; "No codec found for encoding {0}."; what the stream raises

enum class XmlForm {
    Pretty,   // each tag and each value on a line of its own, indented with tabs
    Compact,  // the root's tags and each of its children on a line of their own
};

void WriteXml(MByteStream& stream, const MAttribute& root, XmlForm form, const MString& encoding);
