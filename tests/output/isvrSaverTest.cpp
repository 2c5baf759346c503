#include "OutputProbes.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "model/hMenu.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

namespace {

struct Rendered {
    bool Done = false;
    iRenderResult Result;
    std::unique_ptr<EImageData> Picture;
};

iRenderRequest requestOf(const CRect& rect, EImageSize display, bool fullSize, EImageSize size) {
    iRenderRequest request;
    request.ImageSize = size;
    request.Rect = rect;
    request.DisplaySize = display;
    request.FullSize = fullSize;
    return request;
}

Rendered take(EImage& image, bool done, iRenderResult result) {
    Rendered rendered{done, std::move(result), nullptr};
    EImageLock lock(image);
    if (lock.Lock(-1)) rendered.Picture = lock.SetData(nullptr);
    return rendered;
}

Rendered render(isvrSaver& saver, const CRect& rect, EImageSize display, bool fullSize) {
    iRenderRequest request = requestOf(rect, display, fullSize, saver.GetSize());
    EImage image(0);
    iRenderResult result;
    const bool done = saver.Render(image, result, request);
    return take(image, done, std::move(result));
}

// What a render thread asks of the saver: the whole frame at full size.
Rendered renderFrame(isvrSaver& saver) {
    const EImageSize size = saver.GetSize();
    iRenderRequest request = requestOf({0, 0, size.Width, size.Height}, size, true, size);
    EImage image(0);
    iRenderResult result;
    const bool done = saver.RenderFrame(image, result, request);
    return take(image, done, std::move(result));
}

std::vector<std::uint32_t> pixelsOf(const EImageData& picture) {
    std::vector<std::uint32_t> pixels;
    for (long y = 0; y < picture.GetHeight(); ++y)
        pixels.insert(pixels.end(), picture.GetRow(y), picture.GetRow(y) + picture.GetWidth());
    return pixels;
}

// The source's whole pattern picture stretched to the size as the saver would.
std::vector<std::uint32_t> stretchedPattern(EImageSize source, EImageSize size, EImageFilter filter) {
    auto original = EImageData::New(source.ToSize(), EImageMemory::NoFreeing);
    for (long y = 0; y < source.Height; ++y)
        for (long x = 0; x < source.Width; ++x)
            original->GetRow(y)[x] = FrameSource::PatternAt(x, y);
    auto scaled = EImageData::New(size.ToSize(), EImageMemory::NoFreeing);
    scaled->Stretch(*original, {0, 0, source.Width, source.Height}, {0, 0, size.Width, size.Height},
                    EImageBlend::Copy, filter);
    return pixelsOf(*scaled);
}

struct SaverChain {
    SaverChain(EImageSize sourceSize, EImageSize saverSize) {
        source.Size = sourceSize;
        source.Pattern = true;
        saver.SetSize(saverSize);
        saver.LinkParent(&source);
    }
    FrameSource source{"Source"};
    isvrSaver saver{"Saver"};
};

std::vector<hReportEntry> load(isvrSaver& saver, const qvrCTreeData& block) {
    hReportRoot report("Loading");
    saver.doLoadData(block, report);
    return report.GetEntries();
}

} // namespace

TEST(isvrSaver, WithoutSourceBothQuestionsFailWithTheSaversText) {
    isvrSaver saver("Saver");
    iImageSizeResult size;
    EXPECT_FALSE(saver.QueryImageSize(size, 0));
    EXPECT_EQ(size.Code, render_failed);
    EXPECT_EQ(size.Message, "No parent (source) object is assigned to the saver.");
    const Rendered rendered = render(saver, {0, 0, 10, 10}, {10, 10}, true);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Code, render_failed);
    EXPECT_EQ(rendered.Result.Element.Get(), &saver);
    EXPECT_EQ(saver.GetStateText(), "<no source>");
    EXPECT_FALSE(saver.CanExecute());
}

TEST(isvrSaver, TheSizeQueryAnswersTheSaversSize) {
    SaverChain chain({40, 30}, {20, 10});
    iImageSizeResult size;
    ASSERT_TRUE(chain.saver.QueryImageSize(size, 0));
    EXPECT_EQ(size.Size, (EImageSize{20, 10}));
    EXPECT_EQ(chain.saver.GetStateText(), "Saves Source at size 20x10");
    EXPECT_TRUE(chain.saver.CanExecute());
}

TEST(isvrSaver, EqualSizesPassTheRequestThroughUnscaled) {
    SaverChain chain({16, 12}, {16, 12});
    const Rendered rendered = render(chain.saver, {2, 3, 8, 7}, {3, 2}, false);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(chain.source.GetLastRect(), (CRect{2, 3, 8, 7}));
    EXPECT_EQ(chain.source.GetLastDisplaySize(), (EImageSize{3, 2}));
    EXPECT_EQ(rendered.Picture->GetSize(), (CSize{3, 2}));
    EXPECT_EQ(rendered.Result.Rect, (CRect{2, 3, 8, 7}));
}

TEST(isvrSaver, ASourceTwiceAsWideIsAskedForTheScaledColumnsPlusOne) {
    SaverChain chain({40, 10}, {20, 10});
    const Rendered exact = render(chain.saver, {0, 0, 10, 10}, {10, 10}, true);
    ASSERT_TRUE(exact.Done);
    EXPECT_EQ(chain.source.GetLastRect(), (CRect{0, 0, 21, 10}));
    EXPECT_EQ(chain.source.GetLastDisplaySize(), (EImageSize{21, 10}));
    EXPECT_EQ(exact.Picture->GetSize(), (CSize{10, 10}));
    EXPECT_EQ(exact.Result.Rect, (CRect{0, 0, 10, 10}));

    // A preview keeps the source's picture and maps its rectangle back.
    const Rendered preview = render(chain.saver, {0, 0, 10, 10}, {5, 5}, false);
    ASSERT_TRUE(preview.Done);
    EXPECT_EQ(chain.source.GetLastDisplaySize(), (EImageSize{5, 5}));
    EXPECT_EQ(preview.Picture->GetSize(), (CSize{5, 5}));
    EXPECT_EQ(preview.Result.Rect, (CRect{0, 0, 10, 10}));
}

TEST(isvrSaver, AFullFrameIsScaledFilteredOnlyWithoutLowScaleQuality) {
    SaverChain chain({16, 12}, {6, 5});
    chain.saver.SetRenderLoScaleQuality(true);
    const Rendered fast = renderFrame(chain.saver);
    ASSERT_TRUE(fast.Done);
    EXPECT_EQ(pixelsOf(*fast.Picture), stretchedPattern({16, 12}, {6, 5}, EImageFilter::Fast));
    chain.saver.SetRenderLoScaleQuality(false);
    const Rendered filtered = renderFrame(chain.saver);
    ASSERT_TRUE(filtered.Done);
    EXPECT_EQ(pixelsOf(*filtered.Picture), stretchedPattern({16, 12}, {6, 5}, EImageFilter::Filtered));
    EXPECT_NE(pixelsOf(*fast.Picture), pixelsOf(*filtered.Picture));
}

TEST(isvrSaver, LowQualityAsksForAPreviewAndScalesItOnceFiltered) {
    SaverChain chain({16, 12}, {6, 5});
    chain.source.AlwaysFullSize = true;
    chain.saver.SetRenderLoQuality(true);
    chain.saver.SetRenderLoScaleQuality(true);
    const Rendered rendered = renderFrame(chain.saver);
    ASSERT_TRUE(rendered.Done) << rendered.Result.Message;
    EXPECT_EQ(chain.source.GetLastRect(), (CRect{0, 0, 16, 12}));
    EXPECT_EQ(chain.source.GetLastDisplaySize(), (EImageSize{6, 5}));
    EXPECT_EQ(rendered.Result.Rect, (CRect{0, 0, 6, 5}));
    EXPECT_EQ(pixelsOf(*rendered.Picture), stretchedPattern({16, 12}, {6, 5}, EImageFilter::Filtered));
}

TEST(isvrSaver, ARequestOutsideTheSourceGivesAnEmptyPictureOfTheOutputSize) {
    SaverChain chain({16, 12}, {8, 6});
    chain.source.Size = {4, 4};
    const Rendered rendered = render(chain.saver, {10, 8, 12, 10}, {2, 2}, true);
    ASSERT_TRUE(rendered.Done);
    EXPECT_EQ(chain.source.RendersStarted, 0);
    EXPECT_EQ(pixelsOf(*rendered.Picture), std::vector<std::uint32_t>(4, 0u));
    EXPECT_EQ(rendered.Result.Rect, (CRect{10, 8, 12, 10}));
}

TEST(isvrSaver, ASourceFailurePassesItsErrorOn) {
    SaverChain chain({16, 12}, {8, 6});
    chain.source.FailingFrames = {0};
    chain.source.FailCode = render_out_of_memory;
    const Rendered rendered = renderFrame(chain.saver);
    EXPECT_FALSE(rendered.Done);
    EXPECT_EQ(rendered.Result.Code, render_out_of_memory);
    EXPECT_EQ(rendered.Result.Element.Get(), &chain.source);
}

TEST(isvrSaver, SettingsSurviveSavingAndLoading) {
    MemoryStream& stream = MemoryStream::TheSequence();
    isvrSaver written("Saver");
    written.SetStream(&stream);
    written.SetStreamSetup("SQ3|n|0|1");
    written.SetFileName("out/frame.mem");
    written.SetSize({320, 240});
    written.SetRenderLoQuality(true);
    written.SetRenderLoScaleQuality(false);
    written.GetSetup().VideoEnd = 12;
    qvrCTreeData block("Object");
    hReportRoot report("Saving");
    written.doSaveData(block, report);
    isvrSaver read("Copy");
    EXPECT_TRUE(load(read, block).empty());
    EXPECT_EQ(read.GetStream(), &stream);
    EXPECT_EQ(read.GetStreamSetup(), "SQ3|n|0|1");
    EXPECT_EQ(read.GetFileName(), "out/frame.mem");
    EXPECT_EQ(read.GetSize(), (EImageSize{320, 240}));
    EXPECT_TRUE(read.GetRenderLoQuality());
    EXPECT_FALSE(read.GetRenderLoScaleQuality());
    EXPECT_EQ(read.GetSetup().VideoEnd, 12u);
}

TEST(isvrSaver, AnUnknownStreamFallsBackToTheDefaultAndDropsItsSetup) {
    qvrCTreeData block("Object");
    block.SetText("Stream", "Vanished stream");
    block.SetText("StreamSetup", "SQ4|n|0|1");
    isvrSaver saver("Saver");
    saver.SetStreamSetup("old");
    const std::vector<hReportEntry> entries = load(saver, block);
    const EImageOutputStream* fallback = EImageOutputStream::GetFirst();
    ASSERT_NE(fallback, nullptr);
    EXPECT_EQ(saver.GetStream(), fallback);
    EXPECT_EQ(saver.GetStreamSetup(), "");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].Level, hReportError);
    EXPECT_EQ(entries[0].Text, std::string("Unknown output stream format \"Vanished stream\" - using \"") +
                                   fallback->GetName() + "\"");
}

TEST(isvrSaver, AProjectWithoutStreamNameGetsTheDefaultWithANote) {
    isvrSaver saver("Saver");
    const std::vector<hReportEntry> entries = load(saver, qvrCTreeData("Object"));
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].Level, hReportNote);
    EXPECT_EQ(entries[0].Text, std::string("No output stream format specified - using \"") +
                                   EImageOutputStream::GetFirst()->GetName() + "\"");
}

TEST(isvrSaver, TooSmallASizeGrowsToTenWithAWarningPerSide) {
    qvrCTreeData block("Object");
    block.SetText("Stream", MemoryStream::TheMovie().GetName());
    block.SetSize("Size", {5, 5});
    isvrSaver saver("Saver");
    const std::vector<hReportEntry> entries = load(saver, block);
    EXPECT_EQ(saver.GetSize(), (EImageSize{10, 10}));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].Text, "Width for the output image too small - will be set to 10");
    EXPECT_EQ(entries[1].Text, "Height for the output image too small - will be set to 10");
    EXPECT_EQ(entries[1].Level, hReportWarning);
}

TEST(isvrSaver, ACloneOfASaverWithoutStreamGivesBothTheDefault) {
    isvrSaver saver("Saver");
    saver.SetStream(nullptr);
    saver.SetFileName("a.mem");
    saver.GetSetup().MiscThreadCnt = 2;
    const std::unique_ptr<isvrSaver> copy = saver.Clone();
    EXPECT_EQ(saver.GetStream(), EImageOutputStream::GetFirst());
    EXPECT_EQ(copy->GetStream(), EImageOutputStream::GetFirst());
    EXPECT_EQ(copy->GetFileName(), "a.mem");
    EXPECT_EQ(copy->GetSetup().MiscThreadCnt, 2u);
}

TEST(iSaver, RenderIsOfferedOnlyWithASource) {
    SaverChain chain({16, 12}, {8, 6});
    isvrSaver lonely("Lonely");
    for (isvrSaver* saver : {&chain.saver, &lonely}) {
        hMenu menu;
        saver->BuildContextMenu(menu);
        const hMenuItem* render = menu.FindItem(iElement::command_first_addition);
        ASSERT_NE(render, nullptr);
        EXPECT_EQ(render->Text, "Render");
        EXPECT_EQ(render->Enabled, saver == &chain.saver);
    }
}
