#pragma once
// Test support for the warp: a projection prepared for corners and a source size.

#include "projector/LProjection.h"

#include <gtest/gtest.h>

inline LProjection PreparedProjection(const LCorners& corners, CSize source,
                                      std::int32_t filter = LProjection::FilterLinear, double level = 2.0) {
    LProjection projection;
    projection.SetFilter(filter);
    projection.SetFilterLevel(level);
    EXPECT_TRUE(projection.Prepare(corners, source));
    return projection;
}
