// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "foundation/text/accent_folds.h"
#include "foundation/text/char_filter.h"
#include "foundation/text/exception.h"
#include "foundation/text/mlocale.h"
#include "foundation/text/string_list.h"
#include "foundation/text/styled_text.h"

TEST(AccentFolds, AccentsAndCaseAreIgnoredInThreeScripts) {
    constexpr std::pair<const char16_t*, const char16_t*> kSame[] = {
        {u"\u00e9\u00c7", u"Ec"},
        {u"\u0141\u00f3d\u017a \u00d8re Vi\u1ec7t", u"lodz ore viet"},
        {u"\u03ac\u1f84", u"\u03b1\u03b1"},
        {u"\u0439\u0491\u0407", u"\u0438\u0433\u0406"},
    };
    for (const auto& [a, b] : kSame) EXPECT_EQ(MString(a).CompareNoCase(b), 0);
    EXPECT_NE(MString(u"\u00c6").CompareNoCase("a"), 0);
    EXPECT_NE(MString(u"\u00d7").CompareNoCase("x"), 0);
    EXPECT_NE(MString(u"\u01c5").CompareNoCase("d"), 0);

    char16_t before = 0xbf;
    std::set<char16_t> letters;
    for (const AccentFold& fold : AccentFolds()) {
        EXPECT_LT(before, fold.letter);  // the search needs the order
        letters.insert(before = fold.letter);
    }
    for (const AccentFold& fold : AccentFolds()) EXPECT_FALSE(letters.contains(fold.base));
    EXPECT_GE(letters.size(), 988u);
}

TEST(CharFilter, LetsItsCharactersThrough) {
    struct Case {
        const MCharFilter::Interface& filter;
        const char* allowed;
        int classes;
    };
    const std::string tried = "afFgGzAZ09-. @[`{/:+,_";
    const Case cases[] = {
        {MCharFilter::AllFilter::Get(), tried.c_str(), 23},
        {MCharFilter::LettersFilter::Get(), "afFgGzAZ", 1},
        {MCharFilter::AlphaFilter::Get(), "afFgGzAZ09-. ", 7},
        {MCharFilter::AlphaStrictFilter::Get(), "afFgGzAZ09", 3},
        {MCharFilter::IntegerFilter::Get(), "09-", 2},
        {MCharFilter::IntegerHexaFilter::Get(), "afFA09", 10},
        {MCharFilter::FloatFilter::Get(), "09-.", 6},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.filter.GetClasses(), c.classes);
        std::string allowed;
        for (const char character : tried) {
            if (c.filter.IsAllowed(static_cast<char16_t>(character))) allowed += character;
        }
        EXPECT_EQ(allowed, c.allowed);
    }
    EXPECT_FALSE(MCharFilter::LettersFilter::Get().IsAllowed(u'\u00e9'));
}

TEST(Locale, EachNameHasItsOwnCode) {
    using Language = MLocale::Language;
    using Country = MLocale::Country;
    EXPECT_EQ(MLocale::GetCode(Language::Abkhazian), "ab");
    EXPECT_EQ(MLocale::GetCode(Language::Uigur), "ug");
    EXPECT_EQ(MLocale::GetCode(Language::Nynorsk), "nn");
    EXPECT_EQ(MLocale::GetCode(Country::Aruba), "AW");
    EXPECT_EQ(MLocale::GetCode(Country::Niger), "NE");
    EXPECT_EQ(MLocale::GetCode(Country::Zimbabwe), "ZW");
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
    EXPECT_THROW(MLocale::GetName(Language{139}), MException);
    EXPECT_THROW(MLocale::GetCode(Country{-1}), MException);
}

TEST(StringList, KeepsItsOrderAndRefusesABadIndex) {
    MStringList list = {"b", "d"};
    list.Insert(0, "a");
    list.Insert(2, u"\u010c");
    list.Add("e");
    list.Delete(3);
    EXPECT_EQ(list, (MStringList{"a", "b", u"\u010c", "e"}));
    EXPECT_EQ(list.Find("B"), -1);
    EXPECT_EQ(list.Find("e"), 3);
    EXPECT_EQ(list.FindNoCase("c"), 2);
    EXPECT_THROW(list[4], MException);
    EXPECT_THROW(list[-1], MException);
    EXPECT_THROW(list.Delete(4), MException);
    EXPECT_THROW(list.Insert(5, "x"), MException);
    EXPECT_EQ(list.Count(), 4);
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
