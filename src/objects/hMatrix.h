#pragma once
// A 5 by 5 convolution kernel in fixed point with 10 fractional bits: 25
// entries row after row (index y * 5 + x) and a divisor, each the user's
// value times 1024, truncated. Applying it gives every pixel, alpha included,
// the weighted sum of its neighbourhood divided by the divisor; neighbours
// beyond the picture's edge are left out and the divisor stays, so a kernel
// that sums to 1 darkens towards the edge.
//
// A kernel has no lock: it is a value that its owner copies or guards.
// Apply only reads the kernel and the source picture, so any number of
// threads may apply one kernel at once.

#include <array>
#include <cstdint>
#include <memory>

class EImageData;
class hReport;
class qvrCTreeData;

class hMatrix {
public:
    static constexpr int Side = 5;
    static constexpr int EntryCount = Side * Side;
    // 1.0 in fixed point.
    static constexpr std::int32_t One = 1024;

    // The kernel that copies: 1.0 in the centre, divisor 1.0.
    hMatrix();

    std::int32_t GetEntry(int x, int y) const { return Entries[static_cast<size_t>(y * Side + x)]; }
    void SetEntry(int x, int y, std::int32_t entry) { Entries[static_cast<size_t>(y * Side + x)] = entry; }
    std::int32_t GetDivisor() const { return Divisor; }
    void SetDivisor(std::int32_t divisor) { Divisor = divisor; }

    // A user's value in fixed point, truncated; false for a value that is not
    // a number or does not fit into 32 bits.
    static bool ToFixed(double value, std::int32_t& fixed);
    static double ToValue(std::int32_t fixed) { return static_cast<double>(fixed) / One; }

    // Writes the entries as "Entry[xy]" and the divisor as "Divisor", as user values.
    void Save(qvrCTreeData& section) const;
    // Reads what Save writes. A missing or unreadable key is reported and
    // leaves the kernel as it was; a divisor of 0 is read as 1.0.
    bool Load(const qvrCTreeData& section, hReport& report);

    // The filtered copy of the picture; null for a divisor of 0 or when memory is short.
    std::unique_ptr<EImageData> Apply(const EImageData& source) const;
    // The same bytes as Apply in the plain form that defines them: the whole
    // window inside the picture, the window cut to the picture at its edges.
    std::unique_ptr<EImageData> ApplyReference(const EImageData& source) const;

    friend bool operator==(const hMatrix&, const hMatrix&) = default;

private:
    std::array<std::int32_t, EntryCount> Entries{};
    std::int32_t Divisor = One;
};
