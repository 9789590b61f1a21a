// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>

// Test cases that are rows of a file, for tables too long for code.
//
//     # a comment
//     [SECTION]
//     LEFT SIGN RIGHT
//
// A sign is one of == := += -> ~> <- => <=, the first one of a row; what the sides mean is the
// test's business. The right side may be empty and keeps its spaces but one.
struct Row {
    double Number() const;  // the left side; whatever the locale

    std::string section, left, sign, right;
    bool isFirst = false;  // of its section
};

// Fails the running test where the file holds no row, or one of another form.
void ForEachRow(const char* path, const std::function<void(const Row&)>& check);
