// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "foundation/objects/lock.h"
#include "foundation/objects/random.h"
#include "foundation/text/exception.h"
#include "plugin/contract/plugin_host.h"

namespace {

using testing::ElementsAre;

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

    std::intptr_t Dispatch(int code, PluginArguments& arguments) override {
        codes.push_back(code);
        return MAudioEffectPlugin::Dispatch(code, arguments);
    }
    std::intptr_t Prepare(int newChannels, int newSampleRate) override {
        MAudioEffectPlugin::Prepare(newChannels, newSampleRate);
        log += "prepare ";
        return 77;
    }
    void Update() override {
        log += "update ";
        if (asksAgain) RequestUpdate();
        asksAgain = false;
    }
    void ResetParameters() override {
        MAudioEffectPlugin::ResetParameters();
        log += "reset ";
    }
    void ParameterChanged(int index) override { log += "changed" + std::to_string(index) + " "; }
    void RandomizeSpecial() override { log += "special "; }
    void Process(const TransportInfo&, const float* const*, float* const*, int) override {
        MLocker lock(descriptor.lock);
        processing = true;
        while (!mayEnd) std::this_thread::yield();
        ended = true;
    }
    std::intptr_t Tell(int code) { return CallHost(code); }

    ParameterRecord records[2];
    std::vector<int> codes;
    std::string log;
    bool asksAgain = false;
    CountedObject counted;
    static inline std::atomic<bool> processing, mayEnd, ended;
};

std::intptr_t GoodEntry(MPlugin* object, int code, PluginArguments& arguments) {
    if (object == nullptr) object = new RecordingEffect;
    if (code == PluginCommand::kCreate) return reinterpret_cast<std::intptr_t>(object);
    return object->Dispatch(code, arguments);
}

std::intptr_t EntryWithoutObject(MPlugin*, int, PluginArguments&) { return 0; }

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
    EXPECT_EQ(MPluginSystem::Create("effect", EntryWithoutObject, host), 5);
    EXPECT_EQ(MPluginSystem::Create("effect", EntryWithoutDescriptor, host), 6);
    EXPECT_EQ(host, nullptr);
    EXPECT_EQ(liveObjects, 0);
    try {
        MPluginSystem::CreateOrRaise("effect", EntryWithoutDescriptor);
        FAIL() << "nothing was raised";
    } catch (const MException& raised) {
        EXPECT_STREQ(raised.what(), "Error creating plugin.");
    }
    EXPECT_EQ(MPluginSystem::Create("effect", GoodEntry, host), 0);
    EXPECT_THAT(
        static_cast<RecordingEffect*>(host->plugin)->codes,
        ElementsAre(PluginCommand::kSetHost, PluginCommand::kGetDescriptor, PluginCommand::kInit));
    host.reset();
    EXPECT_EQ(liveObjects, 0);
}

TEST_F(Contract, AnswersMinusOneToWhatItDoesNotKnow) {
    for (int code : {-1, 8, 9, 10, 14, 16, 19, 21, 99, 108, 1000})
        EXPECT_EQ(host->Command(code), -1) << code;
}

TEST_F(Contract, PreparesUpdatesAndStartsWithoutARamp) {
    Effect().records[1].Set(0.9);
    EXPECT_EQ(LogOf(PluginCommand::kPrepare, 6, 96000), "prepare update reset ");
    EXPECT_EQ(Effect().channels, 6);
    EXPECT_EQ(Effect().sampleRate, 96000);
    EXPECT_EQ(Effect().records[1].stored, 0.9);
    EXPECT_EQ(host->Command(PluginCommand::kPrepare), 77);
}

TEST_F(Contract, AChangeUpdatesWhereTheRecordAsksForIt) {
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 0), "changed0 update ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 1), "changed1 ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, -1), "changed-1 update ");
    EXPECT_EQ(LogOf(PluginCommand::kParameterChanged, 2), "changed2 update ");
}

TEST_F(Contract, OnlyAFullRandomiseReachesTheSpecialObjects) {
    SetRandomSeed(1);
    EXPECT_EQ(LogOf(PluginCommand::kRandomize, 0.5), "update ");
    EXPECT_EQ(LogOf(PluginCommand::kRandomize, std::nextafter(1.0, 0.0)), "update ");
    EXPECT_EQ(LogOf(PluginCommand::kRandomize, 1.0), "special update ");
    EXPECT_NE(Effect().records[0].Get(), 0.5);
}

TEST_F(Contract, UpdatesOnceForManyRequestsAndKeepsOneThatComesMeanwhile) {
    Effect().log.clear();
    Effect().UpdateIfNeeded();
    EXPECT_EQ(Effect().log, "");
    Effect().RequestUpdate();
    Effect().RequestUpdate();
    Effect().asksAgain = true;
    Effect().UpdateIfNeeded();
    EXPECT_EQ(Effect().log, "update ");
    Effect().UpdateIfNeeded();
    Effect().UpdateIfNeeded();
    EXPECT_EQ(Effect().log, "update update ");
}

TEST_F(Contract, HandsWhatTheEffectTellsToTheCallback) {
    using Callback = MAudioEffectPluginHost::Callback;
    int told = 0;
    host->owner = &told;
    host->SetCallback(Callback::OnStateChanged, [](MAudioEffectPluginHost& from, PluginArguments&) {
        ++*static_cast<int*>(from.owner);
        return std::intptr_t{5};
    });
    EXPECT_EQ(Effect().Tell(2), 5);
    for (int code : {-1, 0, 1, 3, 7, 8}) EXPECT_EQ(Effect().Tell(code), -1) << code;
    EXPECT_EQ(told, 1);
    host->SetCallback(Callback::OnStateChanged, nullptr);
    EXPECT_EQ(Effect().Tell(2), -1);
}

TEST_F(Contract, DeletesArgumentsThatItWasGivenOnceTheCommandIsDone) {
    const int before = liveObjects;
    PluginArguments arguments(3, 0.25, &liveObjects, std::make_unique<CountedObject>());
    EXPECT_EQ(arguments.Integer(0), 3);
    EXPECT_EQ(arguments.Number(1), 0.25);
    EXPECT_EQ(arguments.Pointer<int>(2), &liveObjects);
    EXPECT_NE(arguments.Object(3), nullptr);
    // Read as another kind than they are.
    EXPECT_EQ(arguments.Integer(1), 0);
    EXPECT_EQ(arguments.Number(0), 0);
    EXPECT_EQ(arguments.Pointer<MObject>(3), nullptr);
    EXPECT_EQ(liveObjects, before + 1);
    host->Command(PluginCommand::kNotify, arguments);
    EXPECT_EQ(liveObjects, before);
    EXPECT_EQ(arguments.Object(3), nullptr);
    { PluginArguments neverSent(std::make_unique<CountedObject>()); }
    EXPECT_EQ(liveObjects, before);
}

TEST_F(Contract, DeletionWaitsForARunningProcess) {
    MLock lock;
    RecordingEffect::processing = RecordingEffect::mayEnd = RecordingEffect::ended = false;
    host->descriptor->lock = &lock;
    std::thread audio([effect = &Effect()] {
        const TransportInfo transport;
        PluginArguments arguments(&transport, static_cast<const float* const*>(nullptr),
                                  static_cast<float* const*>(nullptr), 64);
        effect->Dispatch(PluginCommand::kProcess, arguments);
    });
    while (!RecordingEffect::processing) std::this_thread::yield();
    std::atomic<bool> endedBeforeDeletion = false;
    std::thread owner([&] {
        host.reset();
        endedBeforeDeletion = RecordingEffect::ended.load();
    });
    // Long enough for a deletion that does not wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    RecordingEffect::mayEnd = true;
    audio.join();
    owner.join();
    EXPECT_TRUE(endedBeforeDeletion);
    EXPECT_EQ(liveObjects, 0);
}
