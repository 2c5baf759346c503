#include "ProbeSource.h"

#include "imaging/EImageData.h"
#include "model/iFactory.h"
#include "objects/imodCorrection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

// The colour that a correction with the settings makes of a picture of one colour.
std::uint32_t Corrected(std::uint32_t colour, hCorrectionSettings settings) {
    ProbeSource probe("Probe");
    probe.Colour = colour;
    probe.Size = {4, 3};
    imodCorrection correction("Correction");
    correction.LinkParent(&probe);
    correction.GetBrightnessValue().SetSingleKey(0, static_cast<double>(settings.Brightness), false);
    correction.GetContrastValue().SetSingleKey(0, static_cast<double>(settings.Contrast), false);
    correction.GetSaturationValue().SetSingleKey(0, static_cast<double>(settings.Saturation), false);
    correction.GetTransparencyValue().SetSingleKey(0, static_cast<double>(settings.Transparency), false);
    const Rendered rendered = RenderWhole(correction);
    EXPECT_EQ(rendered.Pixels, std::vector<std::uint32_t>(12, rendered.Pixels.at(0)));
    return rendered.Pixels.at(0);
}

} // namespace

TEST(imodCorrection, RoundValueRoundsHalvesAwayFromZeroAndZeroStaysZero) {
    EXPECT_EQ(RoundValue(-0.5), -1);
    EXPECT_EQ(RoundValue(0.5), 1);
    EXPECT_EQ(RoundValue(0.0), 0);
    EXPECT_EQ(RoundValue(-0.4), 0);
    EXPECT_EQ(RoundValue(-2.5), -3);
}

TEST(imodCorrection, NeutralSettingsLeaveThePatternUntouched) {
    ProbeSource probe("Probe");
    probe.Size = {9, 7};
    imodCorrection correction("Correction");
    correction.LinkParent(&probe);
    // Read rounded, 0.4 counts as 0.
    correction.GetContrastValue().SetSingleKey(0, 0.4, false);
    const Rendered corrected = RenderWhole(correction);
    ASSERT_TRUE(corrected.Done);
    EXPECT_EQ(corrected.Pixels, RenderWhole(probe).Pixels);
}

TEST(imodCorrection, SingleSettingsAtTheirEnds) {
    EXPECT_EQ(Corrected(0xFF000000, {.Brightness = 100}), 0xFFFFFFFFu);
    EXPECT_EQ(Corrected(0xFFFFFFFF, {.Brightness = -250}), 0xFF000000u);
    EXPECT_EQ(Corrected(0x20FF1000, {.Contrast = -100}), 0x20808080u);
    // Grey is the mean in 12-bit precision: (10 + 20 + 31) / 3 rounds to 20.
    EXPECT_EQ(Corrected(0xFF0A141F, {.Saturation = -100}), 0xFF141414u);
    EXPECT_EQ(Corrected(0x80102030, {.Transparency = 100}), 0xFF102030u);
    EXPECT_EQ(Corrected(0x80102030, {.Transparency = -100}), 0x00102030u);
}

TEST(imodCorrection, AllFourSettingsFollowTheFixedPointSteps) {
    // Worked out step by step: means and percentages truncate toward zero,
    // the final shift rounds down, and each channel is clamped.
    EXPECT_EQ(
        Corrected(0x80C86432, {.Brightness = 10, .Contrast = 20, .Saturation = 50, .Transparency = -30}),
        0x34FF6400u);
    // Here a contrast product of -5.8 must become -5, not -6.
    EXPECT_EQ(
        Corrected(0x0C607FE9, {.Brightness = -1, .Contrast = -78, .Saturation = 43, .Transparency = -76}),
        0x006C79A4u);
}

TEST(imodCorrection, TablesGiveTheBytesOfTheStepByStepForm) {
    // Every alpha and every channel value in every sum of the three colours,
    // under settings with and without saturation.
    auto original = EImageData::New({256, 766}, EImageMemory::NoFreeing);
    for (long sum = 0; sum < 766; ++sum)
        for (long red = 0; red < 256; ++red) {
            const long green = std::clamp(sum - red, 0L, 255L);
            const long blue = std::clamp(sum - red - green, 0L, 255L);
            original->GetRow(sum)[red] =
                static_cast<std::uint32_t>((255 - red) << 24 | red << 16 | green << 8 | blue);
        }
    const hCorrectionSettings cases[] = {
        {.Brightness = 3, .Contrast = -78, .Saturation = 43, .Transparency = -76},
        {.Brightness = -100, .Contrast = 100, .Saturation = 100, .Transparency = 1},
        {.Brightness = 0, .Contrast = -3, .Saturation = 0, .Transparency = 99}};
    // Repeated settings are corrected by the tables kept from the last time.
    for (int index : {0, 1, 1, 2, 0}) {
        const hCorrectionSettings& settings = cases[index];
        auto fast = original->Clone();
        auto reference = original->Clone();
        CorrectPixels(*fast, settings);
        CorrectPixelsReference(*reference, settings);
        EXPECT_EQ(std::memcmp(fast->GetBits(), reference->GetBits(), 256 * 766 * 4), 0) << settings.Contrast;
    }
}

TEST(imodCorrection, FactoryMakesItAndItDescribesItself) {
    iFactoryProducerType::GlobalInit();
    std::unique_ptr<iElement> element = iFactory::Get().Produce("Modifier", "Image Correction", "");
    iFactoryProducerType::GlobalRem();
    ASSERT_NE(dynamic_cast<imodCorrection*>(element.get()), nullptr);
    EXPECT_EQ(element->GetStateText(), "Image correction");
    for (const char* name : {"Brightness", "Contrast", "Saturation", "Transparency"})
        EXPECT_NE(FindValue(*element, name), nullptr);
}
