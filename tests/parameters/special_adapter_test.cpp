// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/special_adapter.h"

#include <gmock/gmock.h>

#include "parameters/plugin_double.h"

namespace {

struct Knobs : AutomatedObject {
    MLockBase& Lock() override { return lock; }
    double values[3] = {0, 0.25, 0.5};
    struct : MLockBase {
        int Acquire(std::uint32_t) override { return depth < 0 ? 1 : (++depth, 0); }
        void Release() override { --depth; }
        int depth = 0;  // while it is negative, the lock is refused
    } lock;
};

struct KnobsAdapter : ParameterSpecialBase<Knobs> {
    using ParameterSpecialBase::ParameterSpecialBase;
    MString GetParameterValueNameFrom01(int, double) override { return {}; }
    bool ParsePositionFromText(int, const MString&, double&) override { return false; }
    double GetParameterDefaultValue(int) override { return 0; }
    MString NameOf(int index) const override { return MString::FromInt(index); }
    void Apply(int index, double p) override { Object().values[index] = p * Object().lock.depth; }
    double PositionOf(int index) const override { return Object().values[index]; }
};

}  // namespace

TEST(SpecialAdapter, SetsValuesOfItsObjectUnderTheObjectsLock) {
    PluginDouble plugin;
    MPlugin effect;
    Knobs knobs;
    SpecialParameterRecord record{"Knobs", 0, &knobs};
    plugin.AddFloat("in front", 2);
    AutomationAdapter& adapter = plugin.table.Add(
        std::make_unique<KnobsAdapter>(AutomationContext{&plugin, {}, {}}, record, 3, effect));
    plugin.table.SetIfChanged(4, 0.75, true);
    EXPECT_TRUE(effect.descriptor.flags[1] & PluginDescriptor::kUpdateDue) << "after a silent set";
    for (const int index : {-1, 0, 3}) adapter.SetParameter(index, 0.5, false);
    EXPECT_EQ(plugin.sent, "2=0.50 ");
    knobs.lock.depth = -1;
    EXPECT_THAT([&] { adapter.SetParameter(1, 1, false); },
                testing::ThrowsMessage<MException>("Could not acquire mutex."));
    EXPECT_THAT(knobs.values, testing::ElementsAre(0.5, 0.25, 0.75));
}
