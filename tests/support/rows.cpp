// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/rows.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <regex>

double Row::Number() const {
    double number = NAN;
    std::from_chars(left.data(), left.data() + left.size(), number);
    return number;
}

void ForEachRow(const char* path, const std::function<void(const Row&)>& check) {
    static const std::regex section("\\[(.*)\\]");
    static const std::regex row("(.*?) (==|:=|[+]=|->|~>|<-|=>|<=) ?(.*)");
    std::ifstream file(path);
    Row current;
    for (std::string line; std::getline(file, line);) {
        std::smatch parts;
        if (line.empty() || line.starts_with('#')) continue;
        if (std::regex_match(line, parts, section)) {
            current.section = parts[1];
            current.isFirst = true;
            continue;
        }
        ASSERT_TRUE(std::regex_match(line, parts, row)) << line;
        current = {current.section, parts[1], parts[2], parts[3], current.isFirst};
        SCOPED_TRACE("[" + current.section + "] " + line);
        check(current);
        current.isFirst = false;
    }
    EXPECT_FALSE(current.sign.empty()) << "no rows in " << path;
}
