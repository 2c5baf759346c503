// Whole runs of `qvr render` on projects that the test writes first.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"

#include "foundation/iDataBase.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class QvrRenderRun : public ::testing::Test {
protected:
    QvrRunResult render(const std::string& arguments) {
        return RunQvr(home.Path.string(), "render " + arguments);
    }

    // A blue layer of 32x24 and one standard saver per name in `savers`, each
    // writing BMP files of 16x12 under its own name, frames 0 to 4, with the log
    // in the scratch directory.
    std::string writeProject(const std::vector<std::string>& savers, std::uint32_t lastFrame = 4,
                             bool ignoreErrors = false) {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Blue")));
        layer->SetSize({32, 24});
        layer->GetRedValue().SetSingleKey(0, 0, false);
        layer->GetGreenValue().SetSingleKey(0, 0, false);
        layer->GetBlueValue().SetSingleKey(0, 255, false);
        for (const std::string& name : savers) {
            auto* saver = static_cast<isvrSaver*>(project.Adopt(std::make_unique<isvrSaver>(name)));
            saver->LinkParent(layer);
            saver->SetStream(EImageOutputStream::Find("BMP Image stream"));
            saver->SetFileName(home.File(name + "/frame.bmp"));
            saver->SetSize({16, 12});
            saver->GetSetup().VideoEnd = lastFrame;
            saver->GetSetup().MiscThreadCnt = 2;
            saver->GetSetup().ErrorsIgnore = ignoreErrors;
            saver->GetSetup().LogFile = home.File(name + ".rlog");
            std::filesystem::create_directories(home.File(name));
        }
        const std::string path = home.File("savers.tsp");
        hReportRoot report("Saving");
        iDataBase database;
        EXPECT_TRUE(database.Save(path, DBMaskProject, 0, &report));
        project.Clear();
        return path;
    }

    bool exists(const std::string& name) { return std::filesystem::exists(home.File(name)); }

    ScratchDirectory home{"render"};
};

} // namespace

TEST_F(QvrRenderRun, TheOnlySaverWritesEveryFrameAndItsLog) {
    const std::string project = writeProject({"Out"});
    const QvrRunResult run = render("'" + project + "'");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    for (const char* name : {"Out/frame0000.bmp", "Out/frame0002.bmp", "Out/frame0004.bmp"})
        EXPECT_TRUE(exists(name)) << name;
    EXPECT_FALSE(exists("Out/frame0005.bmp"));
    const std::string log = ScratchDirectory::ReadAll(home.File("Out.rlog"));
    EXPECT_EQ(log.rfind("qvrTessarine isvrSaver rendering log file:\r\n", 0), 0u);
    EXPECT_NE(log.find(": Saving frame 4.\r\n"), std::string::npos) << log;
    EXPECT_NE(run.Output.find("5 of 5 frames done, 0 failed"), std::string::npos) << run.Output;
}

TEST_F(QvrRenderRun, OptionsOverrideTheRangeAndTheLog) {
    const std::string project = writeProject({"A", "B"});
    const QvrRunResult run =
        render("'" + project + "' --saver B --first 1 --last 3 --step 2 --threads 1 --log '" +
               home.File("mine.rlog") + "'");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    EXPECT_TRUE(exists("B/frame0001.bmp"));
    EXPECT_TRUE(exists("B/frame0003.bmp"));
    EXPECT_FALSE(exists("B/frame0002.bmp"));
    EXPECT_FALSE(exists("A/frame0001.bmp"));
    EXPECT_TRUE(exists("mine.rlog"));
    EXPECT_FALSE(exists("B.rlog"));
}

TEST_F(QvrRenderRun, AFrameThatCannotBeSavedEndsTheRunWithFailures) {
    const std::string project = writeProject({"Out"});
    // A directory in the place of a frame's file makes that frame's save fail.
    std::filesystem::create_directories(home.File("Out/frame0002.bmp"));
    const QvrRunResult run = render("'" + project + "' --threads 1");
    EXPECT_EQ(run.ExitCode, 1) << run.Output;
    EXPECT_NE(run.Output.find("*** Thread #01 ERROR: Failed to save frame 2 to"), std::string::npos)
        << run.Output;
    EXPECT_FALSE(exists("Out/frame0003.bmp"));
}

TEST_F(QvrRenderRun, FramesThatCannotBeWrittenFailTheRunEvenWhenErrorsAreIgnored) {
    const std::string project = writeProject({"Out"}, 4, true);
    // No file may grow beyond 0 bytes: every frame's write fails as on a full disk.
    const QvrRunResult run = RunShell("trap '' XFSZ; ulimit -f 0; QVR_HOME='" + home.Path.string() + "' '" +
                                      QVR_PROGRAM + "' render '" + project + "' --threads 1");
    EXPECT_EQ(run.ExitCode, 1) << run.Output;
    EXPECT_NE(run.Output.find("5 frames could not be written"), std::string::npos) << run.Output;
    EXPECT_NE(run.Output.find("frame0000.bmp: File too large"), std::string::npos) << run.Output;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.File("Out")),
                            std::filesystem::directory_iterator()),
              0)
        << "neither partial frames nor temporary files are left";
}

TEST_F(QvrRenderRun, ARunThatCannotStartExitsWithTwo) {
    const std::string project = writeProject({"A", "B"});
    EXPECT_EQ(render("'" + project + "'").ExitCode, 2);
    EXPECT_EQ(render("'" + project + "' --saver Blue").ExitCode, 2);
    EXPECT_EQ(render("'" + project + "' --saver A --first 9 --last 3").ExitCode, 2);
    EXPECT_EQ(render("'" + project + "' --saver A --step many").ExitCode, 2);
    EXPECT_EQ(render("'" + home.File("missing.tsp") + "'").ExitCode, 2);
    const QvrRunResult unwritable =
        render("'" + project + "' --saver A --output '" + home.File("no/such/dir/x.bmp") + "'");
    EXPECT_EQ(unwritable.ExitCode, 2) << unwritable.Output;
    EXPECT_NE(unwritable.Output.find("Failed to start threads"), std::string::npos) << unwritable.Output;
}

TEST_F(QvrRenderRun, AnInterruptStopsTheRunAndExitsWithOne) {
    const std::string project = writeProject({"Out"}, 1000000);
    const std::string log = home.File("Out.rlog");
    // The interrupt goes out once the run has logged its first frame, so the
    // handler is in place; the shell's own job waits for the program.
    const QvrRunResult run = RunShell(
        "QVR_HOME='" + home.Path.string() + "' '" QVR_PROGRAM "' render '" + project +
        "' --threads 1 & program=$!; until grep -q 'Saving frame' '" + log +
        "' 2>/dev/null || ! kill -0 $program; do sleep 0.05; done; kill -INT $program; wait $program");
    EXPECT_EQ(run.ExitCode, 1) << run.Output;
    EXPECT_NE(run.Output.find("Aborted."), std::string::npos) << run.Output;
    EXPECT_NE(ScratchDirectory::ReadAll(log).find("*** Thread #01 ERROR: Aborted.\r\n"), std::string::npos);
}
