#include "ProbeSource.h"

#include "foundation/ELog.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImageData.h"
#include "model/iProject.h"
#include "objects/imodMerger.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t backgroundColour = 0xFF204060;
constexpr std::uint32_t layerColour = 0xFFC08040;

// A composer over a 720 by 576 background of one colour, with probes as layers.
class Composer : public ::testing::Test {
protected:
    void SetUp() override {
        background.Size = {720, 576};
        background.Colour = backgroundColour;
        composer.LinkParent(&background);
    }

    ProbeSource& addLayer(const std::string& name, EImageSize size, std::uint32_t colour = layerColour) {
        layers.push_back(std::make_unique<ProbeSource>(name));
        ProbeSource& layer = *layers.back();
        layer.Size = size;
        layer.Colour = colour;
        composer.LinkParent(&layer);
        return layer;
    }
    imodMergerLink& linkOf(const iElement& layer) { return *composer.GetLinkOf(&layer); }
    std::vector<std::string> valueNames() const {
        std::vector<std::string> names;
        for (iActiveValue* value = composer.GetFirstValue(); value; value = value->GetNextValue())
            names.push_back(value->GetName());
        std::sort(names.begin(), names.end());
        return names;
    }

    ProbeSource background{"Background"};
    std::vector<std::unique_ptr<ProbeSource>> layers;
    imodMerger composer{"Composer"};
};

} // namespace

TEST_F(Composer, OnlyABackgroundComesThroughUnchanged) {
    background.Colour = 0;
    const Rendered rendered = RenderWhole(composer);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.Size, (CSize{720, 576}));
    EXPECT_EQ(rendered.At(719, 575), ProbeSource::PatternAt(719, 575));
    EXPECT_EQ(composer.GetStateText(), "Background: \"Background\"");
    EXPECT_EQ(imodMerger("Empty").GetStateText(), "<no background>");
}

TEST_F(Composer, LayerAtOriginIsCentredWithTheOddPixelRightAndBelow) {
    ProbeSource& even = addLayer("Even", {100, 100});
    ProbeSource& odd = addLayer("Odd", {101, 101});
    const Rendered rendered = RenderWhole(composer);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(linkOf(even).GetLayerRect(), (CRect{310, 238, 410, 338}));
    EXPECT_EQ(linkOf(odd).GetLayerRect(), (CRect{310, 238, 411, 339}));
    EXPECT_EQ(rendered.At(310, 238), layerColour);
    EXPECT_EQ(rendered.At(410, 338), layerColour);
    EXPECT_EQ(rendered.At(411, 339), backgroundColour);
    EXPECT_EQ(rendered.At(309, 237), backgroundColour);
}

TEST_F(Composer, LayersReachingOverTheEdgeAreRenderedOnlyWhereTheyShow) {
    ProbeSource& layer = addLayer("Layer", {100, 100});
    linkOf(layer).GetXPosition().SetSingleKey(0, -420.0, false);
    linkOf(layer).GetYPosition().SetSingleKey(0, 300.0, false);
    RenderWhole(composer);
    EXPECT_EQ(layer.Renders, 0) << "wholly outside";
    linkOf(layer).GetXPosition().SetSingleKey(0, -340.3, false);
    linkOf(layer).GetYPosition().SetSingleKey(0, 270.9, false);
    const Rendered corner = RenderWhole(composer);
    EXPECT_EQ(linkOf(layer).GetLayerRect(), (CRect{-30, 508, 70, 608}));
    EXPECT_EQ(layer.LastRect, (CRect{30, 0, 100, 68}));
    EXPECT_EQ(corner.At(69, 575), layerColour);
    EXPECT_EQ(corner.At(70, 575), backgroundColour);
    EXPECT_EQ(corner.At(0, 507), backgroundColour);
}

TEST_F(Composer, InactiveOrAlmostTransparentLayersArePlacedButNotRendered) {
    ProbeSource& layer = addLayer("Layer", {100, 100}, 0x80C08040);
    linkOf(layer).GetActive().SetSingleKey(0, -1.0, false);
    linkOf(layer).GetXPosition().SetSingleKey(0, 10.0, false);
    EXPECT_EQ(RenderWhole(composer).At(360, 288), backgroundColour);
    EXPECT_EQ(linkOf(layer).GetLayerRect(), (CRect{320, 238, 420, 338}));
    linkOf(layer).GetActive().SetSingleKey(0, 1.0, false);
    iActiveValue& opacity = linkOf(layer).GetOpacity();
    opacity.SetSingleKey(0, 0.3, false);
    EXPECT_EQ(RenderWhole(composer).At(360, 288), backgroundColour);
    EXPECT_EQ(layer.Renders, 0);
    opacity.SetSingleKey(0, 0.6, false);
    EXPECT_EQ(RenderWhole(composer).At(360, 288), BlendPixel(backgroundColour, 0x80C08040, 2));
    opacity.SetSingleKey(0, 150.0, false);
    EXPECT_EQ(RenderWhole(composer).At(360, 288), BlendPixel(backgroundColour, 0x80C08040, 255));
}

TEST_F(Composer, AThirdSizePreviewDrawsEvenAOnePixelLayer) {
    ProbeSource& thin = addLayer("Thin", {1, 90});
    const Rendered rendered = RenderElement(composer, {0, 0, 720, 576}, {240, 192}, false);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.Size, (CSize{240, 192}));
    EXPECT_EQ(thin.LastDisplaySize, (EImageSize{1, 30}));
    EXPECT_EQ(rendered.At(119, 100), layerColour);
    EXPECT_EQ(rendered.At(120, 100), backgroundColour);
}

TEST_F(Composer, FailingLayersAreLeftOutWithANoteAndALogEntry) {
    ScratchDirectory dir("composer");
    EPrefsLog::StoreSettings(dir.File("test.log"), false, ELog::LevelMessage);
    ProbeSource& broken = addLayer("Broken", {50, 50});
    broken.FailRender = true;
    ProbeSource& sizeless = addLayer("Sizeless", {50, 50});
    sizeless.FailSize = true;
    ProbeSource& good = addLayer("Good", {50, 50});
    linkOf(good).GetXPosition().SetSingleKey(0, 100.0, false);
    const Rendered rendered = RenderWhole(composer, 7);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.At(460, 288), layerColour);
    EXPECT_EQ(
        rendered.Result.Notes,
        (std::vector<std::string>{"Composer Composer: Can't render Broken: Probe failure",
                                  "Composer Composer: Can't render Sizeless (no image size): Invalid size"}));
    const std::string log = ScratchDirectory::ReadAll(dir.File("test.log"));
    EPrefsLog::Get().Reset();
    EXPECT_NE(log.find("[Rendering composer Composer]"), std::string::npos) << log;
    EXPECT_NE(log.find("Failed to render source \"Broken\" (Probe) in frame 7:"), std::string::npos) << log;
    EXPECT_NE(log.find("Rendering will be continued."), std::string::npos) << log;
}

TEST_F(Composer, WithoutIgnoringErrorsAFailingLayerFailsTheRender) {
    ProbeSource& broken = addLayer("Broken", {50, 50});
    composer.SetIgnoreSourceErrors(false);
    broken.FailRender = true;
    Rendered rendered = RenderWhole(composer);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Element.Get(), &broken);
    EXPECT_EQ(rendered.Result.Message, "Probe failure");
    EXPECT_TRUE(rendered.Pixels.empty());
    broken.FailSize = true;
    rendered = RenderWhole(composer);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Message, "Invalid size");
}

TEST_F(Composer, AFailedBackgroundFailsWhateverThePolicy) {
    background.FailRender = true;
    EXPECT_EQ(RenderWhole(composer).Result.Element.Get(), &background);
}

TEST_F(Composer, LayersOfNoOrNegativeSizeDrawNothing) {
    ProbeSource& empty = addLayer("Empty", {0, 40});
    ProbeSource& negative = addLayer("Negative", {-30, 40});
    const Rendered rendered = RenderWhole(composer);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(empty.Renders + negative.Renders, 0);
    EXPECT_EQ(rendered.At(360, 288), backgroundColour);
}

TEST_F(Composer, OnlyLayersShowTheirValuesUnderTheParentsName) {
    EXPECT_EQ(valueNames(), (std::vector<std::string>{"Enabled"}));
    ProbeSource& layer = addLayer("Layer", {50, 50});
    EXPECT_EQ(valueNames(), (std::vector<std::string>{"Enabled", "Layer: Active", "Layer: Opacity",
                                                      "Layer: X position", "Layer: Y position"}));
    layer.SetName("Title", true);
    EXPECT_EQ(composer.GetLinkOfName("TITLE"), &linkOf(layer));
    EXPECT_NE(FindValue(composer, "Title: Opacity"), nullptr);
    EXPECT_EQ(FindValue(composer, "Layer: Opacity"), nullptr);
}

TEST_F(Composer, MovingALayerBelowTheBackgroundSwapsTheirRoles) {
    ProbeSource& layer = addLayer("Layer", {50, 50});
    imodMergerLink& moved = linkOf(layer);
    moved.GetXPosition().SetSingleKey(0, 33.0, false);
    moved.Unlink(true);
    moved.Link(true, composer.GetFirstParentLink());
    EXPECT_EQ(composer.GetFirstParent(), &layer);
    EXPECT_EQ(FindValue(composer, "Layer: X position"), nullptr);
    EXPECT_NE(FindValue(composer, "Background: X position"), nullptr);

    imodMergerLink& former = linkOf(background);
    former.Unlink(true);
    former.Link(true, composer.GetFirstParentLink());
    ASSERT_NE(FindValue(composer, "Layer: X position"), nullptr);
    EXPECT_EQ(FindValue(composer, "Layer: X position")->GetValue(0), 33.0) << "the old keys come back";

    composer.UnlinkParent(&background);
    EXPECT_EQ(composer.GetFirstParent(), &layer);
    EXPECT_EQ(valueNames(), (std::vector<std::string>{"Enabled"})) << "the new background shows no values";
    EXPECT_EQ(RenderWhole(composer).Size, (CSize{50, 50}));
}

TEST(ComposerFile, ValuesAndPolicySurviveAProjectRoundTrip) {
    iFactoryProducerType::GlobalInit();
    qvrCTreeData block("Project");
    hReportRoot report("Saving");
    {
        iProject project;
        iElement* base = project.Adopt(std::make_unique<ProbeSource>("Base"));
        iElement* top = project.Adopt(std::make_unique<ProbeSource>("Top"));
        auto* composer = static_cast<imodMerger*>(project.Adopt(std::make_unique<imodMerger>("Mix")));
        composer->LinkParent(base);
        composer->LinkParent(top);
        composer->GetLinkOf(top)->GetOpacity().SetKey(10, 40.0, true, false, false);
        composer->SetIgnoreSourceErrors(false);
        project.Save(block, report);
    }
    iProject loaded;
    loaded.Load(block, report);
    auto* composer = dynamic_cast<imodMerger*>(loaded.FindElement("Mix"));
    ASSERT_NE(composer, nullptr);
    EXPECT_FALSE(composer->GetIgnoreSourceErrors());
    EXPECT_EQ(composer->GetFirstParent()->GetName(), "Base");
    iActiveValue* opacity = FindValue(*composer, "Top: Opacity");
    ASSERT_NE(opacity, nullptr);
    EXPECT_EQ(opacity->GetValue(10), 40.0);
    EXPECT_EQ(FindValue(*composer, "Base: Opacity"), nullptr);
    EXPECT_TRUE(report.GetEntries().empty());
    loaded.Clear();
    iFactoryProducerType::GlobalRem();
}
