#include "projector/LQuickTable.h"

#include "foundation/ELog.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/qvrCSyncObjects.h"
#include "imaging/ImagingTestSupport.h"

#include "ProjectionTestSupport.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t Untouched = 0x12345678;

LCorners box(long left, long top, long right, long bottom) {
    return {CPoint{left, top}, CPoint{right, top}, CPoint{right, bottom}, CPoint{left, bottom}};
}

std::unique_ptr<EImageData> filled(CSize size, std::uint32_t colour) {
    auto picture = EImageData::New(size, EImageMemory::NoFreeing);
    picture->Fill(colour);
    return picture;
}

// The user's log goes to a scratch file for the test's life.
class LoggedTest : public ::testing::Test {
protected:
    void SetUp() override { EPrefsLog::StoreSettings(dir.File("test.log"), false, ELog::LevelMessage); }
    void TearDown() override { EPrefsLog::Get().Reset(); }
    std::string logText() const { return ScratchDirectory::ReadAll(dir.File("test.log")); }

    ScratchDirectory dir{"quicktable"};
};

} // namespace

TEST(LQuickTable, RowsAndColumnsCoverExactlyThePatch) {
    LQuickTable table;
    ASSERT_EQ(table.Build(PreparedProjection(box(2, 1, 7, 5), {6, 5}), {10, 8}, nullptr), LQuickTable::BuildDone);
    EXPECT_EQ(table.GetFirstRow(), 1);
    EXPECT_EQ(table.GetLastRow(), 5);
    for (long row = 1; row <= 5; ++row) {
        const LQuickRow& map = table.GetRow(row);
        EXPECT_EQ(map.GetRow(), row);
        EXPECT_EQ(map.GetFirstColumn(), 2);
        EXPECT_EQ(map.GetLastColumn(), 7);
        for (long column = 2; column <= 7; ++column)
            EXPECT_EQ(map.GetPixel(column).x, column - 2);
    }
    EXPECT_EQ(table.GetSourceSize(), (CSize{6, 5}));
}

TEST(LQuickTable, NothingToMapLeavesTheTableEmpty) {
    LQuickTable table;
    EXPECT_EQ(table.Build(PreparedProjection(box(20, 20, 30, 30), {5, 5}), {10, 10}, nullptr), LQuickTable::BuildEmpty)
        << "the patch lies wholly outside the target";
    EXPECT_TRUE(table.IsEmpty());
    EXPECT_EQ(
        table.Build(PreparedProjection(box(0, 0, 9, 9), {5, 5}, LProjection::FilterLinear, 0.05), {10, 10}, nullptr),
        LQuickTable::BuildEmpty)
        << "a filter level below 0.1";
    EXPECT_EQ(table.Build(PreparedProjection(box(0, 0, 9, 9), {5, 5}), {0, 10}, nullptr), LQuickTable::BuildEmpty);

    LQuickRow row;
    EXPECT_FALSE(row.Build(PreparedProjection(box(0, 0, 9, 9), {5, 5}), 0, 3));
    EXPECT_TRUE(row.IsEmpty());
}

TEST(LQuickTable, ASetStopEventEndsTheBuild) {
    qvrCEvent stop;
    stop.Set();
    LQuickTable table;
    EXPECT_EQ(table.Build(PreparedProjection(box(0, 0, 9, 9), {5, 5}), {10, 10}, &stop), LQuickTable::BuildStopped);
    EXPECT_TRUE(table.IsEmpty());
}

TEST_F(LoggedTest, AFoldedRowRepeatsThePixelOnItsLeftAndLogsTheUnsurePoints) {
    // A chevron: the notch between P0, P1 and P2 folds the patch over the rows above P1.
    const LProjection projection =
        PreparedProjection({CPoint{0, 0}, CPoint{20, 12}, CPoint{40, 0}, CPoint{20, 30}}, {9, 9});
    LQuickRow row;
    ASSERT_TRUE(row.Build(projection, 41, 6));
    long unsure = 0;
    LQuickPixel probe;
    for (long column = row.GetFirstColumn() + 1; column < row.GetLastColumn(); ++column) {
        if (projection.MapPixel(column, 6, probe)) continue;
        ++unsure;
        EXPECT_EQ(row.GetPixel(column).x, row.GetPixel(column - 1).x);
        EXPECT_EQ(row.GetPixel(column).Weights[3], row.GetPixel(column - 1).Weights[3]);
        EXPECT_NE(logText().find("Unsure projection point (" + std::to_string(column) + ",6)."),
                  std::string::npos)
            << column;
    }
    EXPECT_GT(unsure, 0) << "the row has no hole: the test shape doesn't fold";
    EXPECT_NE(logText().find("[Projective Transformation Module V1.2]"), std::string::npos);
}

TEST(LQuickTable, NearestResamplingThroughAnIdentityTableCopiesTheSource) {
    const CSize size{23, 14};
    LQuickTable table;
    ASSERT_EQ(table.Build(PreparedProjection(box(0, 0, size.cx - 1, size.cy - 1), size, LProjection::FilterNearest),
                          size, nullptr),
              LQuickTable::BuildDone);
    auto source = qvrTest::MakeNoise(size.cx, size.cy, 7);
    auto target = filled(size, Untouched);
    ASSERT_TRUE(table.Resample(*source, *target, nullptr));
    EXPECT_EQ(qvrTest::PixelsOf(*target), qvrTest::PixelsOf(*source));
}

TEST(LQuickTable, ResamplingMixesEveryByteAndTruncates) {
    // Target pixel (5,5) lies where four source pixels meet, each weighing a quarter.
    const std::uint32_t a = 0x0A141E2B; // bytes 43, 30, 20, 10
    const std::uint32_t b = 0xFF000000;
    const std::uint32_t c = 0x00FF0001;
    const std::uint32_t d = 0x01010101;
    std::vector<std::uint32_t> pixels(100, 0xFFFFFFFF);
    pixels[4 * 10 + 4] = a;
    pixels[4 * 10 + 5] = b;
    pixels[5 * 10 + 4] = c;
    pixels[5 * 10 + 5] = d;
    auto source = qvrTest::MakePicture(10, 10, pixels);
    LQuickTable table;
    ASSERT_EQ(table.Build(PreparedProjection(box(0, 0, 10, 10), {10, 10}), {11, 11}, nullptr), LQuickTable::BuildDone);
    auto target = filled({11, 11}, Untouched);
    ASSERT_TRUE(table.Resample(*source, *target, nullptr));
    // Alpha (10+255+0+1)/4 = 66.5, red (20+0+255+1)/4 = 69, green 30/4 + 1/4 = 7.75, blue (43+0+1+1)/4
    // = 11.25.
    EXPECT_EQ(target->GetRow(5)[5], 0x4245070Bu);
}

TEST(LQuickTable, ResamplingLeavesPixelsOutsideTheTableAlone) {
    LQuickTable table;
    ASSERT_EQ(table.Build(PreparedProjection(box(3, 2, 8, 6), {4, 4}, LProjection::FilterNearest), {12, 9}, nullptr),
              LQuickTable::BuildDone);
    auto source = filled({4, 4}, 0xFF808080);
    auto target = filled({12, 9}, Untouched);
    ASSERT_TRUE(table.Resample(*source, *target, nullptr));
    for (long y = 0; y < 9; ++y)
        for (long x = 0; x < 12; ++x) {
            const bool inside = x >= 3 && x <= 8 && y >= 2 && y <= 6;
            EXPECT_EQ(target->GetRow(y)[x], inside ? 0xFF808080 : Untouched) << x << "," << y;
        }

    auto smaller = filled({7, 5}, Untouched);
    ASSERT_TRUE(table.Resample(*source, *smaller, nullptr)) << "rows and columns past the target are cut";
    EXPECT_EQ(smaller->GetRow(4)[6], 0xFF808080);
}

TEST(LQuickTable, ResamplingRefusesAForeignSourceAndStopsOnTheEvent) {
    LQuickTable table;
    ASSERT_EQ(table.Build(PreparedProjection(box(0, 0, 9, 9), {5, 5}), {10, 10}, nullptr), LQuickTable::BuildDone);
    auto target = filled({10, 10}, Untouched);
    EXPECT_FALSE(table.Resample(*filled({6, 5}, 0), *target, nullptr));
    EXPECT_EQ(target->GetRow(0)[0], Untouched);

    qvrCEvent stop;
    stop.Set();
    EXPECT_FALSE(table.Resample(*filled({5, 5}, 0), *target, &stop));
}

TEST(LQuickTable, EveryResamplingLoopGivesTheBytesOfThePlainOne) {
    // Every filter, a slanted patch that reaches the source's edges, and noise in all four bytes.
    const LCorners corners = {CPoint{3, 5}, CPoint{90, 1}, CPoint{84, 70}, CPoint{6, 61}};
    const CSize sourceSize{37, 29};
    auto source = qvrTest::MakeNoise(sourceSize.cx, sourceSize.cy, 11);
    for (std::int32_t mode = LProjection::FilterSquare; mode <= LProjection::FilterNearest; ++mode)
        for (double level : {0.3, 2.0, 9.0}) {
            LQuickTable table;
            ASSERT_EQ(table.Build(PreparedProjection(corners, sourceSize, mode, level), {96, 72}, nullptr),
                      LQuickTable::BuildDone);
            auto plain = filled({96, 72}, Untouched);
            ASSERT_TRUE(table.Resample(*source, *plain, nullptr, LResampleLoop::Plain));
            for (LResampleLoop loop : {LResampleLoop::Avx2, LResampleLoop::Avx512}) {
                if (!LQuickTable::IsAvailable(loop)) continue;
                auto fast = filled({96, 72}, Untouched);
                ASSERT_TRUE(table.Resample(*source, *fast, nullptr, loop));
                EXPECT_EQ(qvrTest::PixelsOf(*fast), qvrTest::PixelsOf(*plain))
                    << "loop " << static_cast<int>(loop) << ", mode " << mode << ", level " << level;
            }
        }
}
