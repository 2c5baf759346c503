#include "ProbeSource.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/iFactory.h"
#include "objects/imodCrop.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t background = 0x80112233;

// A source that delivers more than it is asked for: the section grown by one pixel each way.
class GenerousSource : public ProbeSource {
public:
    using ProbeSource::ProbeSource;

protected:
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override {
        iRenderRequest grown(request);
        grown.Rect = {request.Rect.left - 1, request.Rect.top - 1, request.Rect.right + 1,
                      request.Rect.bottom + 1};
        return ProbeSource::doRender(image, result, grown);
    }
};

struct CropChain {
    CropChain(EImageSize parentSize, EImageSize window, CPoint center = {}, ProbeSource* parent = nullptr)
        : probe(parent ? *parent : own) {
        probe.Size = parentSize;
        crop.LinkParent(&probe);
        crop.GetWidthValue().SetSingleKey(0, static_cast<double>(window.Width), false);
        crop.GetHeightValue().SetSingleKey(0, static_cast<double>(window.Height), false);
        crop.GetCenterXValue().SetSingleKey(0, static_cast<double>(center.x), false);
        crop.GetCenterYValue().SetSingleKey(0, static_cast<double>(center.y), false);
        crop.SetBackgroundColor(background);
    }

    // Checks a final render: the parent's pixel p at p + shift, background elsewhere.
    void ExpectShifted(CPoint shift, CSize visibleParent) {
        const Rendered rendered = RenderWhole(crop);
        ASSERT_TRUE(rendered.Done);
        ASSERT_EQ(rendered.Size, crop.GetCropSize(0).ToSize());
        for (long y = 0; y < rendered.Size.cy; ++y)
            for (long x = 0; x < rendered.Size.cx; ++x) {
                const long px = x - shift.x;
                const long py = y - shift.y;
                const bool inside = px >= 0 && py >= 0 && px < visibleParent.cx && py < visibleParent.cy;
                ASSERT_EQ(rendered.At(x, y), inside ? ProbeSource::PatternAt(px, py) : background)
                    << x << "," << y;
            }
    }

    ProbeSource own{"Probe"};
    ProbeSource& probe;
    imodCrop crop{"Cropper"};
};

} // namespace

TEST(imodCrop, WindowShowsItsPartOfTheParentAndAsksOnlyForThat) {
    CropChain centred({720, 576}, {100, 100});
    centred.ExpectShifted({-310, -238}, {720, 576});
    EXPECT_EQ(centred.probe.LastRect, (CRect{310, 238, 410, 338}));

    CropChain larger({4, 3}, {9, 8});
    larger.ExpectShifted({2, 3}, {4, 3});

    // A positive centre moves the picture right and down; values are truncated.
    CropChain moved({6, 5}, {6, 5}, {1, 2});
    moved.ExpectShifted({1, 2}, {6, 5});
    moved.crop.GetCenterXValue().SetSingleKey(0, -2.9, false);
    moved.ExpectShifted({-2, 2}, {6, 5});
}

TEST(imodCrop, SectionBesideTheParentIsBackgroundAtDisplaySize) {
    CropChain chain({10, 10}, {40, 40});
    const Rendered rendered = RenderElement(chain.crop, {0, 0, 10, 10}, {3, 2}, false);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(chain.probe.Renders, 0);
    EXPECT_EQ(rendered.Result.Rect, (CRect{0, 0, 10, 10}));
    EXPECT_EQ(rendered.Pixels, std::vector<std::uint32_t>(6, background));
}

TEST(imodCrop, PreviewAsksForThePartAtTheSectionsScale) {
    CropChain chain({100, 100}, {200, 200});
    chain.probe.Colour = 0xFF445566;
    const Rendered rendered = RenderElement(chain.crop, {0, 0, 200, 200}, {20, 20}, false);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(chain.probe.LastRect, (CRect{0, 0, 100, 100}));
    EXPECT_EQ(chain.probe.LastDisplaySize, (EImageSize{10, 10}));
    ASSERT_EQ(rendered.Size, (CSize{20, 20}));
    for (long y = 0; y < 20; ++y)
        for (long x = 0; x < 20; ++x) {
            const bool parent = x >= 5 && x < 15 && y >= 5 && y < 15;
            ASSERT_EQ(rendered.At(x, y), parent ? 0xFF445566u : background) << x << "," << y;
        }
}

TEST(imodCrop, WhatTheParentDeliversBeyondOrShortOfTheSectionIsMended) {
    GenerousSource generous("Generous");
    CropChain cut({12, 10}, {4, 4}, {}, &generous);
    cut.ExpectShifted({-4, -3}, {12, 10});

    CropChain mended({10, 10}, {10, 10});
    mended.probe.Deliverable = CRect{0, 0, 5, 10};
    mended.ExpectShifted({0, 0}, {5, 10});
}

TEST(imodCrop, FailuresOfTheParentAndNegativeSizesGiveTheirCodes) {
    CropChain chain({10, 10}, {4, 4});
    chain.probe.FailSize = true;
    Rendered rendered = RenderWhole(chain.crop);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Element.Get(), &chain.probe);
    EXPECT_EQ(rendered.Result.Message, "Invalid size");
    chain.probe.FailSize = false;
    chain.probe.FailRender = true;
    EXPECT_EQ(RenderWhole(chain.crop).Result.Message, "Probe failure");

    // The size query answers the window as it is; a section of negative width has no picture.
    chain.crop.GetWidthValue().SetSingleKey(0, -7.0, false);
    iImageSizeResult size;
    EXPECT_TRUE(chain.crop.QueryImageSize(size, 0));
    EXPECT_EQ(size.Size, (EImageSize{-7, 4}));
    rendered = RenderWhole(chain.crop);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Code, render_out_of_memory);
    EXPECT_EQ(rendered.Result.Message, "Out of memory during rendering");
}

TEST(imodCrop, FactoryMakesItAndColourAndFormAreSaved) {
    iFactoryProducerType::GlobalInit();
    std::unique_ptr<iElement> element = iFactory::Get().Produce("Modifier", "Crop", "");
    std::unique_ptr<iElement> former = iFactory::Get().Produce("Modifier", "Cropper", "Old");
    iFactoryProducerType::GlobalRem();
    auto* crop = dynamic_cast<imodCrop*>(element.get());
    ASSERT_NE(crop, nullptr);
    EXPECT_NE(dynamic_cast<imodCrop*>(former.get()), nullptr) << "the type's former name is read";
    EXPECT_EQ(crop->GetName().rfind("Crop.", 0), 0u);
    for (const char* name : {"Width", "Heigth", "Center X", "Center Y"})
        EXPECT_NE(FindValue(*crop, name), nullptr);
    EXPECT_EQ(crop->GetCropSize(0), (EImageSize{720, 576}));

    crop->SetBackgroundColor(0xFF102030);
    crop->SetRelativeGUI(true);
    qvrCTreeData block;
    hReportRoot report("save");
    crop->doSaveData(block, report);
    EXPECT_EQ(*block.GetText("BackgroundColor"), "-15720400");
    EXPECT_EQ(*block.GetText("RelativeGUI"), "Yes");
    imodCrop loaded("Other");
    loaded.doLoadData(block, report);
    EXPECT_EQ(loaded.GetBackgroundColor(), 0xFF102030u);
    EXPECT_TRUE(loaded.GetRelativeGUI());
    // The colour's unsigned form is read too; an absent key leaves the default.
    block.SetText("BackgroundColor", "4279246896");
    block.RemoveChild(block.Find("RelativeGUI"));
    imodCrop other("Third");
    other.doLoadData(block, report);
    EXPECT_EQ(other.GetBackgroundColor(), 0xFF102030u);
    EXPECT_FALSE(other.GetRelativeGUI());
}
