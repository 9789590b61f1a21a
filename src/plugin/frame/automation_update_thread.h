// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>

#include "foundation/objects/event.h"
#include "foundation/objects/event_params.h"
#include "foundation/objects/mthread.h"

class MAudioPlugin;

// Lets the controls of an editor follow parameters that change on any thread: looks ten times a
// second whether some did, and has their adapters update on the user-interface thread.
class AutomationUpdateRequestThread : public MThread, public MEventTarget {
public:
    explicit AutomationUpdateRequestThread(MAudioPlugin& plugin);
    ~AutomationUpdateRequestThread() override { Finish(); }

protected:
    std::int32_t Run() override;

private:
    void RequestUpdate();
    void UpdateEditors(const MOnNotifyParams&);

    MAudioPlugin& plugin;
    MEvent<MOnNotifyParams> update;
    std::atomic<bool> requested = false;  // an update waits on the user-interface thread
};
