// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "parameters/values/enumerations.h"
#include "parameters/values/value_checks.h"
#include "parameters/values/value_decorators.h"
#include "parameters/values/value_list.h"
#include "parameters/values/value_scales.h"
#include "support/allocation_trap.h"
#include "support/rows.h"

// The rows of value_cases.txt, which says what they mean.

namespace {

using MakeValue = std::unique_ptr<MValue> (*)();

// A value of a default and a range, where these are told.
template <typename Value, auto... range>
std::unique_ptr<MValue> Make() {
    return std::make_unique<Value>(MValueRef(), range...);
}

// A text without a value, told as if it had one.
template <auto text>
struct Told : MValueDouble {
    using MValueDouble::MValueDouble;
    MString TextOf(double number) const override { return text(number); }
};

struct Inner {
    MValueDouble inner;
};

// A scale over a number of its own.
template <typename Scale>
struct Scaled : Inner, Scale {
    explicit Scaled(const MValueRef&) : Scale(inner) {}
};

constexpr const char* kModes[] = {"Off", "Slow", "Fast"};

const std::map<std::string, MakeValue> kClasses = {
    {"Decibels", Make<Told<DecibelNumberText>>},
    {"Degrees", Make<MValueDegreesFrom01>},
    {"Double", Make<MValueDouble>},
    {"Float", Make<MValueFloat>},
    {"Frequency", Make<MValueFrequency>},
    {"FrequencyLinear", Make<MValueFrequencyLinear>},
    {"FrequencyLog", Make<MValueFrequencyLog>},
    {"Int16", Make<MValueInt16>},
    {"Int32", Make<MValueInt32>},
    {"Int64", Make<MValueInt64>},
    {"Note", Make<MValueMIDINote>},
    {"Pan", Make<MValuePan>},
    {"Percents", Make<MValuePercents>},
    {"Pitch", Make<MValuePitch>},
    {"Pitch of hertz", Make<Told<PitchText>>},
    {"Shape", Make<MValueSignalGeneratorShape>},
    {"StepDouble", Make<MValueStepDouble>},
    {"StepPercents", Make<MValueStepPercents>},
    {"Time", Make<MValueTimeMS>},
    {"Volume", Make<MValueVolume>},
    {"Frequency 20 to 110", Make<MValueFrequency, 50, 20, 110>},
    {"Pitch 0 to 20", Make<MValuePitch, 1, 0, 20>},
    {"Int32 -1500 to 1499", Make<MValueInt32, 0, -1500, 1499>},
    {"Double 3 to 3", Make<MValueDouble, 5, 3, 3>},
    {"Square", Make<Scaled<MValueScaleSqr>>},
    {"Fourth power", Make<Scaled<MValueScalePower<4>>>},
    {"List", Make<MValueLiteralList, kModes, 3, 2>},
    {"Country", Make<MValueEnum<MLocale::Country>>},
    {"Language", Make<MValueEnum<MLocale::Language>>},
    {"MultiParameterMode", Make<MValueEnum<MMultiParameterMode>>},
    {"MultiParameterValueMode", Make<MValueEnum<MMultiParameterValueMode>>},
    {"NoteControllerMode", Make<MValueEnum<MNoteControllerMode>>},
    {"Priority", Make<MValueEnum<MThread::Priority>>},
    {"RangeMode", Make<MValueEnum<MRangeMode>>}};

void SetAttribute(MValue& value, const Row& row) {
    TestItem item{{MString::FromUtf8(row.left), MString::FromUtf8(row.right)}};
    value.LoadXmlAttributes(item);
}

void CheckTold(MValue& value, const Row& row) {
    value.SetString(MString::FromUtf8(row.left));
    MString text;
    {
        AllocationTrap trap("text");
        text = value.GetText();
        if (trap.Calls() <= 1 || row.sign == "~>") trap.Forgive();
    }
    EXPECT_EQ(text.ToUtf8(), row.right);
}

void CheckTyped(MValue& value, const Row& row) {
    const std::string before = value.GetString().ToUtf8();
    const bool stays = row.left == "same";
    value.ClearChanged();
    EXPECT_EQ(value.SetText(MString::FromUtf8(row.right)), !stays);
    EXPECT_EQ(value.HasChanged(), !stays);
    EXPECT_EQ(value.GetString().ToUtf8(), stays ? before : row.left);
}

void CheckMove(MValue& value, const Row& row) {
    const MString ahead = value.GetTextFrom01(row.Number());
    {
        AllocationTrap trap("Set01 and Limit");
        value.Set01(row.Number());
        value.Limit();
    }
    EXPECT_EQ(value.GetString().ToUtf8(), row.right);
    EXPECT_EQ(value.GetTextInternal(), ahead);
}

void CheckStep(MValue& value, const Row& row) {
    const std::string before = value.GetString().ToUtf8();
    const bool changed = row.left == "fine"   ? value.StepFine(1)
                         : row.left == "step" ? value.Step(1, 0)
                                              : value.Step(1, 31);
    EXPECT_EQ(value.GetString().ToUtf8(), row.right);
    EXPECT_EQ(changed, row.right != before);
}

void CheckPosition(MValue& value, const Row& row) {
    value.SetString(MString::FromUtf8(row.right));
    AllocationTrap trap("Get01");
    EXPECT_NEAR(value.Get01(), row.Number(), 1e-12);
}

void CheckRow(MValue& value, const Row& row) {
    if (row.sign == ":=") return SetAttribute(value, row);
    if (row.sign == "<-") return CheckTyped(value, row);
    if (row.sign == "->" || row.sign == "~>") return CheckTold(value, row);
    if (row.sign == "+=") return CheckStep(value, row);
    if (row.sign == "=>") return CheckMove(value, row);
    if (row.sign == "<=") return CheckPosition(value, row);
    if (row.left == "default") value.SetDefault();
    EXPECT_EQ(value.GetString().ToUtf8(), row.right);
}

void CheckAllRows() {
    std::unique_ptr<MValue> value;
    ForEachRow(QUILLOREA_VALUE_CASES, [&](const Row& row) {
        if (row.isFirst) value = kClasses.at(row.section)();
        CheckRow(*value, row);
    });
}

}  // namespace

// Few machines have a locale with a comma, so the test makes one.
TEST(ValueCases, HoldInEveryLocale) {
    CheckAllRows();
    EXPECT_EQ(PitchText(HUGE_VAL), "");
    EXPECT_EQ(FrequencyCaption(12349, "_"), "12.3_kHz");
    const std::string folder = testing::TempDir() + "values." + std::to_string(getpid());
    const std::string make =
        "mkdir " + folder + " && localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8 2>&1";
    setenv("LOCPATH", folder.c_str(), 1);
    if (std::system(make.c_str()) != 0 || !std::setlocale(LC_ALL, "de_DE.UTF-8"))
        GTEST_SKIP() << "the package locales is missing";
    CheckAllRows();
    std::setlocale(LC_ALL, "C");
    std::filesystem::remove_all(folder);
}
