#include "ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using qvrTest::MakeNoise;
using qvrTest::MakePicture;
using qvrTest::PixelsOf;
using Pixels = std::vector<std::uint32_t>;

constexpr std::uint32_t R = 0xFFFF0000, B = 0xFF0000FF, W = 0xFFFFFFFF;

TEST(ImageData, NewMakesZeroedBottomUpPicturesAndRefusesNegativeSizes) {
    qvrTest::FakeImageCache cache;
    auto picture = EImageData::New({3, 4}, EImageMemory::MayFree);
    EXPECT_EQ(picture->GetRow(0), picture->GetBits() + 3 * 3); // the top row lies last in memory
    EXPECT_EQ(PixelsOf(*picture), Pixels(12, 0u));
    EXPECT_TRUE(picture->HasAlpha());
    EXPECT_TRUE(EImageData::New({0, 5}, EImageMemory::MayFree));
    EXPECT_FALSE(EImageData::New({5, -1}, EImageMemory::MayFree));
    EXPECT_TRUE(cache.freeRequests.empty());
}

TEST(ImageData, NewFilledWritesEveryPixelInTheColourEvenInReusedMemory) {
    for (int round = 0; round < 2; ++round) {
        EImageData::New({64, 64}, EImageMemory::NoFreeing)->Fill(W); // leaves white memory behind
        const auto filled = EImageData::NewFilled({64, 64}, EImageMemory::NoFreeing, R);
        EXPECT_EQ(PixelsOf(*filled), Pixels(64 * 64, R));
        EXPECT_EQ(PixelsOf(*EImageData::New({64, 64}, EImageMemory::NoFreeing)), Pixels(64 * 64, 0u));
    }
    EXPECT_TRUE(EImageData::NewFilled({0, 3}, EImageMemory::NoFreeing, R));
    EXPECT_FALSE(EImageData::NewFilled({-1, 3}, EImageMemory::NoFreeing, R));
}

TEST(ImageData, NewRetriesOnceAfterTheCacheFreedMemory) {
    qvrTest::FakeImageCache cache;
    cache.answerFreed = true;
    qvrTest::TraceCapture trace;
    EXPECT_FALSE(EImageData::New({INT32_MAX, INT32_MAX}, EImageMemory::MayFree));
    EXPECT_EQ(cache.freeRequests, std::vector<long>{LONG_MAX});
    EXPECT_EQ(trace.lines,
              (std::vector<std::string>{
                  "*** ERROR[EImageData::New()]: Out of memory: 9223372036854775807 bytes for a "
                  "2147483647x2147483647 bitmap missing, but trying to free some other memory.\n",
                  "*** ERROR[EImageData::New()]: OUT OF MEMORY: 9223372036854775807 bytes for a "
                  "2147483647x2147483647 bitmap missing.\n"}));
    EXPECT_FALSE(EImageData::New({INT32_MAX, INT32_MAX}, EImageMemory::NoFreeing));
    EXPECT_EQ(cache.freeRequests.size(), 1u);
    // 32 GiB for one window of a projector array: refused before memory is asked for.
    EXPECT_FALSE(EImageData::New({INT32_MAX, 4}, EImageMemory::NoFreeing));
    EXPECT_TRUE(EImageData::IsPossibleSize({1L << 15, 1L << 14}));
    EXPECT_FALSE(EImageData::IsPossibleSize({1L << 15, (1L << 14) + 1}));
}

TEST(ImageData, ExtractTakesRectanglesUpToTheEdgeOnly) {
    auto source = MakePicture(3, 2, {1, 2, 3, 4, 5, 6});
    EXPECT_EQ(PixelsOf(*source->Extract({1, 1, 3, 2})), (Pixels{5, 6}));
    EXPECT_FALSE(source->Extract({1, 1, 4, 2}));
    EXPECT_FALSE(source->Extract({-1, 0, 2, 2}));
    EXPECT_FALSE(source->Extract({2, 0, 2, 2}));
}

TEST(ImageData, FillOutsideLeavesTheRectangleAndClipsToThePicture) {
    auto picture = EImageData::New({4, 3}, EImageMemory::NoFreeing);
    picture->Fill(R);
    picture->FillOutside({1, 1, 3, 2}, W);
    EXPECT_EQ(PixelsOf(*picture), (Pixels{W, W, W, W, W, R, R, W, W, W, W, W}));
    picture->FillOutside({-5, -5, 2, 9}, B);
    EXPECT_EQ(PixelsOf(*picture), (Pixels{W, W, B, B, W, R, B, B, W, W, B, B}));
}

TEST(ImageData, CopyRectRefusesWhatDoesNotFitAndBlendsWithTheSourceOpacity) {
    auto source = MakePicture(2, 1, {R, 0x80FF0000});
    auto target = EImageData::New({3, 1}, EImageMemory::NoFreeing);
    target->CopyRect(*source, {0, 0, 2, 1}, {2, 0}, EImageBlend::Copy);
    target->CopyRect(*source, {0, 0, 3, 1}, {0, 0}, EImageBlend::Copy);
    target->CopyRect(*source, {0, 0, 2, 1}, {-1, 0}, EImageBlend::Copy);
    EXPECT_EQ(PixelsOf(*target), Pixels(3, 0u));
    target->Fill(B);
    source->opacity = 127;
    target->CopyRect(*source, {0, 0, 2, 1}, {1, 0}, EImageBlend::Blend);
    EXPECT_EQ(PixelsOf(*target), (Pixels{B, 0xFF7F007F, 0xDF3F00BF}));
}

TEST(ImageData, CopyRectOnColourCutsAtTheEdgeAndRewritesTheRest) {
    auto source = MakePicture(3, 2, {1, 2, 3, 4, 5, 6});
    auto target = EImageData::New({3, 3}, EImageMemory::NoFreeing);
    target->CopyRectOnColour(*source, {0, 0, 3, 2}, {1, 2}, R);
    EXPECT_EQ(PixelsOf(*target), (Pixels{R, R, R, R, R, R, R, 1, 2}));
}

TEST(ImageData, CompositeCentredPlacesTheSourceCentreAtItsPositionAndClips) {
    auto target = EImageData::New({5, 5}, EImageMemory::NoFreeing);
    auto source = MakePicture(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    source->position = {-2, 3}; // left 2 - 2 - 1 = -1 skips a column; top 4 leaves one row
    target->CompositeCentred(*source, EImageBlend::Copy);
    EXPECT_EQ(PixelsOf(*target),
              (Pixels{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3, 0, 0, 0}));
}

TEST(ImageData, BlendPixelMixesEveryByteByAlphaTimesOpacity) {
    EXPECT_EQ(BlendPixel(0x12345678, 0xFFABCDEF, 255), 0xFFABCDEFu);
    EXPECT_EQ(BlendPixel(0xFFFFFFFF, 0x00000000, 255), 0xFEFEFEFEu); // alpha 0 still has 1/256
    EXPECT_EQ(BlendPixel(0x00000000, 0x7FFF0000, 255), 0x3F7F0000u);
    EXPECT_EQ(BlendPixel(0x000000FF, 0xFFFFFF00, 1), 0x010101FDu);
}

TEST(ImageData, NearestStretchPicksTruncatedSourcePositions) {
    auto source = MakePicture(3, 1, {1, 2, 3});
    EXPECT_EQ(PixelsOf(*source->Resized({7, 2}, EImageFilter::Fast)),
              (Pixels{1, 1, 1, 2, 2, 3, 3, 1, 1, 1, 2, 2, 3, 3}));
    EXPECT_EQ(PixelsOf(*source->Resized({2, 1}, EImageFilter::Fast)), (Pixels{1, 2}));
}

TEST(ImageData, FilteredStretchTakesAFlatToppedBellOverTheFootprint) {
    // Clipped to one source pixel, a magnification keeps its colour.
    EXPECT_EQ(PixelsOf(*MakePicture(1, 1, {0x80402010})->Resized({2, 2}, EImageFilter::Filtered)),
              Pixels(4, 0x80402010u));
    // 2x2 to 1: four equal weights, truncated mean (red 555 / 4, alpha 6 / 4).
    auto square = MakePicture(2, 2, {0x00000000, 0x01640000, 0x02C80000, 0x03FF0000});
    EXPECT_EQ(square->Resized({1, 1}, EImageFilter::Filtered)->GetRow(0)[0], 0x018A0000u);
    // 4 to 1 across: inner weights 1024, outer 1024 * e^-0.28 = 773.
    auto line = MakePicture(4, 1, {0xFF000000, B, B, 0xFF000000});
    EXPECT_EQ(line->Resized({1, 1}, EImageFilter::Filtered)->GetRow(0)[0],
              0xFF000000u | 255 * 2048 / (2048 + 1546));
}

TEST(ImageData, FastFilterGivesTheReferenceBytesAtEveryScale) {
    auto source = MakeNoise(200, 160, 1);
    source->opacity = 140;
    const std::vector<std::pair<CRect, CRect>> cases = {
        {{0, 0, 61, 47}, {0, 0, 23, 18}},    {{0, 0, 61, 47}, {0, 0, 150, 101}},
        {{5, 3, 40, 44}, {2, 7, 33, 29}},    {{0, 0, 61, 47}, {0, 0, 60, 47}},
        {{10, 10, 11, 11}, {0, 0, 150, 9}},  {{0, 0, 128, 128}, {0, 0, 1, 1}},
        {{0, 0, 129, 129}, {0, 0, 1, 1}},      // the largest footprint of the fast loop, and one beyond
        {{0, 0, 200, 160}, {0, 0, 150, 140}}}; // enough rows to be stretched in two halves
    for (const auto& [from, to] : cases) {
        for (EImageBlend blend : {EImageBlend::Copy, EImageBlend::Blend}) {
            auto fast = MakeNoise(150, 140, 2);
            auto reference = fast->Clone();
            fast->Stretch(*source, from, to, blend, EImageFilter::Filtered);
            reference->StretchFilteredReference(*source, from, to, blend);
            EXPECT_EQ(PixelsOf(*fast), PixelsOf(*reference)) << to.Width() << "x" << to.Height();
        }
    }
    // White under the largest footprint: channel sums beyond 2^31.
    auto white = MakePicture(128, 128, Pixels(128 * 128, W));
    auto one = EImageData::New({1, 1}, EImageMemory::NoFreeing);
    one->Stretch(*white, {0, 0, 128, 128}, {0, 0, 1, 1}, EImageBlend::Copy, EImageFilter::Filtered);
    EXPECT_EQ(one->GetRow(0)[0], W);
}

TEST(ImageData, BlendPixelsGivesTheBytesOfBlendPixelEvenOnOverlappingRows) {
    auto sources = MakeNoise(1023, 1, 3);
    auto targets = MakeNoise(1023, 1, 4);
    for (int opacity = 0; opacity < 256; opacity += 5) {
        auto blended = targets->Clone();
        BlendPixels(blended->GetRow(0), sources->GetRow(0), 1023, static_cast<std::uint8_t>(opacity));
        for (long i = 0; i < 1023; ++i)
            ASSERT_EQ(blended->GetRow(0)[i], BlendPixel(targets->GetRow(0)[i], sources->GetRow(0)[i],
                                                        static_cast<std::uint8_t>(opacity)));
    }
    Pixels expected = PixelsOf(*targets);
    for (size_t x = 1; x < 9; ++x)
        expected[x] = BlendPixel(expected[x], expected[x - 1], 255);
    targets->CopyRect(*targets, {0, 0, 8, 1}, {1, 0},
                      EImageBlend::Blend); // each pixel blends the one just written
    EXPECT_EQ(Pixels(targets->GetRow(0), targets->GetRow(0) + 9),
              Pixels(expected.begin(), expected.begin() + 9));

    // A tall picture, blended in two halves of rows at once, pixel by pixel alike.
    auto tallSource = MakeNoise(37, 301, 5);
    auto tallTarget = MakeNoise(40, 310, 6);
    auto expectedTall = tallTarget->Clone();
    tallSource->opacity = 200;
    for (long y = 0; y < 301; ++y)
        for (long x = 0; x < 37; ++x)
            expectedTall->GetRow(y + 7)[x + 2] =
                BlendPixel(tallTarget->GetRow(y + 7)[x + 2], tallSource->GetRow(y)[x], 200);
    tallTarget->CopyRect(*tallSource, {0, 0, 37, 301}, {2, 7}, EImageBlend::Blend);
    EXPECT_EQ(PixelsOf(*tallTarget), PixelsOf(*expectedTall));
}

TEST(ImageData, MapRectScalesEachAxisByTruncatingDivision) {
    EXPECT_EQ(MapRect({100, 50}, {300, 50}, {10, 3, 299, 40}), (CRect{3, 3, 99, 40}));
    EXPECT_EQ(MapRect({100, 50}, {0, 50}, {10, 3, 299, 40}), (CRect{}));
    EXPECT_EQ(MapRectRelative({50, 20}, {100, 100, 200, 140}, {150, 110, 200, 140}), (CRect{25, 5, 50, 20}));
}

TEST(ImageData, ExpLookupReadsATableInHundredths) {
    EXPECT_EQ(ExpLookup(0.5), 1.0);
    EXPECT_EQ(ExpLookup(-0.019), std::exp(-0.01));
    EXPECT_EQ(ExpLookup(-100.0), std::exp(-100.0));
    EXPECT_EQ(ExpLookup(-100.02), 0.0);
}
