// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <tuple>
#include <type_traits>

#include "foundation/text/accent_folds.h"
#include "foundation/text/char_filter.h"
#include "foundation/text/character_fold.h"
#include "foundation/text/mlocale.h"
#include "foundation/text/raised_by.h"
#include "foundation/text/string_list.h"
#include "foundation/text/styled_text.h"

// A copy that could throw would end the process while an exception is on its way.
static_assert(std::is_nothrow_copy_constructible_v<MException>);

TEST(Exception, TellsItsMessageAsUtf8AlsoFromACopy) {
    std::optional<MException> raised;
    raised.emplace("MFile::Open", MString(u"caf\u00e9 \U0001F3B5"), 256);
    const MException copy = *raised;
    raised.reset();
    EXPECT_STREQ(copy.what(), "caf\xc3\xa9 \xf0\x9f\x8e\xb5");
    EXPECT_EQ(copy.context, "MFile::Open");
    EXPECT_EQ(copy.code, 256);
    EXPECT_TRUE(MException("plain").context.IsEmpty());
}

TEST(AccentFolds, AccentsAndCaseAreIgnoredInThreeScripts) {
    constexpr std::pair<const char16_t*, const char16_t*> kSame[] = {
        {u"\u00e9\u00c7", u"Ec"},
        {u"\u0141\u00f3d\u017a \u00d8re Vi\u1ec7t", u"lodz ore viet"},
        {u"\u03ac\u1f84", u"\u03b1\u03b1"},
        {u"\u0439\u0491\u0407", u"\u0438\u0433\u0406"}};
    for (const auto& [a, b] : kSame) EXPECT_EQ(MString(a).CompareNoCase(b), 0);
    EXPECT_NE(MString(u"\u00c6").CompareNoCase("a"), 0);
    EXPECT_NE(MString(u"\u00d7").CompareNoCase("x"), 0);

    for (const auto& [letter, base] : AccentFolds()) {
        EXPECT_EQ(WithoutAccent(letter), base) << "the search needs the order";
        EXPECT_EQ(WithoutAccent(base), base);
    }
    EXPECT_GE(AccentFolds().size(), 988u);
}

TEST(CharFilter, LetsItsCharactersThrough) {
    const MString tried = u"afFgGzAZ09-. @[`{/:+,_\u00e9";
    const std::tuple<const MCharFilter::Interface&, MString, int> cases[] = {
        {MCharFilter::AllFilter::Get(), tried, 23},
        {MCharFilter::LettersFilter::Get(), "afFgGzAZ", 1},
        {MCharFilter::AlphaFilter::Get(), "afFgGzAZ09-. ", 7},
        {MCharFilter::AlphaStrictFilter::Get(), "afFgGzAZ09", 3},
        {MCharFilter::IntegerFilter::Get(), "09-", 2},
        {MCharFilter::IntegerHexaFilter::Get(), "afFA09", 10},
        {MCharFilter::FloatFilter::Get(), "09-.", 6}};
    for (const auto& [filter, expected, classes] : cases) {
        EXPECT_EQ(filter.GetClasses(), classes);
        MString allowed;
        for (int i = 0; i < tried.Length(); ++i) {
            if (filter.IsAllowed(tried[i])) allowed.Append(tried[i]);
        }
        EXPECT_EQ(allowed, expected);
    }
}

TEST(Locale, EachNameHasItsOwnCode) {
    using Language = MLocale::Language;
    using Country = MLocale::Country;
    EXPECT_EQ(MLocale::GetCode(Language::Uigur), "ug");
    EXPECT_EQ(MLocale::GetCode(Country::Niger), "NE");
    std::set<MString> codes;
    for (int i = 0; i < MLocale::kLanguageCount; ++i) {
        codes.insert(MLocale::GetCode(Language{i}));
        EXPECT_EQ(MLocale::FindLanguage(MLocale::GetName(Language{i})), Language{i});
    }
    for (int i = 0; i < MLocale::kCountryCount; ++i) {
        codes.insert(MLocale::GetCode(Country{i}));
        EXPECT_EQ(MLocale::FindCountry(MLocale::GetName(Country{i})), Country{i});
    }
    EXPECT_EQ(codes.size(), 139u + 236u);
    EXPECT_EQ(MLocale::FindCountry("UNITEDKINGDOM"), Country::UnitedKingdom);
    EXPECT_EQ(MLocale::FindLanguage("Klingon"), std::nullopt);
    EXPECT_EQ(RaisedBy([] { MLocale::GetName(Language{139}); }), "Index out of range.");
    EXPECT_EQ(RaisedBy([] { MLocale::GetCode(Country{-1}); }), "Index out of range.");
}

TEST(StringList, KeepsItsOrderAndRefusesABadIndex) {
    MStringList list = {"b", "d"};
    list.Insert(0, "a");
    list.Insert(2, u"\u010c");
    list.Add("e");
    list.Delete(3);
    EXPECT_EQ(RaisedBy([&] { list[-1]; }), "Index out of range.");
    EXPECT_EQ(RaisedBy([&] { list.Delete(4); }), "Index out of range.");
    EXPECT_EQ(RaisedBy([&] { list.Insert(5, "x"); }), "Index out of range.");
    EXPECT_EQ(list, (MStringList{"a", "b", u"\u010c", "e"}));
    EXPECT_EQ(list.Find("B"), -1);
    EXPECT_EQ(list.FindNoCase("c"), 2);
}

TEST(StyledText, RunsCoverTheText) {
    MStyledText text("Rate ");
    text.Append("2.00", {"bold"});
    text.Append("");
    text.Append(" Hz", {"bold"});
    text.Append("!");
    EXPECT_EQ(text.text, "Rate 2.00 Hz!");
    const std::vector<MStyledText::Run> expected = {{5, {}}, {7, {"bold"}}, {1, {}}};
    EXPECT_EQ(text.runs, expected);
}
