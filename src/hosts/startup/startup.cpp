// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/startup/startup.h"

#include "foundation/objects/event_target.h"
#include "foundation/objects/guarded.h"
#include "foundation/objects/lock.h"

const ResourceBlocks kLinkedResources = {{{nullptr, 0}, {nullptr, 0}}};

namespace {

// Never destroyed: hosts make and delete instances while the process ends.
MLock& ModuleInitLock() {
    static MLock* const lock = new MLock;
    return *lock;
}

void AddBlock(MModule& module, const ResourceBlock& block) {
    try {
        module.globalResources.Add(MMemoryStream(block.data, block.size),
                                   {module.GetGlobalDataPath()});
    } catch (const MException& exception) {
        module.Log(exception.message);
    }
}

// Under the lock.
void MakeModule(const MString& name) {
    std::unique_ptr<MModule> module = MakePlatformModule();
    module->moduleName = name;
    if (MLoadGlobalResources(*module) && module->Initialize()) theModule = module.release();
}

}  // namespace

bool InitLattenkitSubSystems() {
    return Guarded("InitLattenkitSubSystems", false, [] {
        MLocker lock(ModuleInitLock());
        if (theModule == nullptr) MakeModule(MString());
        return theModule != nullptr;
    });
}

MModule* EnterLattenkitLibrary(const LibraryContext* context) {
    return Guarded("LattenkitDLLInitialize", static_cast<MModule*>(nullptr), [context] {
        if (context == nullptr) return static_cast<MModule*>(nullptr);
        MLocker lock(ModuleInitLock());
        if (theModule == nullptr) {
            theAllocator = context->allocator;
            if (context->eventLock != nullptr) ShareEventLock(*context->eventLock);
            MakeModule(context->moduleName != nullptr ? MString::FromUtf8(context->moduleName)
                                                      : MString());
        }
        return theModule;
    });
}

bool MLoadGlobalResources(MModule& module, const ResourceBlocks& blocks) {
    return Guarded("MLoadGlobalResources", false, [&] {
        for (const ResourceBlock& block : blocks)
            if (block.data != nullptr) AddBlock(module, block);
        return true;
    });
}
