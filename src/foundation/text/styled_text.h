// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/text/mstring.h"
#include "foundation/text/string_list.h"

// A text and how its parts are to look, as plain data: made by values, drawn by the toolkit.
//
//     MStyledText text("Rate ");
//     text.Append("2.00 Hz", {"bold"});
//
// Units    UTF-16 code units
// Threads  as MString
// Errors   std::bad_alloc

struct MStyledText {
    // One part. The runs follow each other from the start of the text to its end.
    struct Run {
        std::int32_t length = 0;
        // What the style of the drawing side knows: "bold", "italic" and the like. None is the
        // plain text of its place.
        MStringList styles;

        friend bool operator==(const Run&, const Run&) = default;
    };

    MStyledText() = default;
    MStyledText(const MString& text) { Append(text); }

    // A part that looks like the one before it becomes one run with it.
    void Append(const MString& part, const MStringList& styles = {});

    friend bool operator==(const MStyledText&, const MStyledText&) = default;

    MString text;
    std::vector<Run> runs;
};
