#include "ProbeSource.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImageData.h"
#include "objects/imodMerger.h"
#include "objects/imodPlaceholder.h"
#include "objects/imodScale.h"

#include <gtest/gtest.h>

namespace {

// A scale object of the given target size, linked to a probe of the given size.
struct ScaleChain {
    ScaleChain(EImageSize parentSize, EImageSize target) {
        probe.Size = parentSize;
        scale.LinkParent(&probe);
        scale.GetWidthValue().SetSingleKey(0, static_cast<double>(target.Width), false);
        scale.GetHeightValue().SetSingleKey(0, static_cast<double>(target.Height), false);
    }
    ProbeSource probe{"Probe"};
    imodScale scale{"Scaler"};
};

// The pixels of the probe's full-size 100 by 100 picture scaled to 50 by 50.
std::vector<std::uint32_t> HalvedProbe(EImageFilter filter) {
    auto picture = EImageData::New({100, 100}, EImageMemory::NoFreeing);
    for (long y = 0; y < 100; ++y)
        for (long x = 0; x < 100; ++x)
            picture->GetRow(y)[x] = ProbeSource::PatternAt(x, y);
    const auto halved = picture->Resized({50, 50}, filter);
    std::vector<std::uint32_t> pixels;
    for (long y = 0; y < 50; ++y)
        pixels.insert(pixels.end(), halved->GetRow(y), halved->GetRow(y) + 50);
    return pixels;
}

} // namespace

TEST(iModifier, ModifiersWithoutParentFailWithNoSourceObject) {
    imodScale scale("Scaler");
    imodPlaceholder placeholder("Placeholder");
    imodMerger composer("Composer");
    for (iElement* modifier : std::initializer_list<iElement*>{&scale, &placeholder, &composer}) {
        iImageSizeResult size;
        EXPECT_FALSE(modifier->QueryImageSize(size, 0));
        EXPECT_EQ(size.Message, "The modifier has no source data object.");
        const Rendered rendered = RenderElement(*modifier, {0, 0, 10, 10}, {10, 10}, true);
        EXPECT_FALSE(rendered.Done);
        EXPECT_EQ(rendered.Result.Code, render_failed);
        EXPECT_EQ(rendered.Result.Element.Get(), modifier);
        EXPECT_EQ(rendered.Result.Message, "The modifier has no source data object.");
    }
}

TEST(iModifier, EnabledAtZeroScalesAndBelowZeroIsAStraightWire) {
    ScaleChain chain({100, 100}, {50, 50});
    iActiveValue* enabled = FindValue(chain.scale, "Enabled");
    ASSERT_NE(enabled, nullptr);
    enabled->SetSingleKey(0, 0.0, false);
    EXPECT_EQ(RenderWhole(chain.scale).Size, (CSize{50, 50}));
    enabled->SetSingleKey(0, -0.1, false);
    const Rendered wire = RenderWhole(chain.scale);
    EXPECT_EQ(wire.Size, (CSize{100, 100}));
    EXPECT_EQ(wire.At(99, 99), ProbeSource::PatternAt(99, 99));
}

TEST(iModifier, PlaceholderPassesTheParentAndItsFailuresOn) {
    imodPlaceholder placeholder("Placeholder");
    EXPECT_EQ(placeholder.GetStateText(), "");
    ProbeSource probe("Footage");
    placeholder.LinkParent(&probe);
    EXPECT_EQ(placeholder.GetStateText(), "(Footage)");
    const Rendered rendered = RenderElement(placeholder, {5, 5, 15, 10}, {10, 5}, true);
    EXPECT_EQ(rendered.Size, (CSize{10, 5}));
    EXPECT_EQ(rendered.At(0, 0), ProbeSource::PatternAt(5, 5));
    probe.FailRender = true;
    const Rendered failed = RenderElement(placeholder, {5, 5, 15, 10}, {10, 5}, true);
    EXPECT_FALSE(failed.Done);
    EXPECT_EQ(failed.Result.Element.Get(), &probe);
    EXPECT_EQ(failed.Result.Message, "Probe failure");
}

TEST(imodScale, TargetSizeRoundsHalfUpAndAtFactorOneTheRequestPassesUnchanged) {
    ScaleChain chain({720, 576}, {720, 576});
    RenderElement(chain.scale, {100, 50, 300, 150}, {100, 50}, false);
    EXPECT_EQ(chain.probe.LastRect, (CRect{100, 50, 300, 150}));
    EXPECT_EQ(chain.probe.LastDisplaySize, (EImageSize{100, 50}));
    chain.scale.GetWidthValue().SetSingleKey(0, 359.5, false);
    chain.scale.GetHeightValue().SetSingleKey(0, 287.4, false);
    EXPECT_EQ(chain.scale.GetTargetSize(0), (EImageSize{360, 287}));
}

TEST(imodScale, HalvingAFinalRenderAsksForTheWholeParentAndFiltersIt) {
    ScaleChain chain({100, 100}, {50, 50});
    const Rendered rendered = RenderElement(chain.scale, {0, 0, 50, 50}, {50, 50}, true);
    EXPECT_EQ(chain.probe.LastRect, (CRect{0, 0, 100, 100}));
    EXPECT_EQ(rendered.Result.Rect, (CRect{0, 0, 50, 50}));
    EXPECT_EQ(rendered.Pixels, HalvedProbe(EImageFilter::Filtered));
    chain.scale.SetUseQualityWhenRendering(false);
    EXPECT_EQ(RenderElement(chain.scale, {0, 0, 50, 50}, {50, 50}, true).Pixels,
              HalvedProbe(EImageFilter::Fast));
    chain.scale.SetUseQualityInPreview(true);
    EXPECT_EQ(RenderElement(chain.scale, {0, 0, 50, 50}, {50, 50}, false).Pixels,
              HalvedProbe(EImageFilter::Filtered));
}

TEST(imodScale, CollapsedSectionsAndDisplaySizesKeepOnePixel) {
    ScaleChain chain({10, 10}, {1000, 1000});
    RenderElement(chain.scale, {0, 0, 1, 1}, {1, 1}, false);
    EXPECT_EQ(chain.probe.LastRect, (CRect{0, 0, 1, 1}));
    EXPECT_EQ(chain.probe.LastDisplaySize, (EImageSize{1, 1}));
    RenderElement(chain.scale, {550, 550, 551, 551}, {1, 1}, true);
    EXPECT_EQ(chain.probe.LastRect, (CRect{4, 4, 5, 5}));
}

TEST(imodScale, AParentThatDeliversLessDecidesTheTargetWithTheRoundingPair) {
    ScaleChain chain({100, 100}, {200, 200});
    chain.probe.Deliverable = CRect{0, 0, 50, 100};
    const Rendered rendered = RenderElement(chain.scale, {0, 0, 200, 200}, {200, 200}, true);
    EXPECT_EQ(rendered.Result.Rect, (CRect{0, 0, 101, 201}));
    EXPECT_EQ(rendered.Size, (CSize{101, 201}));
}

TEST(imodScale, ASectionOutsideAClippingParentGivesOneEmptyPixel) {
    ScaleChain chain({100, 100}, {200, 200});
    chain.probe.Deliverable = CRect{0, 0, 100, 100};
    const Rendered rendered = RenderElement(chain.scale, {1000, 1000, 1100, 1100}, {100, 100}, true);
    EXPECT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.Result.Rect, (CRect{1000, 1000, 1001, 1001}));
    EXPECT_EQ(rendered.Pixels, std::vector<std::uint32_t>{0u});
}

TEST(imodScale, LinkingTakesTheFirstParentsSizeOnce) {
    ProbeSource small("Small"), large("Large"), sizeless("Sizeless");
    small.Size = {320, 240};
    large.Size = {500, 400};
    sizeless.FailSize = true;
    imodScale scale("Scaler");
    scale.LinkParent(&small);
    scale.LinkParent(&large);
    EXPECT_EQ(scale.GetTargetSize(0), (EImageSize{320, 240}));
    EXPECT_EQ(scale.GetWidthValue().GetKeyCount(), 1);

    auto copy = scale.Clone();
    EXPECT_EQ(copy->GetTargetSize(0), (EImageSize{320, 240}));
    copy->LinkParent(&sizeless);
    EXPECT_FALSE(copy->GetIgnParentSize()) << "the next parent gets another try";
    copy->LinkParent(&large);
    EXPECT_EQ(copy->GetTargetSize(0), (EImageSize{500, 400}));
}

TEST(imodScale, BlockKeepsTheFlagsAndReadsTheOlderSingleSwitch) {
    imodScale scale("Scaler");
    scale.SetUseQualityInPreview(true);
    scale.SetLockAspect(true);
    qvrCTreeData block("Object");
    hReportRoot report("Saving");
    scale.doSaveData(block, report);
    imodScale loaded("Loaded");
    loaded.doLoadData(block, report);
    EXPECT_TRUE(loaded.GetUseQualityInPreview());
    EXPECT_TRUE(loaded.GetUseQualityWhenRendering());
    EXPECT_TRUE(loaded.GetLockAspect());
    EXPECT_FALSE(loaded.GetIgnParentSize());
    block.SetBool("UseQualityScaleAlways", false);
    loaded.doLoadData(block, report);
    EXPECT_FALSE(loaded.GetUseQualityInPreview());
    EXPECT_FALSE(loaded.GetUseQualityWhenRendering());
}
