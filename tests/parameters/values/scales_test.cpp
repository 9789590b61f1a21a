// SPDX-License-Identifier: GPL-3.0-or-later
#include "parameters/values/value_scales.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "parameters/values/value_checks.h"
#include "support/allocation_trap.h"

namespace {

constexpr double kSame = std::numeric_limits<double>::infinity();  // the number stays

// Every test runs under the locale of C and under one whose decimal point is a comma, which is made
// on the spot where the machine has none.
class Scales : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam() && !SetCommaLocale()) GTEST_SKIP() << "no locale with a comma can be made";
    }
    void TearDown() override { std::setlocale(LC_ALL, "C"); }

private:
    static bool SetCommaLocale() {
        if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
            // Made aside and moved, since tests run beside each other.
            const std::string folder = testing::TempDir() + "quillorea-values-locale";
            setenv("LOCPATH", folder.c_str(), 1);
            (void)std::system(
                "{ [ -d \"$LOCPATH\" ] || { mkdir \"$LOCPATH.$$\" && "
                "localedef -i de_DE -f UTF-8 \"$LOCPATH.$$/de_DE.UTF-8\" && "
                "mv -T \"$LOCPATH.$$\" \"$LOCPATH\" || rm -rf \"$LOCPATH.$$\"; }; } "
                ">/dev/null 2>&1");
            std::setlocale(LC_ALL, "de_DE.UTF-8");
        }
        return *std::localeconv()->decimal_point == ',';
    }
};

INSTANTIATE_TEST_SUITE_P(Locale, Scales, testing::Bool(),
                         [](const auto& info) { return info.param ? "WithComma" : "C"; });

// Rows of a number and its text.
void CheckRows(auto) {}
void CheckRows(auto toText, double number, const char* text, auto... more) {
    EXPECT_EQ(toText(number), MString::FromUtf8(text)) << number;
    CheckRows(toText, more...);
}
// A text is one allocation, a literal none.
void CheckTexts(auto&& value, auto... rows) {
    const auto toText = [&value](double number) {
        value.Set(number);
        AllocationTrap trap("text");
        MString text = value.GetText();
        if (trap.Calls() <= 1) trap.Forgive();
        return text;
    };
    CheckRows(toText, rows...);
}

// Rows of a typed text and the number that it makes.
void CheckTyped(auto&&) {}
void CheckTyped(auto&& value, const char* typed, double number, auto... more) {
    constexpr double kBefore = 7;
    const bool stays = number == kSame;
    value.Set(kBefore);
    value.ClearChanged();
    EXPECT_EQ(value.SetText(MString::FromUtf8(typed)), !stays) << typed;
    EXPECT_EQ(value.HasChanged(), !stays) << typed;
    EXPECT_NEAR(value.Get(), stays ? kBefore : number, 1e-12 * std::abs(value.Get())) << typed;
    CheckTyped(value, more...);
}

template <typename Value>
Value Wide() {
    return Value({}, 1, -1e300, 1e300);
}

}  // namespace

TEST_P(Scales, TellTheirNumbers) {
    CheckTexts(Wide<MValuePercents>(), 0, "0.00%", 0.00999, "1.00%", 0.01, "1.0%", 0.25, "25.0%", 2,
               "200.0%", -0.005, "-0.50%", -1, "-100.0%");
    // 20 log10 0.3163 = -9.998, 20 log10 0.3162 = -10.0008
    CheckTexts(Wide<MValueVolume>(), 0, "silence", 9e-51, "silence", 1e-50, "-1000.0 dB", 0.1,
               "-20.0 dB", 0.3162, "-10.0 dB", 0.3163, "-10.00 dB", 0.5, "-6.02 dB", 1, "0.00 dB",
               2, "6.02 dB", 4, "12.0 dB");
    CheckTexts(Wide<MValueFrequency>(), 0, "0 Hz", 9.9e-6, "0 Hz", 1e-5, "0.0000 Hz", 0.5,
               "0.5000 Hz", 0.99999, "1.0000 Hz", 1, "1.00 Hz", 9.994, "9.99 Hz", 9.999, "10.00 Hz",
               10, "10.0 Hz", 99.94, "99.9 Hz", 100, "100 Hz", 440.49, "440 Hz", 440.5, "441 Hz",
               -440.5, "-440 Hz", 9999.4, "9999 Hz", 9999.5, "10000 Hz", 10000, "10.0 kHz", 12349,
               "12.3 kHz", -20000, "-20.0 kHz");
    CheckTexts(Wide<MValueFrequencyLinear>(), 0, "0 Hz", 440.5, "441 Hz", 10000, "10.0 kHz");
    CheckTexts(Wide<MValueFrequencyLog>(), 2, "100 Hz", -2, "0.0100 Hz", -6, "0 Hz",
               4.301029995663981, "20.0 kHz");
    CheckTexts(Wide<MValuePan>(), 0, "center", -9e-51, "center", -1, "100% left", -0.999,
               "99% left", 0.001, "0% right", 0.256, "25% right");
    CheckTexts(Wide<MValueDegreesFrom01>(), 0, "0\u00b0 (0%)", 9e-51, "0\u00b0 (0%)", 0.25,
               "90\u00b0 (25.0%)", 0.5014, "181\u00b0 (50.1%)", -0.25, "-90\u00b0 (-25.0%)");
    CheckTexts(Wide<MValueTimeMS>(), 0, "0 ms", 9e-51, "0 ms", 0.00005, "0.050 ms", 0.0000999999,
               "0.100 ms", 0.0001, "0.10 ms", 0.000999, "1.00 ms", 0.001, "1.0 ms", -0.005,
               "-5.0 ms", 0.00999, "10.0 ms", 0.01, "10 ms", 0.0125, "13 ms", 2.5, "2500 ms");
    CheckTexts(Wide<MValuePitch>(), 1, "+1.00", 0, "0.00", -0.0, "0.00", -1.5, "-1.50");
    CheckTexts(Wide<MValueStepPercents>(), 0.005, "0.50%", 0.5, "50.0%");
    CheckTexts(Wide<MValueSignalGeneratorShape>(), 0, "Exponencial", 5, "Sine", 5.004, "Sine", 5.25,
               "75% Sine, 25% Harmonics", 5.996, "Harmonics", 14.5, "50% Noise, 50% Mess", 15,
               "Mess", 20, "Mess", -1, "Exponencial");
    CheckTexts(MValueMIDINote({}, 0, -200, 200), 60, "C5", 0, "C0", 61, "C#5", 127, "G10", -1, "");
}

TEST_P(Scales, HaveTextsWithoutAValue) {
    CheckRows([](double hertz) { return FrequencyCaption(hertz, "_"); }, 0, "0_Hz", 0.5,
              "0.5000_Hz", 5, "5.00_Hz", 50, "50.0_Hz", 500, "500_Hz", 12349, "12.3_kHz");
    CheckRows(DecibelNumberText, 0, "silence", 0.5, "-6.02", 0.1, "-20.0");
    // Cents are 1200 log2(f / 440): 445 Hz is 19.6 above, 430 Hz 39.8 below.
    CheckRows(PitchText, 440, "A4 (0 cents)", 523.2511306, "C5 (0 cents)", 445, "A4 (+20 cents)",
              430, "A4 (-40 cents)", 466.1637615, "A#4 (0 cents)", 8.1757989, "C-1 (0 cents)",
              1e-40, "", 0, "", -440, "", HUGE_VAL, "");
}

TEST_P(Scales, ReadTheNumberAtTheStart) {
    CheckTyped(Wide<MValuePercents>(), "25%", 0.25, " +12.5 %", 0.125, "-5", -0.05, "1e2", 1, ".5",
               0.005, "1,5", 0.01, "", kSame, "loud", kSame, "nan", kSame, "-inf", kSame, "+-5",
               kSame, "1e999", kSame, "\u0663", kSame, "- 5", kSame, "+", kSame, "7e", 0.07);
    CheckTyped(Wide<MValuePan>(), "-25", -0.25, "25% left", 0.25, "center", kSame);
    CheckTyped(Wide<MValueDegreesFrom01>(), "90\u00b0 (25.0%)", 0.25, "\u00b0", kSame);
    CheckTyped(Wide<MValueTimeMS>(), "2500 ms", 2.5, "0.050 ms", 0.00005, "ms", kSame);
    CheckTyped(Wide<MValueFrequency>(), "440 Hz", 440, "1.5 kHz", 1.5, "Hz", kSame);
    CheckTyped(Wide<MValueFrequencyLog>(), "1000", 3, "0", kSame, "-5", kSame, "low", kSame);
    CheckTyped(Wide<MValueVolume>(), "-20.0 dB", 0.1, "6", std::pow(10, 0.3), "silence", 1, "", 1);
    CheckTyped(Wide<MValueFrequencyLinear>(), "1.5 kHz", 1.5, "Hz", kSame);
    CheckTyped(Wide<MValuePitch>(), "+1.50", 1.5, "-2", -2, "up", kSame);
    CheckTyped(Wide<MValueSignalGeneratorShape>(), "3.5", 3.5, "Sine", kSame);
    CheckTyped(MValueMIDINote({}, 0, 0, 127), "60", 60, "C5", kSame, "9876543210", 127);
}

TEST_P(Scales, FormatsShapeAndFindTheNumber) {
    const auto check = [](auto&& value, const char* format, const char* text, const char* typed,
                          double number) {
        const double before = value.Get();
        value.format = format;
        EXPECT_EQ(value.GetText(), text) << format;
        EXPECT_EQ(value.SetText(typed), number != kSame) << format;
        EXPECT_EQ(value.Get(), number == kSame ? before : number) << format;
    };
    check(MValueDouble({}, 2.5, 0, 9), "{0}", "2.5000", "3.25", 3.25);
    check(MValueDouble({}, 2.5, 0, 9), "{0;.1}x", "2.5x", "8x", 8);
    check(MValueDouble({}, 2.5, -9, 9), "at {0;+.2} dB", "at +2.50 dB", "at -3.5 dB", -3.5);
    check(MValueDouble({}, 2.5, 0, 9), "at {0}", "at 2.5000", "3", kSame);
    check(MValueDouble({}, 2.5, 0, 9), "{0;.12}", "2.5", "4", 4);
    check(MValueDouble({}, 2.5, 0, 9), "{{{0;.1}}}", "{2.5}", "{6}", 6);
    check(MValueDouble({}, 2.5, 0, 9), "{1}{0;.0}", "2", "1", kSame);
    check(MValueInt32({}, 31, 0, 99), "{0+}!", "+31!", "+7!", 7);
    check(MValueInt32({}, 31, 0, 99), "{0;05}", "00031", "00007", 7);
    check(MValueInt32({}, 31, 0, 99), "0x{0x}", "0x1F", "0x2e", 46);
}
