// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/mstream.h"

// Packs a folder into a resource container. Its file "resources.mrdef" tells what goes in: it is
// the container's directory with the name of a file in the folder in place of offset and size.
//
//     <solution><resources>
//       <resource id="layout" filename="layout.xml" compressed="1"/>
//       <resourceMultiBand id="MultiBandMute0" filename="mute.tga" width="16"/>
//       <xresource id="mstyle" filename="mstyle.mrf"/>
//     </resources></solution>
//
// Attributes beyond these are kept. Of an xresource the file is not packed.
//
// Errors   MException of the files, of the XML, and "Could not find required attribute ({0})."

void PackFolder(const MString& folder, MStream& container);
