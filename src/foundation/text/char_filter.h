// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// What an edit field lets its user type.
//
//     if (MCharFilter::FloatFilter::Get().IsAllowed(character)) ...
//
// Threads  any; filters hold no state
// Errors   none

class MCharFilter {
public:
    enum Class : std::uint8_t {
        kLetters = 1,
        kDigits = 2,
        kPunctuation = 4,  // minus, point and blank
        kHexadecimalLetters = 8,
        kEverythingElse = 16,
    };

    class Interface {
    public:
        virtual bool IsAllowed(char16_t character) const = 0;
        // Which classes of characters come through, for the choice of a keyboard. A sum of Class
        // values; the minus of IntegerFilter does not count.
        virtual std::uint8_t GetClasses() const = 0;

    protected:
        ~Interface() = default;
    };

    class AllFilter;
    class LettersFilter;
    class AlphaFilter;        // letters, digits, minus, point, blank
    class AlphaStrictFilter;  // letters, digits
    class IntegerFilter;      // digits, minus
    class IntegerHexaFilter;  // digits, a to f, A to F
    class FloatFilter;        // digits, minus, point

private:
    template <typename Filter, int kClasses>
    class Single;
};

// The one object of a filter, and its classes.
template <typename Filter, int kClasses>
class MCharFilter::Single : public MCharFilter::Interface {
public:
    static const Filter& Get() {
        static constexpr Filter filter;
        return filter;
    }
    std::uint8_t GetClasses() const final { return kClasses; }

protected:
    ~Single() = default;
};

class MCharFilter::AllFilter final
    : public MCharFilter::Single<AllFilter, kLetters | kDigits | kPunctuation | kEverythingElse> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::LettersFilter final : public MCharFilter::Single<LettersFilter, kLetters> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::AlphaFilter final
    : public MCharFilter::Single<AlphaFilter, kLetters | kDigits | kPunctuation> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::AlphaStrictFilter final
    : public MCharFilter::Single<AlphaStrictFilter, kLetters | kDigits> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::IntegerFilter final : public MCharFilter::Single<IntegerFilter, kDigits> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::IntegerHexaFilter final
    : public MCharFilter::Single<IntegerHexaFilter, kDigits | kHexadecimalLetters> {
public:
    bool IsAllowed(char16_t character) const override;
};

class MCharFilter::FloatFilter final
    : public MCharFilter::Single<FloatFilter, kDigits | kPunctuation> {
public:
    bool IsAllowed(char16_t character) const override;
};
