#include "ImagingTestSupport.h"

#include "imaging/EImageData.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using qvrTest::MakeNumbered;
using qvrTest::MakePicture;
using qvrTest::PixelsOf;

namespace {

constexpr std::uint32_t Red = 0xFFFF0000;
constexpr std::uint32_t Blue = 0xFF0000FF;
constexpr std::uint32_t White = 0xFFFFFFFF;

} // namespace

TEST(ImageData, NewPictureIsZeroedBottomUpAndOpaqueByDefault) {
    auto picture = EImageData::New({3, 4}, EImageMemory::NoFreeing);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->GetRow(0), picture->GetBits() + 3 * 3); // the top row is last in memory
    EXPECT_EQ(picture->GetRow(3), picture->GetBits());
    EXPECT_EQ(picture->GetBytesPerLine(), 12);
    EXPECT_EQ(PixelsOf(*picture), std::vector<std::uint32_t>(12, 0u));
    EXPECT_TRUE(picture->HasAlpha());
    EXPECT_EQ(picture->opacity, 255);
    EXPECT_EQ(picture->position, (CPoint{0, 0}));
}

TEST(ImageData, NewAcceptsEmptySizesAndRefusesNegativeOnesWithoutFreeingMemory) {
    qvrTest::FakeImageCache cache;
    EXPECT_TRUE(EImageData::New({0, 5}, EImageMemory::MayFree));
    EXPECT_TRUE(EImageData::New({5, 0}, EImageMemory::MayFree));
    EXPECT_FALSE(EImageData::New({-1, 5}, EImageMemory::MayFree));
    EXPECT_FALSE(EImageData::New({5, -1}, EImageMemory::MayFree));
    EXPECT_TRUE(cache.freeRequests.empty());
}

TEST(ImageData, NewRetriesOnceAfterTheCacheFreedMemory) {
    qvrTest::FakeImageCache cache;
    cache.answerFreed = true;
    qvrTest::TraceCapture trace;
    const CSize impossible{INT32_MAX, INT32_MAX};
    EXPECT_FALSE(EImageData::New(impossible, EImageMemory::MayFree));
    ASSERT_EQ(cache.freeRequests.size(), 1u);
    EXPECT_EQ(cache.freeRequests[0], LONG_MAX);
    ASSERT_EQ(trace.lines.size(), 2u);
    EXPECT_EQ(trace.lines[0],
              "*** ERROR[EImageData::New()]: Out of memory: 9223372036854775807 bytes for a "
              "2147483647x2147483647 bitmap missing, but trying to free some other memory.\n");
    EXPECT_EQ(trace.lines[1], "*** ERROR[EImageData::New()]: OUT OF MEMORY: 9223372036854775807 bytes for a "
                              "2147483647x2147483647 bitmap missing.\n");

    EXPECT_FALSE(EImageData::New(impossible, EImageMemory::NoFreeing));
    EXPECT_EQ(cache.freeRequests.size(), 1u);
}

TEST(ImageData, MemoryNeedCountsPixelsAndOverhead) {
    EXPECT_EQ(EImageData::MemoryNeed({720, 576}), 720L * 576 * 4 + 1056);
    EXPECT_EQ(EImageData::MemoryNeed({0, 0}), 1056);
}

TEST(ImageData, CopiesTakePixelsButNotPositionOrOpacity) {
    auto source = MakeNumbered(5, 4);
    source->position = {7, -3};
    source->opacity = 17;
    auto clone = source->Clone();
    ASSERT_TRUE(clone);
    EXPECT_EQ(PixelsOf(*clone), PixelsOf(*source));
    EXPECT_EQ(clone->position, (CPoint{0, 0}));
    EXPECT_EQ(clone->opacity, 255);

    auto same = source->Resized({5, 4}, EImageFilter::Filtered);
    ASSERT_TRUE(same);
    EXPECT_NE(same.get(), source.get());
    EXPECT_EQ(PixelsOf(*same), PixelsOf(*source));
    EXPECT_FALSE(source->Resized({-1, 4}, EImageFilter::Fast));
    EXPECT_TRUE(source->Resized({0, 0}, EImageFilter::Fast));
}

TEST(ImageData, ExtractTakesRectanglesUpToTheEdgeOnly) {
    auto source = MakeNumbered(5, 4);
    auto part = source->Extract({3, 2, 5, 4});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->GetSize(), (CSize{2, 2}));
    EXPECT_EQ(PixelsOf(*part), (std::vector<std::uint32_t>{source->GetRow(2)[3], source->GetRow(2)[4],
                                                           source->GetRow(3)[3], source->GetRow(3)[4]}));
    EXPECT_FALSE(source->Extract({3, 2, 6, 4}));
    EXPECT_FALSE(source->Extract({3, 2, 5, 5}));
    EXPECT_FALSE(source->Extract({-1, 0, 2, 2}));
    EXPECT_FALSE(source->Extract({2, 2, 2, 4}));
}

TEST(ImageData, FillsWholePicturesRectanglesAndOutsides) {
    auto picture = EImageData::New({4, 3}, EImageMemory::NoFreeing);
    picture->Fill(Red);
    EXPECT_EQ(PixelsOf(*picture), std::vector<std::uint32_t>(12, Red));

    picture->FillRect({1, 1, 3, 2}, Blue);
    picture->FillRect({3, 0, 5, 1}, White);                                         // sticks out: refused
    EXPECT_EQ(PixelsOf(*picture), (std::vector<std::uint32_t>{Red, Red, Red, Red,   //
                                                              Red, Blue, Blue, Red, //
                                                              Red, Red, Red, Red}));

    picture->FillOutside({1, 1, 3, 2}, White);
    EXPECT_EQ(PixelsOf(*picture), (std::vector<std::uint32_t>{White, White, White, White, //
                                                              White, Blue, Blue, White,   //
                                                              White, White, White, White}));

    picture->FillOutside({-5, -5, 2, 9}, Red); // only the part right of column 2 lies outside
    EXPECT_EQ(PixelsOf(*picture), (std::vector<std::uint32_t>{White, White, Red, Red, //
                                                              White, Blue, Red, Red,  //
                                                              White, White, Red, Red}));
}

TEST(ImageData, CopyRectRefusesAnythingThatDoesNotFitAndBlendsWithTheSourceOpacity) {
    auto source = MakeNumbered(3, 3);
    auto target = EImageData::New({4, 4}, EImageMemory::NoFreeing);
    target->CopyRect(*source, {0, 0, 3, 3}, {2, 0}, EImageBlend::Copy); // would stick out
    target->CopyRect(*source, {0, 0, 4, 3}, {0, 0}, EImageBlend::Copy); // beyond the source
    target->CopyRect(*source, {0, 0, 2, 2}, {-1, 0}, EImageBlend::Copy);
    EXPECT_EQ(PixelsOf(*target), std::vector<std::uint32_t>(16, 0u));

    target->CopyRect(*source, {1, 1, 3, 3}, {2, 2}, EImageBlend::Copy);
    EXPECT_EQ(target->GetRow(2)[2], source->GetRow(1)[1]);
    EXPECT_EQ(target->GetRow(3)[3], source->GetRow(2)[2]);
    EXPECT_EQ(target->GetRow(1)[1], 0u);

    auto half = MakePicture(1, 1, {0xFFFF0000});
    half->opacity = 127;
    target->Fill(0xFF0000FF);
    target->CopyRect(*half, {0, 0, 1, 1}, {0, 0}, EImageBlend::Blend);
    EXPECT_EQ(target->GetRow(0)[0], BlendPixel(0xFF0000FF, 0xFFFF0000, 127));
    EXPECT_EQ(target->GetRow(0)[0], 0xFF7F007Fu);
}

TEST(ImageData, CopyRectOnColourCutsAtTheEdgeAndRewritesTheRest) {
    auto source = MakeNumbered(3, 2);
    auto target = EImageData::New({4, 4}, EImageMemory::NoFreeing);
    target->CopyRectOnColour(*source, {0, 0, 3, 2}, {2, 3}, Red);
    const std::uint32_t a = source->GetRow(0)[0], b = source->GetRow(0)[1];
    EXPECT_EQ(PixelsOf(*target), (std::vector<std::uint32_t>{Red, Red, Red, Red, //
                                                             Red, Red, Red, Red, //
                                                             Red, Red, Red, Red, //
                                                             Red, Red, a, b}));
    target->CopyRectOnColour(*source, {0, 0, 3, 2}, {5, 0}, Blue); // wholly off the right edge
    EXPECT_EQ(PixelsOf(*target), std::vector<std::uint32_t>(16, Blue));
}

TEST(ImageData, CompositeCentredPlacesTheSourceCentreAtItsPositionAndClips) {
    auto target = EImageData::New({5, 5}, EImageMemory::NoFreeing);
    auto source = MakeNumbered(3, 3);
    target->CompositeCentred(*source, EImageBlend::Copy);
    EXPECT_EQ(target->GetRow(2)[2], source->GetRow(1)[1]);
    EXPECT_EQ(target->GetRow(0)[0], 0u);

    target->Fill(0);
    source->position = {-2, 3};
    target->CompositeCentred(*source, EImageBlend::Copy);
    // Left = 2 - 2 - 1 = -1: one source column is skipped; top = 2 + 3 - 1 = 4: one row fits.
    EXPECT_EQ(target->GetRow(4)[0], source->GetRow(0)[1]);
    EXPECT_EQ(target->GetRow(4)[1], source->GetRow(0)[2]);
    EXPECT_EQ(target->GetRow(4)[2], 0u);
    EXPECT_EQ(target->GetRow(3)[0], 0u);

    source->position = {10, 0};
    target->Fill(0);
    target->CompositeCentred(*source, EImageBlend::Copy);
    EXPECT_EQ(PixelsOf(*target), std::vector<std::uint32_t>(25, 0u));
}

TEST(ImageData, BlendPixelMixesEveryByteByAlphaTimesOpacity) {
    EXPECT_EQ(BlendPixel(0x12345678, 0xFFABCDEF, 255), 0xFFABCDEFu);
    // Alpha 0 still has a share of 1/256: the destination moves slightly.
    EXPECT_EQ(BlendPixel(0xFFFFFFFF, 0x00000000, 255), 0xFEFEFEFEu);
    EXPECT_EQ(BlendPixel(0x00000000, 0x7FFF0000, 255), 0x3F7F0000u);
    EXPECT_EQ(BlendPixel(0x00000000, 0xFFFFFFFF, 0), 0x00000000u);
    EXPECT_EQ(BlendPixel(0x000000FF, 0xFFFFFF00, 1), 0x010101FDu);
}

TEST(ImageData, NearestStretchPicksTruncatedSourcePositions) {
    auto source = MakePicture(3, 1, {1, 2, 3});
    auto target = EImageData::New({7, 2}, EImageMemory::NoFreeing);
    target->Stretch(*source, {0, 0, 3, 1}, {0, 0, 7, 2}, EImageBlend::Copy, EImageFilter::Fast);
    EXPECT_EQ(PixelsOf(*target), (std::vector<std::uint32_t>{1, 1, 1, 2, 2, 3, 3, 1, 1, 1, 2, 2, 3, 3}));

    auto reduced = source->Resized({2, 1}, EImageFilter::Fast);
    EXPECT_EQ(PixelsOf(*reduced), (std::vector<std::uint32_t>{1, 2}));
}

TEST(ImageData, StretchOfEqualSizesIsACopyAndBadRectanglesChangeNothing) {
    auto source = MakeNumbered(4, 4);
    auto target = EImageData::New({4, 4}, EImageMemory::NoFreeing);
    target->Stretch(*source, {1, 1, 3, 3}, {0, 0, 2, 2}, EImageBlend::Copy, EImageFilter::Filtered);
    EXPECT_EQ(target->GetRow(0)[0], source->GetRow(1)[1]);
    EXPECT_EQ(target->GetRow(1)[1], source->GetRow(2)[2]);

    target->Fill(0);
    target->Stretch(*source, {0, 0, 4, 4}, {0, 0, 5, 2}, EImageBlend::Copy, EImageFilter::Fast);
    target->Stretch(*source, {0, 0, 5, 4}, {0, 0, 2, 2}, EImageBlend::Copy, EImageFilter::Filtered);
    target->Stretch(*source, {0, 0, 4, 4}, {0, 0, 0, 2}, EImageBlend::Copy, EImageFilter::Filtered);
    EXPECT_EQ(PixelsOf(*target), std::vector<std::uint32_t>(16, 0u));
}

TEST(ImageData, FilteredMagnificationOfOnePixelKeepsItsColour) {
    auto source = MakePicture(1, 1, {0x80402010});
    auto target = source->Resized({2, 2}, EImageFilter::Filtered);
    EXPECT_EQ(PixelsOf(*target), std::vector<std::uint32_t>(4, 0x80402010u));
}

TEST(ImageData, FilteredReductionByTwoTakesTheTruncatedMeanOfFourEqualWeights) {
    // Every pixel of the 2x2 footprint lies at r = 0.25 from the centre: equal weights.
    auto source = MakePicture(2, 2, {0x00000000, 0x01640000, 0x02C80000, 0x03FF0000});
    auto target = source->Resized({1, 1}, EImageFilter::Filtered);
    EXPECT_EQ(target->GetRow(0)[0], 0x018A0000u); // red 555 / 4 = 138, alpha 6 / 4 = 1
}

TEST(ImageData, FilteredReductionWeighsTheCentreMoreThanTheRim) {
    // 4 to 1 across: the inner pixels lie at r^2 = 0.0035 (weight 1024), the
    // outer ones at r^2 = 0.28 (weight 1024 * e^-0.28, truncated: 773).
    auto source = MakePicture(4, 1, {0xFF000000, 0xFF0000FF, 0xFF0000FF, 0xFF000000});
    auto target = source->Resized({1, 1}, EImageFilter::Filtered);
    EXPECT_EQ(target->GetRow(0)[0], 0xFF000000u | (255 * 2048 / (2048 + 2 * 773)));
}

TEST(ImageData, MapRectScalesEachAxisByTruncatingDivision) {
    EXPECT_EQ(MapRect({100, 50}, {300, 50}, {10, 3, 299, 40}), (CRect{3, 3, 99, 40}));
    EXPECT_EQ(MapRect({100, 50}, {0, 50}, {10, 3, 299, 40}), (CRect{}));
    EXPECT_EQ(MapRect({0, 50}, {300, 50}, {10, 3, 299, 40}), (CRect{}));
    EXPECT_EQ(MapRectRelative({50, 20}, {100, 100, 200, 140}, {150, 110, 200, 140}), (CRect{25, 5, 50, 20}));
}

TEST(ImageData, ExpLookupReadsATableInHundredths) {
    EXPECT_EQ(ExpLookup(0.0), 1.0);
    EXPECT_EQ(ExpLookup(0.5), 1.0);
    EXPECT_EQ(ExpLookup(-1.0), std::exp(-1.0));
    EXPECT_EQ(ExpLookup(-0.019), std::exp(-0.01));
    EXPECT_EQ(ExpLookup(-100.0), std::exp(-100.0));
    EXPECT_EQ(ExpLookup(-100.02), 0.0);
    EXPECT_EQ(ExpLookup(-1e300), 0.0);
}

namespace {

std::unique_ptr<EImageData> makeNoise(long width, long height, unsigned seed) {
    auto picture = EImageData::New({width, height}, EImageMemory::NoFreeing);
    std::uint32_t state = seed;
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) {
            state = state * 1664525u + 1013904223u;
            picture->GetRow(y)[x] = state;
        }
    return picture;
}

} // namespace

TEST(ImageData, FastFilterGivesTheReferenceBytesAtEveryScale) {
    auto source = makeNoise(61, 47, 1);
    source->opacity = 140;
    const std::vector<std::pair<CRect, CRect>> cases = {
        {{0, 0, 61, 47}, {0, 0, 23, 18}}, {{0, 0, 61, 47}, {0, 0, 150, 101}},
        {{0, 0, 61, 47}, {0, 0, 130, 9}}, {{5, 3, 40, 44}, {2, 7, 33, 29}},
        {{0, 0, 61, 47}, {0, 0, 1, 1}},   {{10, 10, 11, 11}, {0, 0, 150, 101}},
        {{0, 0, 61, 47}, {0, 0, 60, 47}}};
    for (const auto& [from, to] : cases) {
        for (EImageBlend blend : {EImageBlend::Copy, EImageBlend::Blend}) {
            auto fast = makeNoise(150, 101, 2);
            auto reference = fast->Clone();
            fast->Stretch(*source, from, to, blend, EImageFilter::Filtered);
            reference->StretchFilteredReference(*source, from, to, blend);
            EXPECT_EQ(PixelsOf(*fast), PixelsOf(*reference)) << to.Width() << "x" << to.Height();
        }
    }
}

TEST(ImageData, FastFilterMatchesTheReferenceAtTheLargestFootprintsAndBeyond) {
    for (long side : {128L, 129L, 200L}) {
        auto white = EImageData::New({side, side}, EImageMemory::NoFreeing);
        white->Fill(0xFFFFFFFF);
        auto fast = EImageData::New({1, 1}, EImageMemory::NoFreeing);
        auto reference = EImageData::New({1, 1}, EImageMemory::NoFreeing);
        fast->Stretch(*white, {0, 0, side, side}, {0, 0, 1, 1}, EImageBlend::Copy, EImageFilter::Filtered);
        reference->StretchFilteredReference(*white, {0, 0, side, side}, {0, 0, 1, 1}, EImageBlend::Copy);
        EXPECT_EQ(fast->GetRow(0)[0], reference->GetRow(0)[0]) << side;
        EXPECT_EQ(fast->GetRow(0)[0], 0xFFFFFFFFu) << side;
    }
}

TEST(ImageData, BlendPixelsGivesTheBytesOfBlendPixelForEveryAlphaAndOpacity) {
    std::vector<std::uint32_t> sources, targets;
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha)
        for (std::uint32_t colour : {0x000000u, 0xFFFFFFu, 0x7F8081u, 0x01FE10u}) {
            sources.push_back(alpha << 24 | colour);
            targets.push_back((255 - alpha) << 24 | (colour ^ 0xA5C3FF));
        }
    for (int opacity = 0; opacity < 256; ++opacity) {
        std::vector<std::uint32_t> blended = targets;
        BlendPixels(blended.data() + 1, sources.data() + 1, static_cast<long>(sources.size()) - 1,
                    static_cast<std::uint8_t>(opacity));
        EXPECT_EQ(blended[0], targets[0]);
        for (size_t i = 1; i < sources.size(); ++i)
            ASSERT_EQ(blended[i], BlendPixel(targets[i], sources[i], static_cast<std::uint8_t>(opacity)))
                << "pixel " << i << " opacity " << opacity;
    }
}

TEST(ImageData, BlendingAPictureOntoItselfShiftedWorksPixelAfterPixel) {
    auto picture = makeNoise(9, 1, 3);
    std::vector<std::uint32_t> expected = PixelsOf(*picture);
    for (size_t x = 1; x < expected.size(); ++x)
        expected[x] = BlendPixel(expected[x], expected[x - 1], 200);
    picture->opacity = 200;
    picture->CopyRect(*picture, {0, 0, 8, 1}, {1, 0}, EImageBlend::Blend);
    EXPECT_EQ(PixelsOf(*picture), expected);
}
