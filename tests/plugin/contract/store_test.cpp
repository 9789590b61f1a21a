// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <sstream>

#include "foundation/xml/store_visitor.h"
#include "plugin/contract/parameter_record.h"

// What a parameter reads, and writes so that it comes back; its default needs no word.
TEST(StoredParameter, LiesInItsRangeWhateverAFileTells) {
    std::atomic<std::uint8_t> isOpen = 0;
    ParameterRecord records[7];
    records[0].SetFloat("", "Key", -1, 3, 0.1);
    records[1].SetInteger("", "Key", -10, 10, 2);
    records[2].SetEnumeration("", "Key", {"One", "Two", "Three"}, 1);
    records[3].SetBoolean("", "Key", true);
    records[4].SetGroup("", "Key", &isOpen);
    records[5].SetGroup("", "Key");  // keeps what it has, like one without a key
    records[6].SetFloat("", "", -1, 3, 0.1);
    std::istringstream rows(
        "0 0.33333333333333331 0.33333333333333331  0 3.01 3  0 -1e300 -1  0 1e999 0.1  0 nan 0.1 "
        "0 0,9 0  0 1e-9 1e-9  1 -7 -7  1 4.5 5  1 99999999999 10  1 two 2  2 2 2  2 -1 0 "
        "3 0.4 0  3 7 1  4 yes 0  4 1 1  5 1 0.75  6 1 0.75");
    int kind = 0;
    std::string text;
    for (double expected = 0; rows >> kind >> text >> expected;) {
        const ParameterRecord& record = records[kind];
        MAttribute tree, written;
        tree.SetAttribute("Keys", "1");
        tree.SetAttribute("key", MString::FromUtf8(text));
        double value = 0.75;
        record.Store({false, tree}, value);
        EXPECT_EQ(value, expected) << kind << " of " << text;
        record.Store({true, written}, value);
        EXPECT_EQ(written.HasAttribute("Key"), kind < 5 && value != record.defaultValue);
        value = 0.75;
        record.Store({false, written}, value);
        EXPECT_EQ(value, expected);
    }
}
