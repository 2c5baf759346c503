#include "imaging/EImgOperator.h"
#include "ImagingTestSupport.h"
#include "imaging/EImageData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

using qvrTest::MakeNoise;
using qvrTest::MakePicture;
using qvrTest::PixelsOf;

namespace {

using Pixels = std::vector<std::uint32_t>;

Pixels shearRow(const Pixels& source, size_t targetWidth, long offset, double weight,
                std::uint32_t background) {
    Pixels target(targetWidth, 0xDEADBEEF);
    EImgOperator::ShearRow(source, target, offset, weight, background);
    return target;
}

// Three by two, with alpha in all its forms.
std::unique_ptr<EImageData> smallPicture() {
    return MakePicture(3, 2, {0xFF102030, 0xFF405060, 0xFFF0E0D0, 0x80FFFFFF, 0xFF000000, 0x00ABCDEF});
}

} // namespace

TEST(EImgOperator, NormalizeAngleLooksAtTenthsAndKeepsWholeDegrees) {
    const std::pair<double, double> cases[] = {{0.0, 0.0},
                                               {359.95, 359.0},
                                               {-0.05, 0.0},
                                               {-0.15, 359.0},
                                               {360.04, 0.0},
                                               {725.04, 5.0},
                                               {-10.0, 350.0},
                                               {0.99, 0.0},
                                               {-725.0, 355.0},
                                               {1e300, 0.0},
                                               {std::numeric_limits<double>::quiet_NaN(), 0.0},
                                               {-std::numeric_limits<double>::infinity(), 0.0}};
    for (const auto& [angle, expected] : cases) {
        const double normalized = EImgOperator::NormalizeAngle(angle);
        EXPECT_EQ(normalized, expected) << angle;
        EXPECT_FALSE(std::signbit(normalized)) << angle;
    }
}

TEST(EImgOperator, ShearRowCarriesAPartOfEachPixelOnAndEndsWithTheCarry) {
    // 0xFF804020 at weight 0.5: the carry is 127, 64, 32, 16; the pixel keeps the rest.
    EXPECT_EQ(shearRow({0xFF804020}, 3, 1, 0.5, 0), (Pixels{0, 0x80402010, 0x7F402010}));
    // The first pixel takes the whole background as carry, clamped; weight 0 moves nothing.
    EXPECT_EQ(shearRow({0xFFF8F8F8, 0x01020304}, 3, 0, 0.0, 0x10101010),
              (Pixels{0xFFFFFFFF, 0x01020304, 0x00000000}));
    EXPECT_EQ(shearRow({0x01020304}, 4, 1, 0.0, 0x10101010), (Pixels{0x10101010, 0x11121314, 0, 0x10101010}));
    // Pixels before the first cell are skipped but pass on their carry.
    EXPECT_EQ(shearRow({0x40, 0x80, 0xFF}, 3, -1, 0.25, 0), (Pixels{0x70, 0xE0, 0x3F}));
}

TEST(EImgOperator, ShearRowBeyondEitherEndLeavesOnlyBackground) {
    const std::uint32_t bg = 0x11223344;
    EXPECT_EQ(shearRow({1, 2, 3}, 3, 5, 0.5, bg), (Pixels{bg, bg, bg}));
    EXPECT_EQ(shearRow({1, 2, 3}, 3, 3, 0.5, bg), (Pixels{bg, bg, bg}));
    EXPECT_EQ(shearRow({1, 2, 3}, 3, -10, 0.5, bg), (Pixels{bg, bg, bg}));
    EXPECT_EQ(shearRow({}, 2, 0, 0.5, bg), (Pixels{bg, bg}));
    EXPECT_EQ(shearRow({1, 2, 3}, 0, 0, 0.5, bg), (Pixels{}));
}

TEST(EImgOperator, ShearColumnWorksOnItsColumnOnly) {
    auto source = MakePicture(2, 3, {0x40, 1, 0x80, 2, 0xFF, 3});
    auto target = MakePicture(2, 3, Pixels(6, 7));
    EImgOperator::ShearColumn(0, *source, *target, -1, 0.25, 0);
    EImgOperator::ShearColumn(2, *source, *target, 0, 0.25, 0);
    EImgOperator::ShearColumn(-1, *source, *target, 0, 0.25, 0);
    EXPECT_EQ(PixelsOf(*target), (Pixels{0x70, 7, 0xE0, 7, 0x3F, 7}));
}

// Worked out step by step from the three shears on the three by two picture.
TEST(EImgOperator, ShearRotateGivesTheBytesOfTheThreeShears) {
    struct Case {
        double angle;
        std::uint32_t background;
        long width, height;
        Pixels pixels;
    };
    const Case cases[] = {
        {10.0,
         0,
         4,
         3,
         {0xA20C1621, 0xD43A4652, 0xF7E0D3C4, 0x00000000, 0x958E9397, 0xED2C2F33, 0x2D8FABC7, 0x01080A0B,
          0x21424242, 0x29101010, 0x05000000, 0x00000000}},
        {-30.0,
         0xFF0000FF,
         4,
         4,
         {0xFF050AFF, 0xFF1019FF, 0xFF0D11FF, 0x88000088, 0xFFA2A2FF, 0xF9595E6D, 0xFD868687, 0x442D2C2B,
          0xFF0000FF, 0x76101010, 0x2194B1CE, 0x00000000, 0xFF0000FF, 0xFF0000FF, 0xBA0000BA, 0xFF0000FF}},
        {45.0,
         0,
         4,
         4,
         {0x2C0A0D10, 0xB57E7A76, 0x6954504C, 0x00000000, 0x8A151E26, 0xDC525D68, 0x8235404B, 0x00000000,
          0x562F3338, 0x79646566, 0x1E1A1A1A, 0x00000000, 0x070E0E0E, 0x0D1A1A1A, 0x00000000, 0x00000000}},
    };
    auto source = smallPicture();
    for (const Case& c : cases) {
        for (auto rotate : {EImgOperator::ShearRotate, EImgOperator::ShearRotateReference}) {
            auto turned = rotate(*source, c.angle, c.background);
            ASSERT_NE(turned, nullptr);
            EXPECT_EQ(turned->GetSize(), (CSize{c.width, c.height})) << c.angle;
            EXPECT_EQ(PixelsOf(*turned), c.pixels) << c.angle;
        }
    }
    EXPECT_EQ(PixelsOf(*source), PixelsOf(*smallPicture()));
}

TEST(EImgOperator, QualityTurnOfTenDegreesHasTheShearSizes) {
    auto source = MakeNoise(100, 100, 3);
    auto turned = EImgOperator::RotateImage(*source, 10.0, 0, ERotateQuality::Filtered);
    ASSERT_NE(turned, nullptr);
    EXPECT_EQ(turned->GetSize(), (CSize{116, 116}));
    auto fast = EImgOperator::RotateImage(*source, 10.0, 0, ERotateQuality::Fast);
    ASSERT_NE(fast, nullptr);
    EXPECT_EQ(fast->GetSize(), (CSize{115, 115}));
}

TEST(EImgOperator, FastAndReferenceShearsGiveIdenticalBytes) {
    const std::pair<CSize, std::uint32_t> pictures[] = {
        {{64, 48}, 0}, {{37, 91}, 0xFF204080}, {{200, 3}, 0x7F7F7F7F}, {{1, 1}, 0}, {{5, 0}, 0}};
    for (const auto& [size, background] : pictures) {
        auto source = MakeNoise(size.cx, size.cy, static_cast<std::uint32_t>(size.cx * 7 + size.cy));
        for (double angle : {1.0, 10.0, 33.0, 45.0, -1.0, -44.0, 316.0, 359.0, 0.3}) {
            auto fast = EImgOperator::ShearRotate(*source, angle, background);
            auto reference = EImgOperator::ShearRotateReference(*source, angle, background);
            ASSERT_NE(fast, nullptr);
            ASSERT_NE(reference, nullptr);
            ASSERT_EQ(fast->GetSize(), reference->GetSize());
            EXPECT_EQ(PixelsOf(*fast), PixelsOf(*reference)) << size.cx << "x" << size.cy << " at " << angle;
        }
    }
}

TEST(EImgOperator, QuarterTurnsMovePixelsExactly) {
    auto source = smallPicture();
    const Pixels p = PixelsOf(*source);
    auto quarter = EImgOperator::Rotate90(*source);
    EXPECT_EQ(quarter->GetSize(), (CSize{2, 3}));
    EXPECT_EQ(PixelsOf(*quarter), (Pixels{p[2], p[5], p[1], p[4], p[0], p[3]}));
    auto half = EImgOperator::Rotate180(*source);
    EXPECT_EQ(PixelsOf(*half), (Pixels{p[5], p[4], p[3], p[2], p[1], p[0]}));
    auto threeQuarters = EImgOperator::Rotate270(*source);
    EXPECT_EQ(threeQuarters->GetSize(), (CSize{2, 3}));
    EXPECT_EQ(PixelsOf(*threeQuarters), (Pixels{p[3], p[0], p[4], p[1], p[5], p[2]}));
}

TEST(EImgOperator, QualityTurnsTakeTheNearestQuarterTurnFirst) {
    auto source = MakeNoise(9, 5, 11);
    const auto quality = [&](double angle) {
        return PixelsOf(*EImgOperator::RotateImage(*source, angle, 0, ERotateQuality::Filtered));
    };
    EXPECT_EQ(quality(90.0), PixelsOf(*EImgOperator::Rotate90(*source)));
    EXPECT_EQ(quality(-180.0), PixelsOf(*EImgOperator::Rotate180(*source)));
    EXPECT_EQ(quality(270.07), PixelsOf(*EImgOperator::Rotate270(*source)));
    EXPECT_EQ(quality(100.0),
              PixelsOf(*EImgOperator::ShearRotate(*EImgOperator::Rotate90(*source), 10.0, 0)));
    EXPECT_EQ(quality(136.0),
              PixelsOf(*EImgOperator::ShearRotate(*EImgOperator::Rotate180(*source), -44.0, 0)));
    EXPECT_EQ(quality(315.0),
              PixelsOf(*EImgOperator::ShearRotate(*EImgOperator::Rotate270(*source), 45.0, 0)));
    // From 316 on no quarter turn is taken: the shears run on negative sine and tangent.
    EXPECT_EQ(quality(350.0), PixelsOf(*EImgOperator::ShearRotate(*source, 350.0, 0)));
    EXPECT_EQ(quality(45.9), PixelsOf(*EImgOperator::ShearRotate(*source, 45.0, 0)));
}

TEST(EImgOperator, NoTurnGivesACopyInBothPaths) {
    auto source = MakeNoise(6, 4, 5);
    for (double angle : {0.0, 360.04, -0.05, 0.09})
        for (ERotateQuality quality : {ERotateQuality::Fast, ERotateQuality::Filtered}) {
            auto copy = EImgOperator::RotateImage(*source, angle, 0xFFFFFFFF, quality);
            ASSERT_NE(copy, nullptr);
            EXPECT_NE(copy.get(), source.get());
            EXPECT_EQ(PixelsOf(*copy), PixelsOf(*source)) << angle;
        }
    EXPECT_EQ(PixelsOf(*EImgOperator::ShearRotate(*source, 0.0, 5)), PixelsOf(*source));
    EXPECT_EQ(PixelsOf(*EImgOperator::FastRotate(*source, 0.000001, 5)), PixelsOf(*source));
}

TEST(EImgOperator, FastTurnTakesTheNearestSourcePixel) {
    auto source = smallPicture();
    auto quarter = EImgOperator::FastRotate(*source, 90.0, 0x12345678);
    ASSERT_NE(quarter, nullptr);
    EXPECT_EQ(PixelsOf(*quarter), PixelsOf(*EImgOperator::Rotate90(*source)));
    auto turned = EImgOperator::FastRotate(*MakePicture(20, 10, Pixels(200, 7)), 30.0, 0x12345678);
    ASSERT_NE(turned, nullptr);
    EXPECT_EQ(turned->GetSize(), (CSize{22, 18}));
    const Pixels pixels = PixelsOf(*turned);
    // No pixel is mixed, and the 200 source pixels cover about as many in the box of 396.
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 7) +
                  std::count(pixels.begin(), pixels.end(), 0x12345678),
              396);
    EXPECT_NEAR(static_cast<double>(std::count(pixels.begin(), pixels.end(), 7)), 200.0, 20.0);
}

TEST(EImgOperator, EmptyPicturesAndSteepShearsGiveNoFaults) {
    for (CSize size : {CSize{0, 0}, CSize{0, 4}, CSize{4, 0}}) {
        auto empty = EImageData::New(size, EImageMemory::NoFreeing);
        for (double angle : {10.0, 90.0, 200.0, 300.0, 350.0})
            for (ERotateQuality quality : {ERotateQuality::Fast, ERotateQuality::Filtered})
                EXPECT_NE(EImgOperator::RotateImage(*empty, angle, 0, quality), nullptr);
        EXPECT_EQ(EImgOperator::Rotate90(*empty)->GetSize(), (CSize{size.cy, size.cx}));
    }
    // Half a turn by shears alone would need a picture wider than any allowed.
    auto source = MakeNoise(10, 10, 1);
    EXPECT_EQ(EImgOperator::ShearRotate(*source, 180.0, 0), nullptr);
    EXPECT_EQ(EImgOperator::ShearRotateReference(*source, 180.0, 0), nullptr);
}
