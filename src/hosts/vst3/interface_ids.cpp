// SPDX-License-Identifier: GPL-3.0-or-later

// The IDs of the view's interfaces, which the SDK declares, and uses in its own base classes, but
// defines in none of the sources that come with it.

#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/gui/iplugviewcontentscalesupport.h"

namespace Steinberg {

DEF_CLASS_IID(IPlugView)
DEF_CLASS_IID(IPlugFrame)
DEF_CLASS_IID(IPlugViewContentScaleSupport)
DEF_CLASS_IID(Linux::IEventHandler)
DEF_CLASS_IID(Linux::ITimerHandler)
DEF_CLASS_IID(Linux::IRunLoop)

}  // namespace Steinberg
