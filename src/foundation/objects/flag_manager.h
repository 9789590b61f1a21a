// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <type_traits>

// Base of classes that keep a word of flags.
//
//     class MGraph : public MFlagManager<16> { ... };
//     graph.SetFlags(kShowsGrid | kIsEditable);
//
// Ranges   words of 16 or 32 bits, all clear at first
// Threads  as the class derived from it says

template <int bits>
class MFlagManager {
    static_assert(bits == 16 || bits == 32);

public:
    using Word = std::conditional_t<bits == 16, std::uint16_t, std::uint32_t>;

    Word GetFlags() const { return flags; }
    // Whether all flags of mask are set.
    bool HasFlags(Word mask) const { return (flags & mask) == mask; }
    // Sets or clears the flags of mask; the others keep their state.
    void SetFlags(Word mask, bool on = true) {
        flags = static_cast<Word>(on ? flags | mask : flags & ~mask);
    }

protected:
    ~MFlagManager() = default;

private:
    Word flags = 0;
};
