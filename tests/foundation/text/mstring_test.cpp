// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mstring.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

namespace {

constexpr MString kName = "Depth";
static_assert(kName.Length() == 5 && kName[0] == u'D' && kName[5] == 0);
static_assert(MString(static_cast<const char*>(nullptr)).IsEmpty());

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

TEST(MStringForms, LiteralsStayWhereTheyAreAndCopiesShareABlock) {
    static const char literal[] = "Saturation";
    EXPECT_EQ(MString(MString(literal)).SubString(5).Literal(), literal + 5);
    EXPECT_NE(MString(u"").Literal(), nullptr);
    EXPECT_NE(MString::FromUtf8("").Literal(), nullptr);

    MString original = Shared("wet");
    MString copy = original;
    EXPECT_EQ(BlockOf(original).refcount, 2u);
    copy.Append(" mix");
    EXPECT_EQ(BlockOf(original).refcount, 1u);
    EXPECT_EQ(original, "wet");
    MString moved = std::move(copy);
    EXPECT_EQ(moved, "wet mix");
    moved = original;
    moved = *&moved;
    EXPECT_EQ(BlockOf(original.SubString(0)).refcount, 3u);
    moved = "literal again";
    EXPECT_EQ(BlockOf(original).refcount, 1u);
}

// Block sizes are units * 2 + 8 up to the next power of two.
TEST(MStringForms, BlocksGrowToPowersOfTwoAndOnlyForeignTextIsCut) {
    MString string = "abcd";
    string.Append(u'e');  // 6 units with the terminator: 20 bytes
    EXPECT_EQ(BlockOf(string).capacity, 32u);
    string.Reserve(13);  // 34 bytes
    EXPECT_EQ(BlockOf(string).capacity, 64u);
    string.Reserve(1);
    EXPECT_EQ(BlockOf(string).capacity, 64u);
    EXPECT_EQ(string, "abcde");

    const MString shared = Shared("hello");
    for (MString text : {MString("hello"), shared}) {
        text.Reserve(3);  // 14 bytes: four units, three letters and the terminator
        EXPECT_EQ(text, "hel");
        EXPECT_EQ(BlockOf(text).capacity, 16u);
        EXPECT_THROW(text.Reserve(std::int64_t{1} << 30), std::bad_alloc);
        EXPECT_EQ(text, "hel");
    }
    MString full = "abcd";
    full.Reserve(4);  // 16 bytes would leave no room for the terminator
    EXPECT_EQ(full[4], 0);
    EXPECT_EQ(BlockOf(full).capacity, 32u);
}

// The last owner writes in place what others have read: the thread sanitizer watches.
TEST(MStringForms, ThreadsChangeTheirCopiesOfOneBlock) {
    MString original = Shared("shared by all");
    std::vector<std::thread> threads;
    std::atomic<int> running = 4;  // relaxed: the order comes from the block's own count
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&running, given = original, t]() mutable {
            for (int i = 0; i < 2000; ++i) {
                MString copy = given;
                const MString second = copy;
                copy.Append(static_cast<char16_t>(u'0' + t));
                ASSERT_EQ(copy[13], u'0' + t);
                ASSERT_EQ(second.Length(), 13);
            }
            given = MString();
            running.fetch_sub(1, std::memory_order_relaxed);
        });
    }
    while (running.load(std::memory_order_relaxed) > 0) std::this_thread::yield();
    original.Append(u'!');
    EXPECT_EQ(original, "shared by all!");
    for (std::thread& thread : threads) thread.join();
}

TEST(MStringText, ChangesAlsoWithItself) {
    for (MString string : {MString("ab"), Shared("ab")}) {
        string.Append(string);
        const MString copy = string;
        string.Append(copy).Append(u'!').Append("").Append(static_cast<const char*>(nullptr));
        EXPECT_EQ(string, "abababab!");
        string = string.SubString(0, 2);
        string.Insert(1, string).Insert(-1, "<").Insert(99, ">");
        EXPECT_EQ(string, "<aabb>");
        EXPECT_EQ(string[6], 0);
    }
    for (MString string : {MString("a&b&"), Shared("a&b&")}) {
        EXPECT_EQ(string.Replace(u'&', "&amp;"), 2);
        EXPECT_EQ(string, "a&amp;b&amp;");
        EXPECT_EQ(string.Replace(u'?', "!"), 0);
    }
    MString all = "xx";
    EXPECT_EQ(all.Replace(u'x', all), 2);
    EXPECT_EQ(all.Replace(u'x', MString()), 4);
    EXPECT_TRUE(all.IsEmpty());
}

TEST(MStringText, SubStringClampsToWhatThereIs) {
    struct Case {
        int start, count;
        const char* expected;
    };
    constexpr int kMost = MString::kWhole;
    constexpr Case kCases[] = {{0, kMost, "chorus"}, {0, 5, "choru"}, {2, 2, "or"},
                               {5, 9, "s"},          {6, 1, ""},      {kMost, 1, ""},
                               {-1, 3, ""},          {2, 0, ""},      {-kMost - 1, kMost, ""}};
    for (const Case& c : kCases) {
        for (const MString& text : {MString("chorus"), Shared("chorus")})
            EXPECT_EQ(text.SubString(c.start, c.count), c.expected) << c.start << " " << c.count;
    }
}

TEST(MStringOrder, IsTheSameForLiteralAndSharedOperands) {
    struct Case {
        const char *a, *b;
        int maximum, plain, noCase;
    };
    constexpr int kMost = MString::kWhole;
    constexpr Case kCases[] = {
        {"", "a", kMost, -1, -1}, {"abc", "abc", kMost, 0, 0},      {"ab", "abc", kMost, -1, -1},
        {"ab", "abc", 2, 0, 0},   {"abd", "abcx", 3, 1, 1},         {"x", "y", -1, 0, 0},
        {"a", "B", kMost, 1, -1}, {"UTF-8", "utf-8", kMost, -1, 0}, {"Z", "_", kMost, -1, 1},
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
}

// By hand: the XOR of each counted character shifted left by its index.
TEST(MStringHash, MatchesHandCalculation) {
    constexpr std::pair<const char*, std::uint32_t> kCases[] = {
        {"", 0},
        {"AB", 0x61 ^ 0x62 << 1},
        {"@@@@@@@@@@@@@@@", 0x1fffc0},  // 15 units: bits 6 to 20
        {"a***b***c***d***ef?", 0x61 ^ 0x62 << 4 ^ 0x63 << 8 ^ 0x64 << 12},
        {"a***a***a***a***a***a***a***a***z***z***", 0x77777771},
    };
    for (const auto& [text, expected] : kCases) {
        EXPECT_EQ(MString(text).Hash(), expected) << text;
        EXPECT_EQ(Shared(text).Hash(), expected) << text;
    }
}
