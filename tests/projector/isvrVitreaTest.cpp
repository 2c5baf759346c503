#include "VitreaTestSupport.h"

#include "foundation/ScratchDirectory.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/ScriptedUserInterface.h"
#include "projector/EVitreaExecution.h"
#include "projector/isvrVitreaWorkData.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace {

using qvrTest::PatternSource;

class VitreaRun : public ::testing::Test {
protected:
    VitreaRun() {
        qvrTest::SetUpSmallArray(saver, scratch.Path.string());
        saver.LinkParent(&source);
    }

    // Runs the execution dialog's logic with the saver's settings until the run is over.
    EVitreaExecution& runToEnd(qvrTest::RecordingView& window) {
        runs.push_back(std::make_unique<EVitreaExecution>(saver, saver.GetSetup(), window));
        EVitreaExecution& execution = *runs.back();
        execution.Open();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (execution.GetState() != ESaverExecution::StateOver &&
               std::chrono::steady_clock::now() < deadline)
            if (execution.Wait(100)) execution.DispatchMessages();
        EXPECT_EQ(execution.GetState(), ESaverExecution::StateOver) << execution.GetStateText();
        return execution;
    }
    std::string directory(std::size_t projector) const {
        return saver.GetConfiguration().OutputFiles.ProjectorPaths[projector];
    }
    std::string frameFile(std::size_t projector, long frame) const {
        char name[16];
        std::snprintf(name, sizeof name, "/f%04ld.bmp", frame);
        return directory(projector) + name;
    }
    // The RGB of the source pixel that projector picture pixel x, y shows at the frame,
    // for the array of SetUpSmallArray: 8 by 6 on a window of 4 by 4.
    static std::uint32_t expectedRgb(std::size_t projector, long x, long y, long frame) {
        const long left = 2 + static_cast<long>(projector % 9) * 4;
        const long top = 6 + static_cast<long>(projector / 9) * 4;
        // Column x lies at 3x/7 + 0.5 of the window, row y at 3y/5 + 0.5; both are truncated.
        return PatternSource::PixelOf(left + (6 * x + 7) / 14, top + (6 * y + 5) / 10, frame) & 0xFFFFFF;
    }

    ScratchDirectory scratch{"vitrea"};
    PatternSource source{"Source"};
    isvrVitrea saver{"Array"};
    qvrTest::RecordingView view;
    ScriptedUserInterface ui;
    std::vector<std::unique_ptr<EVitreaExecution>> runs;
};

} // namespace

TEST_F(VitreaRun, EveryProjectorWritesEveryFrameWarpedFromItsWindow) {
    saver.GetConfiguration().OutputFiles.ProjectorActive[4] = false;
    EVitreaExecution& run = runToEnd(view);
    EXPECT_EQ(run.GetStateText(), " Finished.");
    EXPECT_EQ(run.GetCountsText(), " Total number of frames: 51; done: 51 (0 error(s))");
    for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
        if (projector == 4) {
            EXPECT_EQ(qvrTest::CountFiles(directory(projector)), 0);
            EXPECT_EQ(run.GetRowStatus(projector), "<inactive>");
            continue;
        }
        EXPECT_EQ(qvrTest::CountFiles(directory(projector)), 3) << projector;
        EXPECT_EQ(run.GetRowStatus(projector), "3 frames rendered.");
    }
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(0, 0), 0, 0), expectedRgb(0, 0, 0, 0));
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(12, 2), 7, 5), expectedRgb(12, 7, 5, 2));
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(17, 1), 4, 3), expectedRgb(17, 4, 3, 1));
    EXPECT_TRUE(view.HasLine("Projector #01: <Starting>"));
    EXPECT_TRUE(view.HasLine("Projector #18: <Done 3/3 frames>"));
    EXPECT_TRUE(view.HasLine("Projector #13: Transforming frame 2."));
    EXPECT_EQ(run.GetRowHead(2), "Projector #03  -   output to \"" + directory(2) + "/f.bmp\"");
}

TEST_F(VitreaRun, ABadProjectorIsReportedAndTheOthersGoOn) {
    LConfiguration& configuration = saver.GetConfiguration();
    // Projector 3's window is 2 pixels wide: too narrow to be sampled.
    configuration.Metrics.Windows[2].right = configuration.Metrics.Windows[2].left + 2;
    configuration.Metrics.DerivePixelWindows();
    // Projector 6's quadrilateral lies wholly outside its picture.
    configuration.Calibration.Projectors[5] = {CPoint{20, 20}, CPoint{30, 20}, CPoint{30, 30},
                                               CPoint{20, 30}};
    EVitreaExecution& run = runToEnd(view);
    EXPECT_EQ(run.GetStateText(), " Finished.");
    EXPECT_TRUE(view.HasLine("*** Projector #03 ERROR: Failed to compute calibration - bad border points."));
    EXPECT_EQ(run.GetRowStatus(2), "NO frame rendered.");
    EXPECT_EQ(qvrTest::CountFiles(directory(2)), 0);
    EXPECT_TRUE(
        view.HasLine("Projector #06 Warning: Transformation computed successfully - but entire stream will "
                     "be empty !"));
    EXPECT_EQ(qvrTest::CountFiles(directory(5)), 3);
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(5, 1), 3, 3), 0u) << "frames of the empty colour";
    for (std::size_t projector : {0u, 3u, 17u})
        EXPECT_EQ(qvrTest::CountFiles(directory(projector)), 3) << projector;
}

TEST_F(VitreaRun, AStreamThatIsNotRegisteredOrNoProjectorOnRefusesTheRun) {
    saver.GetConfiguration().OutputFiles.StreamType = "No such stream";
    EXPECT_EQ(
        saver.CheckRender(saver.GetSetup()),
        "Can't render:\n\nThe output-stream file format \"No such stream\"\nis not known to qvrTessarine.");
    EVitreaExecution run(saver, saver.GetSetup(), view);
    run.Open();
    EXPECT_EQ(run.GetState(), ESaverExecution::StateOver);
    EXPECT_EQ(run.GetStateText(),
              " Failed to start threads: An output stream \"No such stream\" is not known !");

    saver.GetConfiguration().OutputFiles.StreamType = "BMP Image stream";
    saver.GetConfiguration().OutputFiles.ProjectorActive.fill(false);
    EXPECT_EQ(saver.CheckRender(saver.GetSetup()), "Can't render:\n\nAll projectors have been turned off.");
    std::string problem;
    auto work = isvrVitreaWorkData::Create(saver, std::make_shared<qvrTest::WaitingWindow>());
    EXPECT_FALSE(work->Start(saver.GetSetup(), problem));
    EXPECT_EQ(problem, "No projector is been enabled");

    saver.GetConfiguration().OutputFiles.ProjectorActive.fill(true);
    saver.GetSetup().VideoStart = 5;
    EXPECT_EQ(saver.CheckRender(saver.GetSetup()), "Can't render:\n\nFirst comes past last frame/time.");
}

TEST_F(VitreaRun, NoMoreThreadsRunThanProjectorsAreOn) {
    auto& active = saver.GetConfiguration().OutputFiles.ProjectorActive;
    active.fill(false);
    active[1] = active[7] = active[16] = true;
    auto window = std::make_shared<qvrTest::WaitingWindow>();
    auto work = isvrVitreaWorkData::Create(saver, window);
    std::string problem;
    ASSERT_TRUE(work->Start(4, 0, 2, 1, 25, 1, false, false, problem)) << problem;
    EXPECT_EQ(work->GetThreadCount(), 3u);
    ASSERT_TRUE(window->WaitForFinish());
    work->Kill(5);
    std::uint32_t total = 0, done = 0, failed = 0, remaining = 0;
    work->GetCounts(total, done, failed, remaining);
    EXPECT_EQ(total, 9u);
    EXPECT_EQ(done, 9u);
    EXPECT_EQ(qvrTest::CountFiles(directory(16)), 3);
}

TEST_F(VitreaRun, AFailedFrameIsSkippedReplacedOrStopsTheProjector) {
    source.FailingFrames = {1};
    saver.GetConfiguration().OutputFiles.ProjectorActive.fill(false);
    saver.GetConfiguration().OutputFiles.ProjectorActive[0] = true;
    EXPECT_EQ(runToEnd(view).GetRowStatus(0), "Only 2/3 frames rendered.");
    EXPECT_TRUE(view.HasLine("*** Projector #01 ERROR: Failed to render frame 1: Probe failure."));
    EXPECT_FALSE(std::filesystem::exists(frameFile(0, 1)));

    saver.GetSetup().ErrorsReplaceBadFrames = true;
    qvrTest::RecordingView replacingView;
    runToEnd(replacingView);
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(0, 1), 2, 2), expectedRgb(0, 2, 2, 0)) << "frame 0 again";
    EXPECT_EQ(qvrTest::BmpPixel(frameFile(0, 2), 2, 2), expectedRgb(0, 2, 2, 2));

    saver.GetSetup().ErrorsIgnore = false;
    qvrTest::RecordingView stoppingView;
    EXPECT_EQ(runToEnd(stoppingView).GetRowStatus(0), "Only 1/3 frames rendered.");
    EXPECT_TRUE(stoppingView.HasLine("*** Projector #01 ERROR: Aborting because of an error."));
}

TEST(isvrVitrea, TheWindowOfAProjectorIsCentredAndCutToTheSource) {
    ScratchDirectory scratch("vitrea_window");
    PatternSource source("Source");
    isvrVitrea saver("Array");
    qvrTest::SetUpSmallArray(saver, scratch.Path.string());
    saver.LinkParent(&source);
    std::string status;
    bool fatal = true;
    auto picture = saver.RenderSaverImage(3, 9, nullptr, status, fatal, nullptr);
    ASSERT_TRUE(picture) << status;
    EXPECT_EQ(picture->GetSize(), (CSize{4, 4}));
    EXPECT_EQ(picture->GetRow(0)[0], PatternSource::PixelOf(2, 10, 3));

    // A source 4 pixels narrower moves the array 2 to the left: projector 1's window starts at -2.
    source.Size = {32, 20};
    picture = saver.RenderSaverImage(0, 0, nullptr, status, fatal, nullptr);
    ASSERT_TRUE(picture) << status;
    EXPECT_EQ(picture->GetRow(1)[0], 0u) << "outside the source: empty";
    EXPECT_EQ(picture->GetRow(1)[2], PatternSource::PixelOf(0, 7, 0));

    source.Size = {40, 1};
    picture = saver.RenderSaverImage(0, 9, nullptr, status, fatal, nullptr);
    ASSERT_TRUE(picture) << "a window out of sight is an empty picture, not an error";
    EXPECT_EQ(picture->GetRow(3)[3], 0u);

    source.Size = {40, 20};
    source.FailingFrames = {4};
    EXPECT_FALSE(saver.RenderSaverImage(4, 0, nullptr, status, fatal, nullptr));
    EXPECT_EQ(status, "Probe failure");
    EXPECT_FALSE(fatal);
    source.FailCode = render_out_of_memory;
    EXPECT_FALSE(saver.RenderSaverImage(4, 0, nullptr, status, fatal, nullptr));
    EXPECT_TRUE(fatal);
    EXPECT_FALSE(saver.RenderSaverImage(0, 18, nullptr, status, fatal, nullptr));
    EXPECT_EQ(status, "*** INTERNAL ERROR ***");
    EXPECT_TRUE(fatal);
}

TEST(isvrVitrea, ItsOwnPictureMasksWhatNoWindowCoversAndItsSettingsTravel) {
    ScratchDirectory scratch("vitrea_mask");
    PatternSource source("Source");
    isvrVitrea saver("Array");
    qvrTest::SetUpSmallArray(saver, scratch.Path.string());
    saver.LinkParent(&source);
    saver.SetMaskColor(0xFF123456);
    iRenderRequest request;
    request.ImageSize = {40, 20};
    request.Rect = {0, 0, 40, 20};
    request.DisplaySize = {20, 10};
    EImage image(0);
    iRenderResult result;
    ASSERT_TRUE(saver.Render(image, result, request)) << result.Message;
    EImageLock lock(image);
    ASSERT_TRUE(lock.Lock(-1));
    const EImageData& picture = *lock.GetData();
    ASSERT_EQ(picture.GetSize(), (CSize{20, 10}));
    // At half size the array covers 1 to 19 across and 3 to 7 down.
    EXPECT_EQ(picture.GetRow(2)[5], 0xFF123456u) << "above the array";
    EXPECT_EQ(picture.GetRow(3)[0], 0xFF123456u) << "left of the array";
    EXPECT_EQ(picture.GetRow(3)[1], PatternSource::PixelOf(2, 6, 0));
    EXPECT_EQ(picture.GetRow(6)[18], PatternSource::PixelOf(36, 12, 0));
    lock.Unlock(true);

    saver.SetDisplayWindows(false);
    ASSERT_TRUE(saver.Render(image, result, request));
    ASSERT_TRUE(lock.Lock(-1));
    EXPECT_EQ(lock.GetData()->GetRow(0)[0], PatternSource::PixelOf(0, 0, 0)) << "no mask";
    lock.Unlock(true);

    qvrCTreeData block("Array");
    hReportRoot report("Saving");
    saver.SetDisplayWindows(true);
    saver.GetConfiguration().FilterLevel = 3.5;
    saver.GetSetup().VideoEnd = 77;
    saver.doSaveData(block, report);
    isvrVitrea copy("Copy");
    copy.doLoadData(block, report);
    EXPECT_TRUE(copy.GetDisplayWindows());
    EXPECT_EQ(copy.GetMaskColor(), 0xFF123456u);
    EXPECT_EQ(copy.GetConfiguration().FilterLevel, 3.5);
    EXPECT_EQ(copy.GetConfiguration().Calibration.ImageWidth, 8u);
    EXPECT_EQ(copy.GetSetup().VideoEnd, 77u);
}
