// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/byte_stream.h"
#include "foundation/xml/attribute.h"
#include "foundation/xml/xml_parser.h"

// A tree of items with a file to come from and go to. It is empty while its root has no name.
//
//     MXMLDocument document;
//     document.Load(stream);
//     double rate = ParseRate(document.Root().GetAttribute("Rate"));
//
// Threads  one at a time
// Errors   those of MXMLParser and WriteXml; of loading also MException with code 256 and "Invalid
//          file contents. " before "Invalid closing element name.", "Text outside of any element."
//          and "The XML does not contain any elements."

class MXMLDocument {
public:
    MAttribute& Root() { return root; }
    const MAttribute& Root() const { return root; }
    bool IsEmpty() const { return root.GetName().IsEmpty(); }
    void Clear() { root.Clear(); }

    // Clears the document first. What stands behind the root element is not read, and elements that
    // are open at the end of the stream count as closed, unless the options forbid it: then it
    // raises "The document ends too early." as the other errors. After an error the document has
    // what was read before it.
    void Load(MByteStream& stream, const MXMLOptions& options = {});
    // The declaration names the encoding as it is told here.
    void Save(MByteStream& stream, bool compact, const MString& encoding) const;

private:
    MAttribute root;
};
