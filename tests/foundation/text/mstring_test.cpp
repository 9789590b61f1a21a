// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/mstring.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <new>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr MString kName = "Depth";
static_assert(kName.Length() == 5 && kName[0] == u'D' && kName[5] == 0);
static_assert(MString(static_cast<const char*>(nullptr)).IsEmpty());

constexpr int kMost = MString::kWhole;

MString Shared(const char* ascii) { return MString::FromUtf8(ascii); }

// In front of the characters of shared text: 8 bytes its capacity in bytes, 4 bytes its owners.
std::uint32_t HeaderWord(const MString& string, int bytesInFront) {
    const char* characters = nullptr;
    std::uint32_t word = 0;
    std::memcpy(&characters, &string, sizeof characters);
    std::memcpy(&word, characters - bytesInFront, sizeof word);
    return word;
}

std::uint32_t CapacityOf(const MString& string) { return HeaderWord(string, 8); }

std::uint32_t OwnersOf(const MString& string) { return HeaderWord(string, 4); }

int Sign(int value) { return (value > 0) - (value < 0); }

}  // namespace

TEST(MStringForms, LiteralsStayWhereTheyAreAndCopiesShareABlock) {
    static const char literal[] = "Saturation";
    EXPECT_EQ(MString(MString(literal)).SubString(5).Literal(), literal + 5);
    EXPECT_NE(MString(u"").Literal(), nullptr);

    MString original = Shared("wet");
    MString copy = original;
    EXPECT_EQ(OwnersOf(original), 2u);
    copy.Append(" mix");
    EXPECT_EQ(OwnersOf(original), 1u);
    EXPECT_EQ(original, "wet");
    MString moved = std::move(copy);
    EXPECT_EQ(std::exchange(moved, original), "wet mix");
    moved = *&moved;
    EXPECT_EQ(OwnersOf(original.SubString(0)), 3u);
    moved = "literal again";
    EXPECT_EQ(OwnersOf(original), 1u);
}

// Block sizes are units * 2 + 8 up to the next power of two.
TEST(MStringForms, BlocksGrowToPowersOfTwoAndOnlyForeignTextIsCut) {
    MString string = "abcd";
    string.Append(u'e');  // 6 units with the terminator: 20 bytes
    EXPECT_EQ(CapacityOf(string), 32u);
    string.Reserve(13);  // 34 bytes
    string.Reserve(1);
    EXPECT_EQ(CapacityOf(string), 64u);
    EXPECT_EQ(string, "abcde");

    const MString shared = Shared("hello");
    for (MString text : {MString("hello"), shared}) {
        text.Reserve(3);  // 14 bytes: four units, three letters and the terminator
        EXPECT_EQ(CapacityOf(text), 16u);
        EXPECT_THROW(text.Reserve(std::int64_t{1} << 30), std::bad_alloc);
        EXPECT_EQ(text, "hel");
    }
    MString full = "abcd";
    full.Reserve(4);  // 16 bytes would leave no room for the terminator
    EXPECT_EQ(full[4], 0);
    EXPECT_EQ(CapacityOf(full), 32u);
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
        string.Append(string).Append(u'!').Append("").Append(static_cast<const char*>(nullptr));
        EXPECT_EQ(string, "abab!");
        string = string.SubString(0, 2);
        string.Insert(1, string).Insert(-1, "<").Insert(99, ">");
        EXPECT_EQ(string, "<aabb>");
        EXPECT_EQ(string[6], 0);
    }
    for (MString string : {MString("a&b&"), Shared("a&b&")}) {
        EXPECT_EQ(string.Replace(u'?', "!"), 0);
        EXPECT_EQ(string.Replace(u'&', "&amp;"), 2);
        EXPECT_EQ(string, "a&amp;b&amp;");
    }
    MString all = "xx";
    EXPECT_EQ(all.Replace(u'x', all), 2);
    EXPECT_EQ(all.Replace(u'x', MString()), 4);
    EXPECT_TRUE(all.IsEmpty());
}

TEST(MStringText, SubStringClampsToWhatThereIs) {
    constexpr std::tuple<int, int, const char*> kCases[] = {
        {0, kMost, "chorus"}, {0, 5, "choru"}, {2, 2, "or"},
        {5, 9, "s"},          {6, 1, ""},      {kMost, 1, ""},
        {-1, 3, ""},          {2, 0, ""},      {-kMost - 1, kMost, ""}};
    for (const auto& [start, count, expected] : kCases) {
        for (const MString& text : {MString("chorus"), Shared("chorus")})
            EXPECT_EQ(text.SubString(start, count), expected) << start << " " << count;
    }
}

TEST(MStringOrder, IsTheSameForLiteralAndSharedOperands) {
    std::vector<MString> inOrder;
    for (const char* const text :
         {"", "B", "_", "a", "ab", "abc", "abcdefAghi", "abcdefBghi", "abcdefghi", "abcdefghij"})
        inOrder.insert(inOrder.end(), {text, Shared(text)});
    for (int i = 0; const MString& a : inOrder) {
        for (int j = 0; const MString& b : inOrder) {
            const int expected = Sign(i / 2 - j++ / 2);
            EXPECT_EQ(Sign(a.Compare(b)), expected) << a.ToUtf8() << " " << b.ToUtf8();
            EXPECT_EQ(a == b, expected == 0) << a.ToUtf8() << " " << b.ToUtf8();
        }
        ++i;
    }
    EXPECT_LT(MString(u"\u7fff"), MString(u"\uffff"));
}

TEST(MStringOrder, CaseAndWhatIsBehindTheMaximumDoNotCount) {
    EXPECT_EQ(MString("abcdefgh-UTF-8").CompareNoCase(Shared("Abcdefgh-utf-8")), 0);
    EXPECT_LT(MString("a").CompareNoCase("B"), 0);
    EXPECT_GT(Shared("Z").CompareNoCase("_"), 0);
    EXPECT_EQ(MString("ab").Compare("abc", 2), 0);
    EXPECT_GT(MString("abd").Compare("abcx", 3), 0);
    EXPECT_EQ(MString("abcdefghix").CompareNoCase("Abcdefghiy", 9), 0);
    EXPECT_EQ(MString("x").Compare("y", -1), 0);
}

// By hand: the XOR of each counted character shifted left by its index.
TEST(MStringHash, MatchesHandCalculation) {
    constexpr std::pair<const char*, std::uint32_t> kCases[] = {
        {"", 0},
        {"AB", 0x61 ^ 0x62 << 1},
        {"@@@@@@@@@@@@@@@", 0x1fffc0},  // 15 units, bits 6 to 20
        {"a***b***c***d***ef?", 0x61 ^ 0x62 << 4 ^ 0x63 << 8 ^ 0x64 << 12},
        {"a***a***a***a***a***a***a***a***z***z***", 0x77777771}};
    for (const auto& [text, expected] : kCases) {
        EXPECT_EQ(MString(text).Hash(), expected) << text;
        EXPECT_EQ(Shared(text).Hash(), expected) << text;
    }
}
