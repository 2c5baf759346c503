#include "ProbeSource.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/iFactory.h"
#include "objects/isrcLayer.h"

#include <gtest/gtest.h>

namespace {

Rendered RenderLayer(isrcLayer& layer, const CRect& rect, EImageSize display, bool fullSize, long frame = 0) {
    return RenderElement(layer, rect, display, fullSize, frame);
}

bool AllPixelsAre(const Rendered& rendered, std::uint32_t colour) {
    for (std::uint32_t pixel : rendered.Pixels)
        if (pixel != colour) return false;
    return true;
}

const CRect fullFrame{0, 0, 720, 576};

} // namespace

TEST(isrcLayer, NewLayerRendersOpaqueWhitePreviewAtDisplaySize) {
    isrcLayer layer("Solid.1");
    const Rendered rendered = RenderLayer(layer, fullFrame, {72, 58}, false);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.Size, (CSize{72, 58}));
    EXPECT_EQ(rendered.Result.Rect, fullFrame);
    EXPECT_EQ(rendered.Pixels.size(), 72u * 58u);
    EXPECT_TRUE(AllPixelsAre(rendered, 0xFFFFFFFF));
}

TEST(isrcLayer, FinalRenderHasTheSizeOfTheRectangleEvenBeyondTheLayer) {
    isrcLayer layer("Solid");
    const Rendered inside = RenderLayer(layer, {10, 10, 20, 20}, {72, 58}, true);
    ASSERT_TRUE(inside.Done);
    EXPECT_EQ(inside.Size, (CSize{10, 10}));
    const Rendered beyond = RenderLayer(layer, {700, 500, 800, 600}, {}, true);
    ASSERT_TRUE(beyond.Done);
    EXPECT_EQ(beyond.Size, (CSize{100, 100}));
    EXPECT_EQ(beyond.Result.Rect, (CRect{700, 500, 800, 600}));
    EXPECT_TRUE(AllPixelsAre(beyond, 0xFFFFFFFF));
}

TEST(isrcLayer, ZeroWidthRectangleGivesAnEmptyPictureAndSuccess) {
    isrcLayer layer("Solid");
    const Rendered rendered = RenderLayer(layer, {10, 10, 10, 20}, {72, 58}, true);
    EXPECT_TRUE(rendered.Done);
    EXPECT_EQ(rendered.Size.cx, 0);
    EXPECT_TRUE(rendered.Pixels.empty());
}

TEST(isrcLayer, ColourAndAlphaAreAnimatedAndStoredUnmixed) {
    isrcLayer layer("Solid");
    layer.GetRedValue().SetKey(0, 0.0, true, false, false);
    layer.GetRedValue().SetKey(10, 100.0, true, false, false);
    layer.GetGreenValue().SetSingleKey(0, 128.9, false);
    layer.GetBlueValue().SetSingleKey(0, 1.0, false);
    layer.GetAlphaValue().SetSingleKey(0, 0.0, false);
    EXPECT_EQ(layer.GetColor(5), 0x00328001u);
    EXPECT_EQ(layer.GetRed(5), 50);
    EXPECT_EQ(layer.GetGreen(5), 128);
    const Rendered rendered = RenderLayer(layer, fullFrame, {3, 2}, false, 10);
    ASSERT_TRUE(rendered.Done);
    EXPECT_TRUE(AllPixelsAre(rendered, 0x00648001));
}

TEST(isrcLayer, KeysOutsideTheChannelRangeAreClampedOnReading) {
    isrcLayer layer("Solid");
    layer.GetRedValue().SetSingleKey(0, 300.0, false);
    layer.GetBlueValue().SetSingleKey(0, -20.0, false);
    EXPECT_EQ(layer.GetRedValue().GetKey(0)->value, 300.0);
    EXPECT_EQ(layer.GetColor(0), 0xFFFFFF00u);
}

TEST(isrcLayer, EmptySizeFailsQueryAndRender) {
    isrcLayer layer("Solid");
    qvrCTreeData block;
    block.SetText("Size", "0,576");
    hReportRoot root("load");
    layer.doLoadData(block, root);
    EXPECT_EQ(layer.GetSize(0), (EImageSize{720, 576}));

    layer.SetSize({0, 576});
    iImageSizeResult size;
    EXPECT_FALSE(layer.QueryImageSize(size, 0));
    EXPECT_EQ(size.Code, render_failed);
    EXPECT_EQ(size.Message, "Invalid size");
    const Rendered rendered = RenderLayer(layer, fullFrame, {72, 58}, false);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Message, "Invalid size");
    EXPECT_TRUE(rendered.Pixels.empty());
}

TEST(isrcLayer, SizeIsSavedAndBadSizesAreReported) {
    isrcLayer layer("Solid");
    layer.SetSize({320, 240});
    qvrCTreeData saved;
    hReportRoot root("save");
    layer.doSaveData(saved, root);
    ASSERT_NE(saved.GetText("Size"), nullptr);
    EXPECT_EQ(*saved.GetText("Size"), "320,240");

    isrcLayer loaded("Other");
    loaded.doLoadData(saved, root);
    EXPECT_EQ(loaded.GetSize(0), (EImageSize{320, 240}));
    EXPECT_EQ(root.GetCount(), 0);

    qvrCTreeData bad;
    bad.SetText("Size", "wide,high");
    loaded.doLoadData(bad, root);
    qvrCTreeData missing;
    loaded.doLoadData(missing, root);
    ASSERT_EQ(root.GetCount(), 2);
    EXPECT_EQ(root.GetEntries()[0].Text, "Can't read correct size information.");
    EXPECT_EQ(root.GetEntries()[0].Level, 2);
    EXPECT_EQ(loaded.GetSize(0), (EImageSize{320, 240}));
}

TEST(isrcLayer, CloneCopiesSizeAndKeys) {
    isrcLayer layer("Solid");
    layer.SetSize({100, 50});
    layer.GetAlphaValue().SetKey(0, 10.0, true, false, false);
    layer.GetAlphaValue().SetKey(20, 30.0, true, false, false);
    std::unique_ptr<isrcLayer> copy = layer.Clone();
    EXPECT_EQ(copy->GetName(), "Solid");
    EXPECT_EQ(copy->GetSize(0), (EImageSize{100, 50}));
    EXPECT_EQ(copy->GetAlpha(10), 20);
    EXPECT_EQ(copy->GetValueCount(), 4);
}

TEST(isrcLayer, FactoryMakesLayersUnderLoaderSolid) {
    iFactoryProducerType::GlobalInit();
    std::unique_ptr<iElement> element = iFactory::Get().Produce("loader", "SOLID", "");
    iFactoryProducerType::GlobalRem();
    ASSERT_NE(element, nullptr);
    EXPECT_NE(dynamic_cast<isrcLayer*>(element.get()), nullptr);
    EXPECT_EQ(element->GetElementClass(), "Loader");
    EXPECT_EQ(element->GetElementType(), "Solid");
    EXPECT_EQ(element->GetName().rfind("Solid.", 0), 0u);
    EXPECT_EQ(element->GetMaxParents(), 0);
    EXPECT_EQ(element->GetStateText(), "(layer)");
}
