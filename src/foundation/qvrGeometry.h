#pragma once
// Points, sizes and rectangles in the platform's integer form. A rectangle
// holds left and top inclusive, right and bottom exclusive.

struct CPoint {
    long x = 0;
    long y = 0;
    friend bool operator==(const CPoint&, const CPoint&) = default;
};

struct CSize {
    long cx = 0;
    long cy = 0;
    friend bool operator==(const CSize&, const CSize&) = default;
};

struct CRect {
    long left = 0;
    long top = 0;
    long right = 0;
    long bottom = 0;

    long Width() const { return right - left; }
    long Height() const { return bottom - top; }
    bool IsRectEmpty() const { return right <= left || bottom <= top; }
    friend bool operator==(const CRect&, const CRect&) = default;
};

// Whether a number fits the signed 32 bits of the platform's files.
constexpr bool qvrFitsIn32Bits(long value) {
    return value >= -2147483647L - 1 && value <= 2147483647L;
}

inline bool qvrFitsIn32Bits(const CRect& rect) {
    return qvrFitsIn32Bits(rect.left) && qvrFitsIn32Bits(rect.top) && qvrFitsIn32Bits(rect.right) &&
           qvrFitsIn32Bits(rect.bottom);
}

// The part that both rectangles cover; empty when they don't meet.
inline CRect IntersectRect(const CRect& a, const CRect& b) {
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
            a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}
