// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/frame/automation_adapter.h"

AutomationAdapter::AutomationAdapter(const AutomationContext& context)
    : bandLocal(context.bandLocal),
      plugin(context.plugin),
      sectionPrefix(context.sectionPrefix),
      namePrefix(context.namePrefix) {}

const ParameterRecord* AutomationAdapter::RecordOf(int) { return nullptr; }

void AutomationAdapter::UpdateEditor() {}

void AutomationAdapter::SendAllAutomation() {
    for (int i = 0; i < count; ++i) plugin->SendAutomation(baseIndex + i, GetParameter(i));
}
