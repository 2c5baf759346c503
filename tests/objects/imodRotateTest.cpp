#include "objects/imodRotate.h"
#include "ProbeSource.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"

#include <gtest/gtest.h>

namespace {

const auto patternAt = ProbeSource::PatternAt;

struct RotateChain : ::testing::Test {
    void SetUp() override {
        parent.Size = {8, 6};
        ASSERT_EQ(rotate.LinkParent(&parent), link_done);
    }
    Rendered Render(const CRect& rect, EImageSize display, bool fullSize) {
        return RenderElement(rotate, rect, display, fullSize);
    }
    void SetAngle(double degrees) { rotate.GetAngleValue().SetSingleKey(0, degrees, false); }

    ProbeSource parent{"Probe"};
    imodRotate rotate{"Rotate.1"};
    const CRect square{0, 0, 14, 14};
};

} // namespace

TEST(iRotation, KeepsEightBitsAndTruncatesTowardZero) {
    const iRotation thirty(30.0);
    EXPECT_EQ(thirty.GetSin(), 127); // sin 30° is a hair below one half in double
    EXPECT_EQ(thirty.GetCos(), 221);
    EXPECT_EQ(thirty.Rotate({-1, -1, 1, 1}), (CRect{-1, -1, 1, 1}));
    const iRotation quarter(90.0);
    EXPECT_EQ(quarter.GetSin(), 256);
    EXPECT_EQ(quarter.GetCos(), 0);
    EXPECT_EQ(quarter.Rotate({0, 0, 10, 20}), (CRect{0, -10, 20, 0}));
    EXPECT_EQ(iRotation(-90.0).Rotate({0, 0, 10, 20}), (CRect{-20, 0, 0, 10}));
}

TEST(imodRotate, OwnSizeIsASquareOfWidthPlusHeight) {
    ProbeSource pal("Pal");
    pal.Size = {720, 576};
    imodRotate rotate("Rotate");
    ASSERT_EQ(rotate.LinkParent(&pal), link_done);
    for (double degrees : {0.0, 37.0, 90.0, 359.9}) {
        rotate.GetAngleValue().SetSingleKey(0, degrees, false);
        iImageSizeResult size;
        ASSERT_TRUE(rotate.QueryImageSize(size, 0));
        EXPECT_EQ(size.Size, (EImageSize{1296, 1296}));
    }
    EXPECT_EQ(rotate.GetSize(), (EImageSize{1296, 1296}));
}

TEST_F(RotateChain, LevelPictureSitsCentredInTheSquareOnTransparentBlack) {
    const Rendered rendered = Render(square, {14, 14}, true);
    ASSERT_TRUE(rendered.Done);
    ASSERT_EQ(rendered.Size, (CSize{14, 14}));
    EXPECT_EQ(rendered.Result.Rect, square);
    EXPECT_EQ(parent.Renders, 1);
    EXPECT_EQ(parent.LastRect, (CRect{0, 0, 8, 6}));
    for (long y = 0; y < 14; ++y)
        for (long x = 0; x < 14; ++x) {
            const bool inside = x >= 3 && x < 11 && y >= 4 && y < 10;
            EXPECT_EQ(rendered.At(x, y), inside ? patternAt(x - 3, y - 4) : 0u) << x << "," << y;
        }
}

TEST_F(RotateChain, QuarterTurnIsExactAndAsksOnlyForTheCoveredPart) {
    SetAngle(90.0);
    const Rendered whole = Render(square, {14, 14}, true);
    ASSERT_TRUE(whole.Done);
    // Parent pixel x, y lands at 4 + y, 10 - x: the top left corner goes to the bottom left.
    for (long y = 0; y < 6; ++y)
        for (long x = 0; x < 8; ++x)
            EXPECT_EQ(whole.At(4 + y, 10 - x), patternAt(x, y)) << x << "," << y;
    EXPECT_EQ(whole.At(3, 10), 0u);
    EXPECT_EQ(whole.At(4, 11), 0u);

    // The turned picture's own box: the part comes as it is, no bigger than the box.
    const Rendered box = Render({4, 3, 10, 11}, {6, 8}, true);
    ASSERT_TRUE(box.Done);
    EXPECT_EQ(box.Size, (CSize{6, 8}));
    EXPECT_EQ(box.At(0, 7), patternAt(0, 0));

    const Rendered quarter = Render({7, 7, 10, 11}, {3, 4}, true);
    ASSERT_TRUE(quarter.Done);
    EXPECT_EQ(parent.LastRect, (CRect{0, 3, 4, 6}));
    EXPECT_EQ(quarter.Size, (CSize{3, 4}));
    EXPECT_EQ(quarter.At(0, 0), patternAt(3, 3));
}

TEST_F(RotateChain, SectionBeyondTheTurnedParentIsTransparentAtDisplaySize) {
    SetAngle(30.0);
    const Rendered corner = Render({0, 0, 2, 2}, {5, 4}, false);
    ASSERT_TRUE(corner.Done);
    EXPECT_EQ(parent.Renders, 0);
    EXPECT_EQ(corner.Size, (CSize{5, 4}));
    EXPECT_EQ(corner.Pixels, std::vector<std::uint32_t>(20, 0u));
    EXPECT_EQ(corner.Result.Rect, (CRect{0, 0, 2, 2}));
}

TEST_F(RotateChain, PreviewAsksForFullResolutionAndScalesOnce) {
    const Rendered preview = Render(square, {7, 7}, false);
    ASSERT_TRUE(preview.Done);
    EXPECT_EQ(parent.Renders, 1);
    EXPECT_EQ(parent.LastDisplaySize, (EImageSize{8, 6}));
    ASSERT_EQ(preview.Size, (CSize{7, 7}));
    // The parent's box 3, 4 to 11, 10 maps to 1, 2 to 5, 5; nearest pixels every second one.
    EXPECT_EQ(preview.At(1, 2), patternAt(0, 0));
    EXPECT_EQ(preview.At(4, 4), patternAt(6, 4));
    EXPECT_EQ(preview.At(0, 2), 0u);
    EXPECT_EQ(preview.At(5, 4), 0u);
    EXPECT_EQ(preview.At(4, 5), 0u);
}

TEST_F(RotateChain, FailuresKeepTheParentsCodeOrBecomeOutOfMemory) {
    parent.FailRender = true;
    const Rendered failed = Render(square, {14, 14}, true);
    EXPECT_FALSE(failed.Done);
    EXPECT_EQ(failed.Result.Code, render_failed);
    EXPECT_EQ(failed.Result.Message, "Probe failure");
    EXPECT_EQ(failed.Result.Element.Get(), &parent);
    EXPECT_TRUE(failed.Pixels.empty());

    parent.FailRender = false;
    const Rendered negative = Render({0, 0, 1, 1}, {-4, 4}, false);
    EXPECT_FALSE(negative.Done);
    EXPECT_EQ(negative.Result.Code, render_out_of_memory);
    EXPECT_EQ(negative.Result.Message, "Out of memory during rendering");
    EXPECT_EQ(negative.Result.Element.Get(), &rotate);

    parent.FailSize = true;
    const Rendered sizeless = Render(square, {14, 14}, true);
    EXPECT_FALSE(sizeless.Done);
    EXPECT_EQ(sizeless.Result.Code, render_failed);
    EXPECT_EQ(sizeless.Result.Message, "Invalid size");
    EXPECT_EQ(sizeless.Result.Element.Get(), &parent);
}

TEST_F(RotateChain, PartDeliveredIsPlacedWhereTheParentSaysItLies) {
    parent.Deliverable = CRect{0, 0, 4, 6};
    const Rendered rendered = Render(square, {14, 14}, true);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.At(3, 4), patternAt(0, 0));
    EXPECT_EQ(rendered.At(6, 9), patternAt(3, 5));
    EXPECT_EQ(rendered.At(7, 4), 0u);
    EXPECT_EQ(rendered.At(2, 4), 0u);
}

TEST_F(RotateChain, SectionsAtAnyAngleStayInsideTheirPictures) {
    parent.Size = {37, 23};
    rotate.SetUseQualityInPreview(true);
    for (double degrees : {0.4, 10.0, 45.0, 123.0, 200.0, 333.0})
        for (const CRect& rect : {CRect{0, 0, 60, 60}, CRect{5, 7, 31, 52}, CRect{29, 29, 31, 31},
                                  CRect{-10, -10, 70, 70}, CRect{20, 20, 20, 40}})
            for (bool fullSize : {true, false}) {
                SetAngle(degrees);
                const Rendered rendered = Render(rect, {11, 13}, fullSize);
                EXPECT_TRUE(rendered.Done) << degrees;
            }
}

TEST(imodRotate, QualityFollowsTheRenderKindAndThePreviewFlagActsAlways) {
    imodRotate rotate("Rotate");
    iRenderRequest final;
    final.FullSize = true;
    const iRenderRequest preview;
    EXPECT_EQ(rotate.GetQuality(final), ERotateQuality::Filtered);
    EXPECT_EQ(rotate.GetQuality(preview), ERotateQuality::Fast);
    rotate.SetUseQualityWhenRendering(false);
    EXPECT_EQ(rotate.GetQuality(final), ERotateQuality::Fast);
    rotate.SetUseQualityInPreview(true);
    EXPECT_EQ(rotate.GetQuality(final), ERotateQuality::Filtered);
    EXPECT_EQ(rotate.GetQuality(preview), ERotateQuality::Filtered);
}

TEST(imodRotate, FlagsAreSavedLoadedAndClonedWithTheAngle) {
    imodRotate rotate("Rotate.2");
    rotate.SetUseQualityInPreview(true);
    rotate.SetUseQualityWhenRendering(false);
    rotate.GetAngleValue().SetKey(10, 400.0, true, false, false);
    qvrCTreeData block;
    hReportRoot report("save");
    rotate.doSaveData(block, report);
    ASSERT_NE(block.GetText("UseQualityInPreview"), nullptr);
    EXPECT_EQ(*block.GetText("UseQualityInPreview"), "Yes");
    EXPECT_EQ(*block.GetText("UseQualityWhenRendering"), "No");

    imodRotate loaded("Other");
    loaded.doLoadData(block, report);
    EXPECT_TRUE(loaded.GetUseQualityInPreview());
    EXPECT_FALSE(loaded.GetUseQualityWhenRendering());

    qvrCTreeData partial;
    partial.SetText("UseQualityWhenRendering", "perhaps");
    imodRotate defaults("Third");
    defaults.doLoadData(partial, report);
    EXPECT_FALSE(defaults.GetUseQualityInPreview());
    EXPECT_TRUE(defaults.GetUseQualityWhenRendering());
    EXPECT_EQ(report.GetCount(), 0);

    std::unique_ptr<imodRotate> copy = rotate.Clone();
    EXPECT_EQ(copy->GetName(), "Rotate.2");
    EXPECT_TRUE(copy->GetUseQualityInPreview());
    EXPECT_FALSE(copy->GetUseQualityWhenRendering());
    EXPECT_EQ(copy->GetAngleValue().GetValue(10), 40.0);
    EXPECT_EQ(copy->GetAngleValue().GetValue(5), 200.0);
}

TEST(imodRotate, FactoryMakesRotateModifiers) {
    iFactoryProducerType::GlobalInit();
    std::unique_ptr<iElement> element = iFactory::Get().Produce("Modifier", "rotate", "");
    iFactoryProducerType::GlobalRem();
    ASSERT_NE(dynamic_cast<imodRotate*>(element.get()), nullptr);
    EXPECT_EQ(element->GetElementType(), "Rotate");
    EXPECT_EQ(element->GetName().rfind("Rotate.", 0), 0u);
    EXPECT_EQ(element->GetStateText(), "Rotation");
    EXPECT_TRUE(element->HasObjectBlock());
}
