// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "foundation/text/exception.h"
#include "plugin/contract/plugin_host.h"

namespace {

int liveObjects = 0;  // effects and argument objects

struct CountedObject : MObject {
    CountedObject() { ++liveObjects; }
    ~CountedObject() override { --liveObjects; }
};

// An effect that notes what it is asked to do.
class RecordingEffect : public MAudioEffectPlugin {
public:
    RecordingEffect() {
        records[0].SetFloat("Mix", "mix", 0, 1, 0.5);
        records[1].SetFloat("Ramped", "ramped", 0, 1, 0.5);
        records[1].Clear(ParameterFlag::kUpdates);
        descriptor.parameters = records;
        descriptor.parameterCount = 2;
    }

    std::intptr_t Init() override { return Note("init "); }
    std::intptr_t Prepare(int newChannels, int newSampleRate) override {
        MAudioEffectPlugin::Prepare(newChannels, newSampleRate);
        return Note("prepare" + std::to_string(channels) + " " + std::to_string(sampleRate) + " ");
    }
    void Update() override { Note("update "); }
    void ResetParameters() override {
        MAudioEffectPlugin::ResetParameters();
        Note("reset ");
    }
    void ParameterChanged(int index) override { Note("changed" + std::to_string(index) + " "); }
    void RandomizeSpecial() override { Note("special "); }
    std::intptr_t Tell(int code) { return CallHost(code); }
    std::intptr_t Note(const std::string& what) {
        log += what;
        return 77;
    }

    ParameterRecord records[2];
    std::string log;
    CountedObject counted;
};

std::intptr_t GoodEntry(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) object = new RecordingEffect;
    if (code == PluginCommand::kCreate) return reinterpret_cast<std::intptr_t>(object);
    return object->Dispatch(code, arguments);
}

std::intptr_t EntryWithoutDescriptor(MPlugin* object, int code, PluginArguments& arguments) {
    return code == PluginCommand::kGetDescriptor ? 0 : GoodEntry(object, code, arguments);
}

class Contract : public testing::Test {
protected:
    RecordingEffect& Effect() { return static_cast<RecordingEffect&>(*host->plugin); }
    std::string LogOf(int code, auto... values) {
        Effect().log.clear();
        PluginArguments arguments(values...);
        host->Command(code, arguments);
        return Effect().log;
    }

    std::unique_ptr<MAudioEffectPluginHost> host =
        MPluginSystem::CreateOrRaise("effect", GoodEntry);
};

}  // namespace

TEST(PluginSystem, AnswersWhyAnEffectCouldNotBeMadeAndLeavesNothing) {
    std::unique_ptr<MAudioEffectPluginHost> host;
    EXPECT_EQ(MPluginSystem::Create("effect", nullptr, host), 4);
    const PluginEntry noObject = [](MPlugin*, int, PluginArguments&) { return std::intptr_t{0}; };
    EXPECT_EQ(MPluginSystem::Create("effect", noObject, host), 5);
    EXPECT_EQ(MPluginSystem::Create("effect", EntryWithoutDescriptor, host), 6);
    EXPECT_EQ(host, nullptr);
    EXPECT_THROW(MPluginSystem::CreateOrRaise("effect", EntryWithoutDescriptor), MException);
    EXPECT_EQ(liveObjects, 0);
    EXPECT_EQ(MPluginSystem::Create("effect", GoodEntry, host), 0);
    host.reset();
    EXPECT_EQ(liveObjects, 0);
}

TEST_F(Contract, RunsWhatEachCommandAsksFor) {
    EXPECT_EQ(Effect().log, "init ");
    for (int code : {-1, 8, 9, 10, 14, 16, 19, 21, 99, 108, 1000})
        EXPECT_EQ(host->Command(code), -1) << code;
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 0), "changed0 update ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 1), "changed1 ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, -1), "changed-1 update ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 2), "changed2 update ");
    EXPECT_EQ(LogOf(PluginCommand::kRandomize, std::nextafter(1.0, 0.0)), "update ");
    EXPECT_EQ(LogOf(PluginCommand::kRandomize, 1.0), "special update ");

    Effect().records[1].Set(0.9);
    EXPECT_EQ(LogOf(PluginCommand::kPrepare, 6, 96000), "prepare6 96000 update reset ");
    EXPECT_EQ(Effect().records[1].stored, 0.9) << "nothing ramps into the next block";
    EXPECT_EQ(host->Command(PluginCommand::kPrepare), 77);
}

TEST_F(Contract, HandsWhatTheEffectTellsToTheCallback) {
    using Callback = MAudioEffectPluginHost::Callback;
    int told = 0;
    host->owner = &told;
    host->SetCallback(Callback::OnStateChanged, [](MAudioEffectPluginHost& from, PluginArguments&) {
        ++*static_cast<int*>(from.owner);
        return std::intptr_t{5};
    });
    for (int code = -1; code <= 8; ++code) EXPECT_EQ(Effect().Tell(code), code == 2 ? 5 : -1);
    EXPECT_EQ(told, 1);
}

TEST_F(Contract, DeletesArgumentsThatItWasGivenOnceTheCommandIsDone) {
    const int before = liveObjects;
    PluginArguments arguments(3, 0.25, &liveObjects, std::make_unique<CountedObject>());
    EXPECT_EQ(arguments.Integer(0), 3);
    EXPECT_EQ(arguments.Number(1), 0.25);
    EXPECT_EQ(arguments.Pointer<int>(2), &liveObjects);
    EXPECT_NE(arguments.Object(3), nullptr);
    EXPECT_EQ(arguments.Integer(1) + arguments.Number(0), 0) << "not what they are";
    EXPECT_EQ(arguments.Pointer<MObject>(3), nullptr);
    host->Command(PluginCommand::kNotify, arguments);
    EXPECT_EQ(liveObjects, before);
    EXPECT_EQ(arguments.Object(3), nullptr);
}
