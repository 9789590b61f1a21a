// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>

#include "foundation/xml/store_visitor.h"
#include "plugin/contract/parameter_record.h"

// One parameter as an attribute of a tree.

namespace {

enum Kind { kFloat, kInteger, kEnumeration, kBoolean, kSwitch, kHead, kUnnamed, kKinds };

struct Records {
    Records() {
        records[kFloat].SetFloat("", "Key", -1, 3, 0.1);
        records[kInteger].SetInteger("", "Key", -10, 10, 2);
        records[kEnumeration].SetEnumeration("", "Key", {"One", "Two", "Three"}, 1);
        records[kBoolean].SetBoolean("", "Key", true);
        records[kSwitch].SetGroup("", "Key", &isOpen);
        records[kHead].SetGroup("", "Key");
        records[kUnnamed].SetFloat("", "", -1, 3, 0.1);
    }
    double Loaded(Kind kind, MAttribute& tree, double before = 0.75) const {
        records[kind].Store({false, tree}, before);
        return before;
    }

    std::atomic<std::uint8_t> isOpen = 0;
    ParameterRecord records[kKinds];
};

}  // namespace

TEST(StoredParameter, ComesBackAsItWasAndItsDefaultNeedsNoWord) {
    const Records kinds;
    for (const auto& [kind, value, back, words] : {std::tuple(kFloat, 1.0 / 3, 1.0 / 3, 1),
                                                   {kFloat, 0.1, 0.1, 0},
                                                   {kFloat, 17., 3., 1},
                                                   {kFloat, std::nan(""), 0.1, 0},
                                                   {kInteger, -7., -7., 1},
                                                   {kEnumeration, 2., 2., 1},
                                                   {kBoolean, 0., 0., 1},
                                                   {kSwitch, 1., 1., 1},
                                                   {kHead, 1., 0.75, 0},
                                                   {kUnnamed, 1., 0.75, 0}}) {
        MAttribute tree;
        double stored = value;
        kinds.records[kind].Store({true, tree}, stored);
        EXPECT_EQ(tree.Attributes().Count(), words);
        EXPECT_EQ(kinds.Loaded(kind, tree), back) << kind;
    }
}

TEST(StoredParameter, LiesInItsRangeWhateverAFileTells) {
    const Records kinds;
    for (const auto& [kind, text, expected] : {std::tuple(kFloat, "3.01", 3.),
                                               {kFloat, "-1e300", -1.},
                                               {kFloat, "1e999", 0.1},
                                               {kFloat, "nan", 0.1},
                                               {kFloat, "0,9", 0.},
                                               {kFloat, "", 0.1},
                                               {kInteger, "4.5", 5.},
                                               {kInteger, "99999999999", 10.},
                                               {kInteger, "two", 2.},
                                               {kEnumeration, "-1", 0.},
                                               {kBoolean, "0.4", 0.},
                                               {kBoolean, "7", 1.},
                                               {kSwitch, "yes", 0.},
                                               {kHead, "1", 0.75}}) {
        MAttribute tree;
        tree.SetAttribute("Keys", "1");
        tree.SetAttribute("key", text);
        EXPECT_EQ(kinds.Loaded(kind, tree), expected) << kind << " of " << text;
    }
}
