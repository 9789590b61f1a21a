// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mstring.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

#include "foundation/text/growth.h"

namespace {

constexpr MString kName = "Depth";
static_assert(kName.Length() == 5 && kName[0] == u'D' && kName[5] == 0);
static_assert(MString(static_cast<const char*>(nullptr)).IsEmpty());

static_assert(RoundedCapacity(0) == 0 && RoundedCapacity(1) == 1 && RoundedCapacity(2) == 2);
static_assert(RoundedCapacity(3) == 4 && RoundedCapacity(4) == 4 && RoundedCapacity(5) == 8);

MString Shared(const char* ascii) { return MString::FromUtf8(ascii); }

// What stands in front of the characters of shared text: capacity in bytes, number of owners.
struct Block {
    std::uint32_t capacity;
    std::uint32_t refcount;
};

Block BlockOf(const MString& string) {
    const char* characters = nullptr;
    std::memcpy(&characters, &string, sizeof characters);
    Block block;
    std::memcpy(&block, characters - sizeof block, sizeof block);
    return block;
}

int Sign(int value) { return (value > 0) - (value < 0); }

}  // namespace

TEST(MStringForms, LiteralKeepsItsCharactersWhereTheyAre) {
    static const char literal[] = "Saturation";
    const MString string = literal;
    const MString copy = string;
    EXPECT_EQ(copy.Literal(), literal);
    EXPECT_EQ(copy.SubString(5).Literal(), literal + 5);
    EXPECT_NE(MString().Literal(), nullptr);
    EXPECT_NE(MString(u"").Literal(), nullptr);
    EXPECT_NE(MString::FromUtf8("").Literal(), nullptr);
}

TEST(MStringForms, CopiesShareABlockUntilOneIsChanged) {
    MString original = Shared("wet");
    MString copy = original;
    EXPECT_EQ(BlockOf(original).refcount, 2u);
    copy.Append(" mix");
    EXPECT_EQ(BlockOf(original).refcount, 1u);
    EXPECT_EQ(original, "wet");
    EXPECT_EQ(copy, "wet mix");

    MString moved = std::move(copy);
    EXPECT_EQ(BlockOf(moved).refcount, 1u);
    moved = original;
    moved = *&moved;
    EXPECT_EQ(BlockOf(original).refcount, 2u);
    moved = "literal again";
    EXPECT_EQ(BlockOf(original).refcount, 1u);
}

// Block sizes are units * 2 + 8 up to the next power of two.
TEST(MStringForms, BlocksGrowToPowersOfTwoAndNeverShrink) {
    MString string = "abcd";
    string.Append(u'e');  // 6 units with the terminator: 20 bytes
    EXPECT_EQ(BlockOf(string).capacity, 32u);
    string.Reserve(12);  // 32 bytes
    EXPECT_EQ(BlockOf(string).capacity, 32u);
    string.Reserve(13);  // 34 bytes
    EXPECT_EQ(BlockOf(string).capacity, 64u);
    string.Reserve(1);
    EXPECT_EQ(BlockOf(string).capacity, 64u);
    EXPECT_EQ(string, "abcde");
    for (int i = 0; i < 1000; ++i) string.Append("xyz");
    EXPECT_EQ(string.Length(), 3005);
    EXPECT_EQ(string[3005], 0);
    EXPECT_EQ(BlockOf(string).capacity, 8192u);  // 3006 units: 6020 bytes
}

TEST(MStringForms, ReserveCutsOnlyTextThatIsNotItsOwn) {
    const MString shared = Shared("hello");
    for (MString string : {MString("hello"), shared}) {
        string.Reserve(3);  // 14 bytes: four units, three letters and the terminator
        EXPECT_EQ(string, "hel");
        EXPECT_EQ(BlockOf(string).capacity, 16u);
    }
    MString full = "abcd";
    full.Reserve(4);  // 16 bytes would leave no room for the terminator
    EXPECT_EQ(full, "abcd");
    EXPECT_EQ(full[4], 0);
    EXPECT_EQ(BlockOf(full).capacity, 32u);
    MString none = "abcd";
    none.Reserve(-1);
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_EQ(none[0], 0);
}

TEST(MStringForms, FailedAllocationLeavesTheOldValue) {
    const MString other = Shared("old");
    for (MString string : {MString("old"), Shared("old"), other}) {
        EXPECT_THROW(string.Reserve(std::int64_t{1} << 30), std::bad_alloc);
        EXPECT_THROW(string.Reserve(std::int64_t{1} << 62), std::bad_alloc);
        EXPECT_EQ(string, "old");
    }
}

TEST(MStringForms, ThreadsChangeTheirCopiesOfOneBlock) {
    const MString original = Shared("shared by all");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&original, t] {
            for (int i = 0; i < 2000; ++i) {
                MString copy = original;
                const MString second = copy;
                copy.Append(static_cast<char16_t>(u'0' + t));
                ASSERT_EQ(copy[13], u'0' + t);
                ASSERT_EQ(second.Length(), 13);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(BlockOf(original).refcount, 1u);
    EXPECT_EQ(original, "shared by all");
}

// Under the thread sanitizer: what others read comes before what the last owner writes in place.
TEST(MStringForms, LastOwnerWritesAfterOthersHaveRead) {
    for (int round = 0; round < 20; ++round) {
        MString string = Shared("given away");
        std::thread reader([copy = string]() mutable {
            ASSERT_EQ(copy[10], 0);
            copy = MString();
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // most often long enough
        string.Append(u'!');
        EXPECT_EQ(string, "given away!");
        reader.join();
    }
}

TEST(MStringText, AppendsItselfAndCopiesOfItself) {
    for (MString string : {MString("ab"), Shared("ab")}) {
        string.Append(string);
        EXPECT_EQ(string, "abab");
        const MString copy = string;
        string.Append(copy).Append(u'!').Append("").Append(static_cast<const char*>(nullptr));
        EXPECT_EQ(string, "abababab!");
    }
}

TEST(MStringText, SubStringClampsToWhatThereIs) {
    struct Case {
        int start, count;
        const char* expected;
    };
    constexpr int kMost = MString::kWhole;
    constexpr Case kCases[] = {{0, kMost, "chorus"}, {0, 6, "chorus"}, {0, 5, "choru"},
                               {2, 2, "or"},         {4, kMost, "us"}, {5, 1, "s"},
                               {6, 1, ""},           {kMost, 1, ""},   {-1, 3, ""},
                               {2, 0, ""},           {2, -1, ""},      {-kMost - 1, kMost, ""}};
    const MString literal = "chorus";
    const MString shared = Shared("chorus");
    for (const Case& c : kCases) {
        EXPECT_EQ(literal.SubString(c.start, c.count), c.expected) << c.start << " " << c.count;
        EXPECT_EQ(shared.SubString(c.start, c.count), c.expected) << c.start << " " << c.count;
    }
    const MString whole = shared.SubString(0);
    EXPECT_EQ(BlockOf(shared).refcount, 2u);
}

TEST(MStringText, ReplaceGoesOnBehindWhatItInserts) {
    for (MString string : {MString("a&b&"), Shared("a&b&")}) {
        EXPECT_EQ(string.Replace(u'&', "&amp;"), 2);
        EXPECT_EQ(string, "a&amp;b&amp;");
        EXPECT_EQ(string.Replace(u'&', ""), 2);
        EXPECT_EQ(string, "aamp;bamp;");
        EXPECT_EQ(string.Replace(u'?', "!"), 0);
    }
    MString all = "xx";
    EXPECT_EQ(all.Replace(u'x', all), 2);
    EXPECT_EQ(all, "xxxx");
    EXPECT_EQ(all.Replace(u'x', MString()), 4);
    EXPECT_TRUE(all.IsEmpty());
}

TEST(MStringOrder, IsTheSameForLiteralAndSharedOperands) {
    struct Case {
        const char *a, *b;
        int maximum, plain, noCase;
    };
    constexpr int kMost = MString::kWhole;
    constexpr Case kCases[] = {
        {"", "", kMost, 0, 0},       {"", "a", kMost, -1, -1},
        {"abc", "abc", kMost, 0, 0}, {"ab", "abc", kMost, -1, -1},
        {"ab", "abc", 2, 0, 0},      {"abd", "abc", 2, 0, 0},
        {"abd", "abcx", 3, 1, 1},    {"x", "y", 0, 0, 0},
        {"x", "y", -1, 0, 0},        {"UTF-8", "utf-8", kMost, -1, 0},
        {"a", "B", kMost, 1, -1},    {"[", "a", kMost, -1, -1},
        {"Z", "_", kMost, -1, 1},  // folding to lower case, not to upper
    };
    for (const Case& c : kCases) {
        for (const MString& a : {MString(c.a), Shared(c.a)}) {
            for (const MString& b : {MString(c.b), Shared(c.b)}) {
                EXPECT_EQ(Sign(a.Compare(b, c.maximum)), c.plain) << c.a << " " << c.b;
                EXPECT_EQ(Sign(b.Compare(a, c.maximum)), -c.plain) << c.a << " " << c.b;
                EXPECT_EQ(Sign(a.CompareNoCase(b, c.maximum)), c.noCase) << c.a << " " << c.b;
            }
        }
    }
    EXPECT_LT(MString(u"\u7fff"), MString(u"\uffff"));
    EXPECT_NE(MString("ab"), "abc");
}

// By hand: the XOR of each counted character shifted left by its index.
TEST(MStringHash, MatchesHandCalculation) {
    struct Case {
        const char* text;
        std::uint32_t expected;
    };
    constexpr Case kCases[] = {
        {"", 0},
        {"a", 0x61},
        {"AB", 0x61 ^ 0x62 << 1},
        {"@@@@@@@@@@@@@@@", 0x1fffc0},  // 15 units: bits 6 to 20
        {"@@@@@@@@@@@@@@@@", 0x44440},  // 16 units: bits 6, 10, 14, 18
        {"a***b***c***d***", 0x61 ^ 0x62 << 4 ^ 0x63 << 8 ^ 0x64 << 12},
        {"a***b***c***d***ef?", 0x61 ^ 0x62 << 4 ^ 0x63 << 8 ^ 0x64 << 12},
        {"a***a***a***a***a***a***a***a***z***z***", 0x77777771},
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(MString(c.text).Hash(), c.expected) << c.text;
        EXPECT_EQ(Shared(c.text).Hash(), c.expected) << c.text;
    }
}
