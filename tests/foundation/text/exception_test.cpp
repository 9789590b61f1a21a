// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/exception.h"

#include <gtest/gtest.h>

#include <optional>
#include <type_traits>

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

    const MException plain("Index out of range.");
    EXPECT_STREQ(plain.what(), "Index out of range.");
    EXPECT_TRUE(plain.context.IsEmpty());
    EXPECT_EQ(plain.code, 0);
}
