#include "objects/isrcSequence.h"

#include "foundation/ScratchDirectory.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "imaging/EImage.h"
#include "imaging/EImageData.h"
#include "imaging/EImageStorage.h"
#include "imaging/ImagingTestSupport.h"
#include "model/hMenu.h"
#include "objects/hPlaybackKeys.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

// Keys of a value as "frame:value" texts.
std::vector<std::string> keysOf(const iActiveValue& value) {
    std::vector<std::string> keys;
    for (long i = 0; i < value.GetKeyCount(); ++i)
        keys.push_back(qvrFormat("%ld:%g", value.GetKey(i)->frame, value.GetKey(i)->value));
    return keys;
}

using Keys = std::vector<std::string>;

class FootageTest : public ::testing::Test {
protected:
    void SetUp() override {
        EProxySettings settings;
        settings.idealProxySize = {100, 100};
        settings.proxyDirectory = home.File("proxies");
        EImageStorage::Get().SetSettings(settings);
        EImageStorage::Get().EmptyInfoCache();
        fs::create_directories(footage);
    }
    void TearDown() override { EImageStorage::Get().EmptyInfoCache(); }

    // Files shot_0010.qts to shot_0019.qts, each of one colour that holds its number.
    void writeSequence(long width = 8, long height = 4) {
        for (long number = 10; number <= 19; ++number)
            save(*colour(width, height, number), qvrFormat("shot_%04ld.qts", number));
        sequence.SetFile(EFileGroupSetup(footage, EFileGroup("shot_", ".qts", 4, 10, 19)), false);
    }
    static std::unique_ptr<EImageData> colour(long width, long height, long number) {
        auto picture = EImageData::New({width, height}, EImageMemory::NoFreeing);
        picture->Fill(0xFF000000u | static_cast<std::uint32_t>(number));
        return picture;
    }
    void save(const EImageData& picture, const std::string& name) {
        EImageFileResult saved;
        ASSERT_TRUE(EImageFileFormat::Save(picture, footage + "/" + name, saved)) << saved.text;
    }
    // Renders the frame: the whole picture at full size, or previewed at `display`.
    bool render(long frame, EImageSize display = {}) {
        iImageSizeResult size;
        if (!sequence.QueryImageSize(size, frame)) return false;
        iRenderRequest request;
        request.ImageSize = size.Size;
        request.Rect = {0, 0, size.Size.Width, size.Size.Height};
        request.DisplaySize = display.IsEmpty() ? size.Size : display;
        request.FullSize = display.IsEmpty();
        request.Frame = frame;
        return sequence.Render(image, result, request);
    }
    std::vector<std::uint32_t> pixels() {
        EImageLock lock(image);
        lock.Lock(-1);
        return lock.GetData() ? qvrTest::PixelsOf(*lock.GetData()) : std::vector<std::uint32_t>{};
    }
    CSize pictureSize() {
        EImageLock lock(image);
        lock.Lock(-1);
        return lock.GetData() ? lock.GetData()->GetSize() : CSize{-1, -1};
    }
    std::string fileAt(long frame) {
        return sequence.GetFileForFrame(frame, isrcSequence::WithDirectory::No);
    }

    ScratchDirectory home{"footage"};
    std::string footage = home.File("shots");
    isrcSequence sequence{"Footage.1"};
    EImage image{0};
    iRenderResult result;
};

} // namespace

TEST_F(FootageTest, StandardModeMapsFramesForwardAndBackward) {
    writeSequence();
    sequence.SetCustomFlowControl(false);
    sequence.SetStandardFlow(100, 2, false);
    EXPECT_EQ(fileAt(100), "shot_0010.qts");
    EXPECT_EQ(fileAt(101), "shot_0010.qts");
    EXPECT_EQ(fileAt(102), "shot_0011.qts");
    EXPECT_EQ(fileAt(119), "shot_0019.qts");
    EXPECT_EQ(fileAt(120), "");
    EXPECT_EQ(fileAt(99), "");
    sequence.SetStandardFlow(100, 2, true);
    EXPECT_EQ(fileAt(100), "shot_0019.qts");
    EXPECT_EQ(fileAt(119), "shot_0010.qts");
    EXPECT_EQ(sequence.GetFileForFrame(100, isrcSequence::WithDirectory::Yes), footage + "/shot_0019.qts");
}

TEST_F(FootageTest, NewSequencePlaysOnceThroughFlowControlAndThenShowsNothing) {
    writeSequence();
    EXPECT_EQ(keysOf(sequence.GetFlowControl()), (Keys{"0:10", "9:19", "10:20"}));
    EXPECT_EQ(fileAt(3), "shot_0013.qts");
    ASSERT_TRUE(render(3));
    EXPECT_EQ(pixels(), std::vector<std::uint32_t>(32, 0xFF00000Du));

    sequence.GetFlowControl().SetSingleKey(0, 9.0, true);
    ASSERT_TRUE(render(0));
    EXPECT_EQ(pixels(), std::vector<std::uint32_t>(32, 0u));
    EXPECT_EQ(result.Rect, (CRect{0, 0, 8, 4}));
}

TEST_F(FootageTest, MissingFileFailsItsFrameByNameAndTheNextFrameRenders) {
    writeSequence();
    fs::remove(footage + "/shot_0015.qts");
    EXPECT_FALSE(render(5));
    EXPECT_EQ(result.Code, render_failed);
    EXPECT_EQ(result.Message, "Unable to load \"shot_0015.qts\": Error while reading file");
    result = {};
    EXPECT_TRUE(render(6));
}

TEST_F(FootageTest, FullSizeFramesComeWithoutTheQuickFilesPositionAndOpacity) {
    auto placed = colour(6, 4, 7);
    placed->position = {3, -2};
    placed->opacity = 100;
    save(*placed, "placed.qts");
    sequence.SetFile(EFileGroupSetup::SingleFile(footage, "placed.qts"), false);
    ASSERT_TRUE(render(0));
    EImageLock lock(image);
    lock.Lock(-1);
    ASSERT_NE(lock.GetData(), nullptr);
    EXPECT_EQ(lock.GetData()->position, CPoint{});
    EXPECT_EQ(lock.GetData()->opacity, 255);
    EXPECT_TRUE(lock.GetData()->HasAlpha());
}

TEST_F(FootageTest, AspectStretchesTheWidthOfSizeAndPicture) {
    auto columns = qvrTest::MakeNoise(720, 2, 5);
    save(*columns, "wide.qts");
    EFileGroupSetup still = EFileGroupSetup::SingleFile(footage, "wide.qts");
    still.Aspect = 1.5;
    sequence.SetFile(still, false);
    iImageSizeResult size;
    ASSERT_TRUE(sequence.QueryImageSize(size, 0));
    EXPECT_EQ(size.Size, (EImageSize{1080, 2}));
    ASSERT_TRUE(render(0));
    EXPECT_EQ(result.Rect, (CRect{0, 0, 1080, 2}));
    EXPECT_EQ(pixels(), qvrTest::PixelsOf(*columns->Resized({1080, 2}, EImageFilter::Fast)));
}

TEST_F(FootageTest, PreviewsComeThroughProxiesAtTheDisplaySizeUnlessProxiesAreOff) {
    writeSequence(720, 576);
    ASSERT_TRUE(render(0, {72, 58}));
    EXPECT_EQ(pictureSize(), (CSize{72, 58}));
    EXPECT_EQ(result.Rect, (CRect{0, 0, 720, 576}));
    EXPECT_TRUE(fs::exists(home.File("proxies") + footage + "/pxy(shot_0010.qts)_144x116.qts"));

    EFileGroupSetup files = sequence;
    files.UseProxies = false;
    sequence.SetFile(files, false);
    ASSERT_TRUE(render(1, {72, 58}));
    EXPECT_EQ(pictureSize(), (CSize{720, 576}));
    EXPECT_FALSE(fs::exists(home.File("proxies") + footage + "/pxy(shot_0011.qts)_144x116.qts"));
}

TEST_F(FootageTest, EmptyFootageHasNoSourceFiles) {
    iImageSizeResult size;
    EXPECT_FALSE(sequence.QueryImageSize(size, 0));
    EXPECT_EQ(size.Code, render_failed);
    EXPECT_EQ(size.Message, "No source file(s)");
    sequence.SetFile(EFileGroupSetup::SingleFile(footage, "absent.qts"), false);
    EXPECT_FALSE(sequence.QueryImageSize(size, 0));
    EXPECT_EQ(size.Message, "Sequence Footage.1: Can't read image size: Error while reading file");
}

TEST_F(FootageTest, NewFilesRenameANameTakenFromTheOldOnesAndCloneKeepsTheRange) {
    writeSequence();
    sequence.SetName("shot_####.qts copy", false);
    sequence.SetFile(EFileGroupSetup(footage, EFileGroup("shot_", ".qts", 4, 11, 19)), false);
    EXPECT_EQ(sequence.GetName(), "shot_####.qts copy");
    sequence.SetFile(EFileGroupSetup::SingleFile(footage, "shot_0012.qts"), false);
    EXPECT_EQ(sequence.GetName(), "shot_0012.qts copy");
    EXPECT_EQ(sequence.GetStateText(), "Image: shot_0012.qts; Aspect 1");

    writeSequence();
    sequence.SetUsedRange(12, 14);
    sequence.SetCustomFlowControl(false);
    auto copy = sequence.Clone();
    EXPECT_EQ(copy->GetFirstUsedFile(), 12);
    EXPECT_EQ(copy->GetLastUsedFile(), 14);
    EXPECT_FALSE(copy->IsCustomFlowControl());
    EXPECT_EQ(copy->GetFlowControl().GetOwner(), nullptr);
    EXPECT_EQ(copy->GetStateText(), "Images: shot_0012.qts - shot_0014.qts; Aspect 1");
}

TEST_F(FootageTest, ProjectBlockRoundTripsAndBadRangesAreReported) {
    writeSequence();
    sequence.SetUsedRange(12, 17);
    sequence.SetCustomFlowControl(false);
    sequence.SetStandardFlow(5, 3, true);
    qvrCTreeData block("Object");
    hReportRoot saving("Saving");
    sequence.doSaveData(block, saving);

    isrcSequence loaded("Footage.2");
    hReportRoot report("Loading");
    loaded.doLoadData(block, report);
    EXPECT_EQ(report.GetCount(), 0);
    EXPECT_TRUE(loaded.IsSameFiles(sequence));
    EXPECT_EQ(loaded.GetFileForFrame(5, isrcSequence::WithDirectory::No), "shot_0017.qts");
    EXPECT_EQ(loaded.ImageSize, (CSize{8, 4}));

    block.SetLong("FirstUsedFile", 3);
    block.SetLong("LastUsedFile", 40);
    block.SetLong("StdFramesPerImg", 0);
    hReportRoot bad("Loading");
    loaded.doLoadData(block, bad);
    ASSERT_EQ(bad.GetCount(), 3);
    EXPECT_EQ(bad.GetEntries()[0].Text,
              "Invalid first image number (has been set to first image of sequence).");
    EXPECT_EQ(bad.GetEntries()[1].Text,
              "Invalid last image number (has been set to last image of sequence).");
    EXPECT_EQ(bad.GetEntries()[2].Text, "\"Frames per image\" must be greater than zero (is been set to 1).");
    EXPECT_EQ(loaded.GetImageCount(), 10);

    block.SetLong("StdFramesPerImg", 1);
    block.RemoveChild(block.Find("Source"));
    hReportRoot empty("Loading");
    loaded.doLoadData(block, empty);
    ASSERT_EQ(empty.GetCount(), 1);
    EXPECT_EQ(empty.GetEntries()[0].Text, "NO source data - setting source file(s) to none.");
    EXPECT_EQ(empty.GetEntries()[0].Level, hReportError);
    EXPECT_FALSE(loaded.IsValid(false));
}

TEST_F(FootageTest, OldProjectWithHashesLoadsAsNumberedSequence) {
    for (long number = 3; number <= 7; ++number)
        save(*colour(4, 2, number), qvrFormat("img%03ld.qts", number));
    qvrCTreeData block("Object");
    block.SetText("Directory", footage);
    block.SetText("FileName(display)", "img###.qts");
    block.SetLong("Count", 5);
    block.SetLong("FirstNum", 3);
    block.SetText("Aspect", "0");
    hReportRoot report("Loading");
    sequence.doLoadData(block, report);
    EXPECT_EQ(report.GetCount(), 0);
    EXPECT_TRUE(sequence.IsSequence());
    EXPECT_EQ(sequence.NumLen, 3u);
    EXPECT_TRUE(sequence.IsCustomFlowControl());
    EXPECT_EQ(sequence.GetFirstUsedFile(), 3);
    EXPECT_EQ(sequence.GetLastUsedFile(), 7);
    EXPECT_EQ(sequence.Aspect, 1.0);
    EXPECT_EQ(sequence.ImageSize, (CSize{4, 2}));
}

TEST_F(FootageTest, PlaybackKeysStartWithoutAKeyBeforeFrameZero) {
    writeSequence();
    hPlaybackSettings settings;
    MakePlaybackKeys(sequence, settings);
    EXPECT_EQ(keysOf(sequence.GetFlowControl()), (Keys{"0:10", "9:19", "10:9"}));
}

TEST_F(FootageTest, PlaybackKeysLoopBothWaysWithPauses) {
    writeSequence();
    hPlaybackSettings settings;
    settings.start = 5;
    settings.style = hPlaybackStyle::ForwardThenBackward;
    settings.loop = true;
    settings.loopPause = 3;
    settings.loopPauseMode = hLoopPauseMode::LastImage;
    MakePlaybackKeys(sequence, settings);
    EXPECT_EQ(keysOf(sequence.GetFlowControl()), (Keys{"4:9", "5:10", "14:19", "15:19", "24:10", "25:19",
                                                       "27:19", "28:10", "37:19", "38:19", "47:10", "48:9"}));
    const hPlaybackSettings stored = hPlaybackSettings::Load();
    EXPECT_EQ(stored.start, 5);
    EXPECT_EQ(stored.style, hPlaybackStyle::ForwardThenBackward);
    EXPECT_EQ(stored.loopPause, 3);
}

TEST_F(FootageTest, MenuSwitchesTheFlowModeAndForgetsProxyInformation) {
    writeSequence();
    ASSERT_TRUE(render(0, {4, 2}));
    EXPECT_GT(EImageStorage::Get().GetInfoCacheCount(), 0);
    hMenu menu;
    sequence.BuildContextMenu(menu);
    EXPECT_TRUE(menu.FindItem(iElement::command_first_addition + 4));
    EXPECT_TRUE(sequence.RunMenuCommand(iElement::command_first_addition + 2));
    EXPECT_FALSE(sequence.IsCustomFlowControl());
    EXPECT_EQ(sequence.GetFlowControl().GetOwner(), nullptr);
    EXPECT_TRUE(sequence.RunMenuCommand(iElement::command_first_addition + 1));
    EXPECT_EQ(EImageStorage::Get().GetInfoCacheCount(), 0);
}
