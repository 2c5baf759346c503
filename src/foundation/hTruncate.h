#pragma once
// Truncation of animated values and scaled coordinates to whole numbers, as a
// cast would do it, but kept within the 32-bit range of picture coordinates,
// so that no value a user enters can overflow the arithmetic that follows.
// A value that is not a number gives 0. Pure, safe from any thread.

inline long hTruncate(double value) {
    constexpr double limit = 2147483647.0;
    if (value != value) return 0;
    if (value >= limit) return 2147483647L;
    if (value <= -limit) return -2147483647L;
    return static_cast<long>(value);
}
