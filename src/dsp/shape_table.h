// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "foundation/objects/object.h"

// One cycle of a periodic shape as points with straight lines between them.
//
// Units    a phase in cycles; levels -1..1
// Ranges   phases of any size below 2^18 cycles. The point is found by truncation towards zero and
//          then wrapped, so a negative phase reads the line through the points of cycle 0 extended
// Threads  Fill under the owner's lock; reads from any thread that holds it
// Memory   none
class ShapeTable : public MObject {
public:
    static constexpr int kPoints = 8192;
    static constexpr double kPeriod = 1.0;

    // The default shape: a sine.
    ShapeTable();

    // point(i) answers the level of point i, 0 .. kPoints - 1; the guard repeats the first.
    template <typename Point>
    void Fill(Point point) {
        for (int i = 0; i < kPoints; ++i) points[static_cast<std::size_t>(i)] = point(i);
        points[kPoints] = points[0];
    }

    double At(double phase) const {
        const double position = phase * (kPoints / kPeriod);
        const int whole = static_cast<int>(position);
        const double fraction = position - whole;
        const float* point = points.data() + (whole & (kPoints - 1));
        return point[0] + fraction * (static_cast<double>(point[1]) - point[0]);
    }

    // All points and the guard.
    const float* Points() const { return points.data(); }

private:
    std::array<float, kPoints + 1> points;
};
