// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/objects/object.h"
#include "foundation/objects/tolerances.h"
#include "foundation/text/mstring.h"

struct MStoreVisitor;

// An effect's description of one of its parameters, with the value in use.
//
// Units    min, max, default and value in the parameter's own unit: seconds, decimal logarithm of
//          hertz, 0..1. A position is 0..1 along the host's knob
// Ranges   an enumeration's value is the index into its options; a boolean's is 0 or 1
// Threads  the description is fixed once the effect is built. value, target, stored and flags are
//          words of their own, written and read without a lock from any thread
// Errors   none
//
// The laws bend a knob so that small values get more of its way:
//     value = min + (max - min) * position^n, n = 1, 2, 4

enum class ParameterType : std::int32_t {
    None = 0,
    Float = 1,
    Integer = 2,
    Enumeration = 3,
    Boolean = 4,
    Group = 5,
    Hidden = 7,  // like None, serves no host parameter
};

// Bits of the flags word; the first byte is the lowest.
namespace ParameterFlag {
inline constexpr std::uint32_t kTakesPart = 1u << 0;
inline constexpr std::uint32_t kMain = 1u << 1;        // among the few that are offered first
inline constexpr std::uint32_t kSmoothed = 1u << 3;    // moves across a block instead of jumping
inline constexpr std::uint32_t kSmoothing = 1u << 4;   // such a move is under way
inline constexpr std::uint32_t kUpdates = 1u << 5;     // a change needs the effect's Update
inline constexpr std::uint32_t kRandomizes = 1u << 6;  // takes part in randomising
inline constexpr std::uint32_t kEnabled = 1u << 10;    // can be edited at present
inline constexpr std::uint32_t kNewSection = 1u << 11;
inline constexpr std::uint32_t kRandomizesWhole = 1u << 14;  // a float that lands on whole numbers
inline constexpr std::uint32_t kGroupBits = 1u << 7 | 1u << 15 | 1u << 16;  // an advanced group

inline constexpr std::uint32_t kNew = kTakesPart | kUpdates | kRandomizes | kEnabled;
}  // namespace ParameterFlag

enum class PositionLaw : std::int32_t { Linear = 0, Square = 1, FourthPower = 2 };

// How a value becomes text and how it is read back, where neither a format nor the plain number
// will do. A text without a value is read as nothing.
struct ParameterText {
    MString (*get)(double value) = nullptr;
    std::optional<double> (*read)(const MString& text) = nullptr;
};

class ParameterRecord {
public:
    ParameterRecord() = default;
    ParameterRecord(const ParameterRecord&) = delete;
    ParameterRecord& operator=(const ParameterRecord&) = delete;

    // Describe a new record; each sets value, target and stored to the default.
    void SetFloat(MString name, MString identifier, double min, double max, double defaultValue);
    void SetInteger(MString name, MString identifier, int min, int max, int defaultValue);
    void SetEnumeration(MString name, MString identifier, std::vector<MString> options,
                        int defaultIndex);
    void SetBoolean(MString name, MString identifier, bool defaultValue);
    // A section head; with a switch its value turns the section on and off.
    void SetGroup(MString name, MString identifier, std::atomic<std::uint8_t>* onOff = nullptr);
    bool HasSwitch() const { return onOff != nullptr; }

    bool Has(std::uint32_t flag) const { return (flags.load(kRelaxed) & flag) == flag; }
    void Raise(std::uint32_t flag) { flags.fetch_or(flag, kRelaxed); }
    void Clear(std::uint32_t flag) { flags.fetch_and(~flag, kRelaxed); }

    // The value in use. A group's is its switch.
    double Get() const;
    // Stores as given, without a limit; a group without a switch ignores it.
    void Set(double newValue);

    // While a move across a block is under way, a set goes to the target and the effect takes the
    // target; otherwise both mean the value.
    double Effective() const {
        return Has(ParameterFlag::kSmoothing) ? target.load(kRelaxed) : Get();
    }
    // A value held inside the range, the default in place of a NaN: what a sound can be made of
    // whatever a host has sent.
    double InRange(double someValue) const;
    double EffectiveInRange() const { return InRange(Effective()); }
    void SetEffective(double newValue);
    void SetSmoothing(bool on);

    // Between a float's value and its position under the law. A value above max gives a position
    // above 1, one below min 0 or less; a record without a range answers 0 and its min.
    double PositionOf(double someValue) const;
    double ValueAt(double position) const;

    // Draws from the process-wide generator. amount 1 makes a value from nothing, a smaller one
    // moves around the present value by up to that share of the way. Records that do not take part
    // in randomising stay as they are unless force is set.
    void Randomize(double amount, bool force = false);

    // A value of this parameter under its identifier, as a number with a point that comes back as
    // it was; the default stays unwritten. What is read lies in the range, a whole-numbered type's
    // on whole numbers; a text without a number reads as the default. Without an identifier, and
    // for a head without a switch, nothing happens.
    void Store(const MStoreVisitor& visitor, double& someValue) const;

    static constexpr std::memory_order kRelaxed = std::memory_order_relaxed;

    std::atomic<std::uint32_t> flags = ParameterFlag::kNew;
    ParameterType type = ParameterType::None;
    MString name;
    MString identifier;            // keys the value in stored state; empty where nothing is stored
    std::vector<MString> options;  // enumeration only
    ParameterText text;            // comes before the format
    MString format;                // for MStringFormatter; empty where none is set
    MString help;  // what a tooltip tells; <name>, <value> and <control> mark words for its style
    double min = 0;
    double max = 0;
    double defaultValue = 0;
    std::atomic<double> value = 0;
    std::atomic<double> target = 0;  // where a move across a block leads
    std::atomic<double> stored = 0;  // the value at the end of the last block
    PositionLaw law = PositionLaw::Linear;

private:
    void Describe(ParameterType newType, MString newName, MString newIdentifier);
    void SetRange(double newMin, double newMax, double newDefault);

    bool IsStored() const;
    double ReadStored(const MString& storedText) const;

    double RandomFloat(double amount) const;
    double RandomStep(double amount, double span) const;
    void RandomizeSwitch(double amount);

    std::atomic<std::uint8_t>* onOff = nullptr;  // group only, owned by the effect
};

// A parameter that is a whole object with an editor of its own, such as a drawn shape.
struct SpecialParameterRecord {
    MString name;
    std::int32_t kind = 0;  // 0: a periodic shape
    MObject* object = nullptr;
    std::atomic<std::int32_t>* changeCount = nullptr;  // raised with each change of the object
};
