// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "foundation/text/byte_stream.h"
#include "foundation/text/mstring.h"
#include "foundation/xml/attribute_list.h"

// How a document is read, and how much of it.
struct MXMLOptions {
    // Until a declaration in the document names another one. Of an encoding that has a header the
    // document must begin with it.
    MString encoding = "utf-8";
    int maximumDepth = 512;  // elements within each other, the root included
    std::int64_t maximumBytes = std::int64_t{64} << 20;
    // Of MXMLDocument: a document that ends before its root element does is refused.
    bool mustBeClosed = false;
};

// Reads the system's XML dialect and tells what it finds, without building a tree.
//
// Names match without regard to case and accents. Values may be unquoted and span lines; single
// quotes are no quotes. Known are the entities of XmlEntities and no others. Comments, declarations
// and processing instructions are skipped, save for the attribute "encoding" of a processing
// instruction, which rules from the next line on. CDATA is text without entities. The end of a line
// counts as one blank, and text loses the white space at its ends. Half a surrogate pair, U+FEFF
// and the codecs' escape for raw bytes are left out, since they would not be written as they were
// read.
//
// Threads  one
// Memory   holds one line and one element; the depth of the document costs nothing
// Errors   MException with code 256 and "Invalid file contents. " before the text that tells what
//          is wrong; "No codec found for encoding {0}."; what the stream and the handler raise

class MXMLParser {
public:
    virtual ~MXMLParser() = default;
    // Twice for each element, the second time with closing set and no attributes. The attributes
    // may be taken over; what is left is dropped. True stops the parse.
    virtual bool OnElement(const MString& name, MAttributeList& attributes, bool closing) = 0;
    // Never empty. True stops the parse.
    virtual bool OnText(const MString& text) = 0;

    // From where the stream stands. Whole blocks are read, also behind the point of a stop.
    void Parse(MByteStream& stream, const MXMLOptions& options = {});
};
