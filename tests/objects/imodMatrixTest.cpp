#include "ProbeSource.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/iFactory.h"
#include "objects/imodMatrix.h"
#include "objects/imodMatrixEffect.h"
#include "objects/imodMatrixEffectLibrary.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t colour = 0x80402010;
constexpr std::uint32_t halved = 0x40201008;

// A filter whose effect halves every channel, on a probe of one colour.
class MatrixFilter : public ::testing::Test {
protected:
    MatrixFilter() {
        probe.Size = {8, 6};
        probe.Colour = colour;
        filter.LinkParent(&probe);
        hMatrix halving;
        halving.SetDivisor(2048);
        effect = imodMatrixEffectLibrary::Get().Add("Halve", halving);
        filter.SetEffect(effect);
    }
    ~MatrixFilter() override { imodMatrixEffectLibrary::Get().DeleteAll(); }

    std::uint32_t Pixel(const Rendered& rendered) { return rendered.Pixels.empty() ? 0 : rendered.Pixels[0]; }
    std::uint32_t Preview(EImageSize display) {
        return Pixel(RenderElement(filter, {0, 0, 8, 6}, display, false));
    }

    ProbeSource probe{"Probe"};
    imodMatrix filter{"Matrix"};
    imodMatrixEffect* effect = nullptr;
};

} // namespace

TEST_F(MatrixFilter, SwitchesKeepTheFilterOutOfViewsOrReducedPictures) {
    EXPECT_EQ(Pixel(RenderWhole(filter)), halved);
    EXPECT_EQ(Preview({4, 3}), halved);
    filter.SetUseInViews(false);
    EXPECT_EQ(Preview({8, 6}), colour);
    EXPECT_EQ(Pixel(RenderWhole(filter)), halved);
    filter.SetUseInViews(true);
    filter.SetUseForProxies(false);
    EXPECT_EQ(Preview({4, 3}), colour);
    EXPECT_EQ(Preview({8, 6}), halved);
}

TEST_F(MatrixFilter, WithoutEffectThePictureComesThroughAndFailuresKeepTheirElement) {
    EXPECT_EQ(filter.GetStateText(), "MatrixFilter using \"Halve\"");
    filter.SetEffect(nullptr);
    EXPECT_EQ(filter.GetStateText(), "<no effect matrix assigned>");
    EXPECT_EQ(Pixel(RenderWhole(filter)), colour);
    probe.FailRender = true;
    EXPECT_EQ(RenderWhole(filter).Result.Element.Get(), &probe);

    probe.FailRender = false;
    filter.SetEffect(effect);
    hMatrix broken;
    broken.SetDivisor(0);
    effect->SetMatrix(broken);
    const Rendered rendered = RenderWhole(filter);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Code, render_out_of_memory);
    EXPECT_EQ(rendered.Result.Element.Get(), &filter);
}

TEST_F(MatrixFilter, UsersFollowTheirEffectAndLoseItWhenItGoes) {
    {
        std::unique_ptr<imodMatrix> copy = filter.Clone();
        EXPECT_EQ(copy->GetEffect(), effect);
        EXPECT_EQ(effect->GetUsers().size(), 2u);
    }
    EXPECT_EQ(effect->GetUsers(), std::vector<imodMatrix*>{&filter});
    ASSERT_TRUE(imodMatrixEffectLibrary::Get().Rename(*effect, "Half"));
    EXPECT_EQ(filter.GetStateText(), "MatrixFilter using \"Half\"");
    imodMatrixEffectLibrary::Get().Delete(effect);
    EXPECT_EQ(filter.GetEffect(), nullptr);
}

TEST_F(MatrixFilter, EffectAndSwitchesAreSavedAndUnknownEffectsReported) {
    filter.SetUseForProxies(false);
    qvrCTreeData block;
    hReportRoot report("project");
    filter.doSaveData(block, report);
    EXPECT_EQ(*block.GetText("Effect"), "Halve");
    EXPECT_EQ(*block.GetText("UseInViews"), "Yes");
    EXPECT_EQ(*block.GetText("UseForProxies"), "No");

    iFactoryProducerType::GlobalInit();
    std::unique_ptr<iElement> element = iFactory::Get().Produce("Modifier", "Matrix Filter", "");
    iFactoryProducerType::GlobalRem();
    auto* loaded = dynamic_cast<imodMatrix*>(element.get());
    ASSERT_NE(loaded, nullptr);
    loaded->doLoadData(block, report);
    EXPECT_EQ(loaded->GetEffect(), effect);
    EXPECT_FALSE(loaded->GetUseForProxies());
    EXPECT_EQ(report.GetCount(), 0);

    block.SetText("Effect", "Sharpen");
    loaded->doLoadData(block, report);
    EXPECT_EQ(loaded->GetEffect(), nullptr);
    ASSERT_EQ(report.GetCount(), 1);
    EXPECT_EQ(report.GetEntries()[0].Text, "Unknown matrix effect \"Sharpen\" - none will be used.");
}
