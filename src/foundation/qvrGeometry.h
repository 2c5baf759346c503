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

inline CPoint operator+(CPoint a, CPoint b) {
    return {a.x + b.x, a.y + b.y};
}
inline CPoint operator-(CPoint a, CPoint b) {
    return {a.x - b.x, a.y - b.y};
}
inline CPoint operator-(CPoint point) {
    return {-point.x, -point.y};
}

inline CRect WholeRect(CSize size) {
    return {0, 0, size.cx, size.cy};
}
inline CSize SizeOfRect(const CRect& rect) {
    return {rect.Width(), rect.Height()};
}
inline CRect OffsetRect(const CRect& rect, CPoint by) {
    return {rect.left + by.x, rect.top + by.y, rect.right + by.x, rect.bottom + by.y};
}
inline CRect InflateRect(const CRect& rect, long by) {
    return {rect.left - by, rect.top - by, rect.right + by, rect.bottom + by};
}
// Left and top inclusive, right and bottom exclusive.
inline bool PtInRect(const CRect& rect, CPoint point) {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top && point.y < rect.bottom;
}
// The same area with left not right of right and top not below bottom.
inline CRect NormalizeRect(const CRect& rect) {
    return {rect.left < rect.right ? rect.left : rect.right, rect.top < rect.bottom ? rect.top : rect.bottom,
            rect.left < rect.right ? rect.right : rect.left, rect.top < rect.bottom ? rect.bottom : rect.top};
}

// The part that both rectangles cover; empty when they don't meet, with the
// right or bottom then before its left or top.
inline CRect IntersectRect(const CRect& a, const CRect& b) {
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
            a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}
// The common part, all zero when the rectangles don't meet.
inline CRect IntersectRectOrNull(const CRect& a, const CRect& b) {
    const CRect common = IntersectRect(a, b);
    return common.IsRectEmpty() ? CRect{} : common;
}
// The common part; a right or bottom that ends up before its left or top is
// raised to it.
inline CRect IntersectRectClamped(const CRect& a, const CRect& b) {
    CRect common = IntersectRect(a, b);
    if (common.right < common.left) common.right = common.left;
    if (common.bottom < common.top) common.bottom = common.top;
    return common;
}
// The rectangle that holds both; an empty rectangle adds nothing.
inline CRect UnionRect(const CRect& a, const CRect& b) {
    if (b.IsRectEmpty()) return a;
    if (a.IsRectEmpty()) return b;
    return {a.left < b.left ? a.left : b.left, a.top < b.top ? a.top : b.top,
            a.right > b.right ? a.right : b.right, a.bottom > b.bottom ? a.bottom : b.bottom};
}
