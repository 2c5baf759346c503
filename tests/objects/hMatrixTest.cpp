#include "objects/hMatrix.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImageData.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace {

using Pixels = std::vector<std::uint32_t>;

std::unique_ptr<EImageData> Picture(CSize size, const std::function<std::uint32_t(long, long)>& pixel) {
    auto picture = EImageData::New(size, EImageMemory::NoFreeing);
    for (long y = 0; y < size.cy; ++y)
        for (long x = 0; x < size.cx; ++x)
            picture->GetRow(y)[x] = pixel(x, y);
    return picture;
}

Pixels PixelsOf(const std::unique_ptr<EImageData>& picture) {
    Pixels pixels;
    for (long y = 0; y < picture->GetHeight(); ++y)
        pixels.insert(pixels.end(), picture->GetRow(y), picture->GetRow(y) + picture->GetWidth());
    return pixels;
}

std::uint32_t Noise(long x, long y) {
    std::uint32_t seed = static_cast<std::uint32_t>(x * 7919 + y * 104729 + 17);
    seed ^= seed << 13;
    seed ^= seed >> 17;
    return (seed ^ seed << 5) * 2654435761u;
}

// The convolution as if the picture were surrounded by zeros, with sums in
// 64 bits cut to 32 at the end: what leaving out the outside means.
Pixels ZeroPaddedConvolution(const EImageData& source, const hMatrix& matrix) {
    return PixelsOf(Picture(source.GetSize(), [&](long x, long y) {
        std::uint32_t result = 0;
        for (int channel = 0; channel < 32; channel += 8) {
            std::int64_t sum = 0;
            for (long sy = y - 2; sy <= y + 2; ++sy)
                for (long sx = x - 2; sx <= x + 2; ++sx)
                    if (sx >= 0 && sy >= 0 && sx < source.GetWidth() && sy < source.GetHeight())
                        sum += std::int64_t{matrix.GetEntry(int(sx - x + 2), int(sy - y + 2))} *
                               ((source.GetRow(sy)[sx] >> channel) & 0xFF);
            const std::int64_t value = std::int64_t{static_cast<std::int32_t>(sum)} / matrix.GetDivisor();
            result |= static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, 255)) << channel;
        }
        return result;
    }));
}

hMatrix Uniform(std::int32_t entry, std::int32_t divisor) {
    hMatrix matrix;
    for (int i = 0; i < 25; ++i)
        matrix.SetEntry(i % 5, i / 5, entry);
    matrix.SetDivisor(divisor);
    return matrix;
}

Pixels Filtered(const hMatrix& matrix, CSize size, std::uint32_t colour) {
    return PixelsOf(matrix.Apply(*Picture(size, [colour](long, long) { return colour; })));
}

// The last is large enough to be filtered in two halves.
const CSize testSizes[] = {{1, 1}, {2, 7}, {3, 3}, {4, 6}, {5, 5}, {6, 6}, {11, 9}, {37, 4}, {67, 300}};

} // namespace

TEST(hMatrix, ReferenceIsTheZeroPaddedConvolutionAndNewKernelsCopy) {
    hMatrix matrix;
    const auto noise = Picture({7, 6}, Noise);
    EXPECT_EQ(PixelsOf(matrix.Apply(*noise)), PixelsOf(noise));
    for (int i = 0; i < 25; ++i)
        matrix.SetEntry(i % 5, i / 5, static_cast<std::int32_t>(Noise(i, 3) % 6001) - 3000);
    matrix.SetDivisor(-700);
    for (CSize size : testSizes) {
        const auto source = Picture(size, Noise);
        EXPECT_EQ(PixelsOf(matrix.ApplyReference(*source)), ZeroPaddedConvolution(*source, matrix))
            << size.cx << "x" << size.cy;
    }
}

TEST(hMatrix, FastFilterGivesTheReferenceBytes) {
    // Small entries, entries of any 32 bits (their sums wrap), and divisors
    // from 1 to the largest, either sign, powers of two among them.
    const std::pair<std::uint32_t, std::int32_t> kernels[] = {{6001, 1024},   {6001, -3},     {6001, 2},
                                                              {65536 * 3, 1}, {0, -1},        {0, 777777},
                                                              {0, 1 << 30},   {0, INT32_MAX}, {0, INT32_MIN}};
    for (const auto& [range, divisor] : kernels) {
        hMatrix matrix;
        for (int i = 0; i < 25; ++i) {
            const std::uint32_t noise = Noise(i, divisor);
            matrix.SetEntry(i % 5, i / 5,
                            static_cast<std::int32_t>(range ? noise % range - range / 2 : noise));
        }
        matrix.SetDivisor(divisor);
        for (CSize size : testSizes) {
            const auto source = Picture(size, [&](long x, long y) { return Noise(x + divisor, y); });
            EXPECT_EQ(PixelsOf(matrix.Apply(*source)), PixelsOf(matrix.ApplyReference(*source)))
                << "range " << range << ", divisor " << divisor << ", " << size.cx << "x" << size.cy;
        }
    }
}

TEST(hMatrix, FastFilterOfKernelsWithZeroRowsAndColumnsGivesTheReferenceBytes) {
    // Entries at single corners and edges, a 3x3 sharpening kernel, a kernel of zeros.
    const std::vector<std::vector<std::pair<int, int>>> placements = {
        {{0, 0}}, {{4, 4}}, {{4, 0}, {0, 3}}, {{2, 1}, {1, 2}, {2, 2}, {3, 2}, {2, 3}}, {}};
    for (const auto& placement : placements) {
        hMatrix matrix;
        matrix.SetEntry(2, 2, 0);
        for (auto [x, y] : placement)
            matrix.SetEntry(x, y, x == 2 && y == 2 ? 5 * hMatrix::One : -hMatrix::One - x);
        for (CSize size : testSizes) {
            const auto source = Picture(size, Noise);
            EXPECT_EQ(PixelsOf(matrix.Apply(*source)), PixelsOf(matrix.ApplyReference(*source)))
                << placement.size() << " entries, " << size.cx << "x" << size.cy;
        }
    }
}

TEST(hMatrix, EdgesDarkenUnderAKernelThatSumsToOne) {
    // 1/25 is 40.96 in fixed point, truncated to 40: 25 entries give 97, 12 give 46, 9 give 35.
    const Pixels filtered = Filtered(Uniform(40, 1024), {6, 6}, 0x64646464);
    EXPECT_EQ(filtered[2 * 6 + 2], 0x61616161u);
    EXPECT_EQ(filtered[3 * 6 + 3], 0x61616161u);
    EXPECT_EQ(filtered[1], 0x2E2E2E2Eu);
    EXPECT_EQ(filtered[35], 0x23232323u);
    // On a picture of 3 by 3 every window holds all nine pixels.
    EXPECT_EQ(Filtered(Uniform(1024, 1024), {3, 3}, 0x05050505), Pixels(9, 0x2D2D2D2Du));
}

TEST(hMatrix, SumsWrapAsThirtyTwoBitsAndResultsAreClamped) {
    hMatrix matrix = Uniform(0, 1024);
    // 8421505 * 255 passes 2^31 - 1 and turns negative: 0; 8421505 * 1 / 1024 is far above 255.
    matrix.SetEntry(2, 2, 8421505);
    EXPECT_EQ(Filtered(matrix, {1, 1}, 0x01FF01FF), Pixels{0xFF00FF00u});
    matrix.SetEntry(2, 2, -1024);
    EXPECT_EQ(Filtered(matrix, {1, 1}, 0x01FF01FF), Pixels{0u});
    matrix.SetDivisor(-1024);
    EXPECT_EQ(Filtered(matrix, {1, 1}, 0x01FF01FF), Pixels{0x01FF01FFu});
    matrix.SetDivisor(0);
    EXPECT_EQ(matrix.Apply(*Picture({1, 1}, Noise)), nullptr);
}

TEST(hMatrix, SavedEntriesAreNamedByColumnThenRowAndReadBack) {
    hMatrix matrix;
    matrix.SetEntry(2, 1, 512);
    matrix.SetDivisor(3 * 1024);
    qvrCTreeData section;
    matrix.Save(section);
    EXPECT_EQ(section.GetChildCount(), 26u);
    EXPECT_EQ(*section.GetText("Entry[21]"), "0.5");
    EXPECT_EQ(*section.GetText("Divisor"), "3");
    hMatrix loaded = Uniform(5, 5);
    hReportRoot report("load");
    EXPECT_TRUE(loaded.Load(section, report));
    EXPECT_EQ(loaded, matrix);
    // User values are truncated to 10 fractional bits; a divisor of 0 is read as 1.0.
    section.SetText("Entry[00]", "-1.9999");
    section.SetText("Entry[01]", "0.0005");
    section.SetText("Divisor", "0");
    EXPECT_TRUE(loaded.Load(section, report));
    EXPECT_EQ(loaded.GetEntry(0, 0), -2047);
    EXPECT_EQ(loaded.GetEntry(0, 1), 0);
    EXPECT_EQ(loaded.GetDivisor(), 1024);

    // A bad, too large or missing entry refuses the whole kernel.
    section.SetText("Entry[43]", "lots");
    EXPECT_FALSE(loaded.Load(section, report));
    section.SetText("Entry[43]", "3e6");
    EXPECT_FALSE(loaded.Load(section, report));
    section.RemoveChild(section.Find("Entry[43]"));
    EXPECT_FALSE(loaded.Load(section, report));
    EXPECT_EQ(loaded.GetDivisor(), 1024);
    ASSERT_EQ(report.GetCount(), 3);
    EXPECT_EQ(report.GetEntries()[2].Text, "Matrix definition incomplete.");
    EXPECT_EQ(report.GetEntries()[2].Level, 2);
}
