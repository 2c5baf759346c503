// Whole runs of `qvr render` on a projector array saver.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"
#include "projector/VitreaTestSupport.h"

#include "foundation/iDataBase.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"

#include <gtest/gtest.h>

namespace {

class QvrVitreaRenderRun : public ::testing::Test {
protected:
    // A blue layer of 40x20 and the small array of 18 projectors writing
    // frames 0 to 2 into the scratch directory, with its log there too.
    std::string writeProject(const std::function<void(isvrVitrea&)>& change = {}) {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Blue")));
        layer->SetSize({40, 20});
        layer->GetRedValue().SetSingleKey(0, 0, false);
        layer->GetGreenValue().SetSingleKey(0, 0, false);
        layer->GetBlueValue().SetSingleKey(0, 255, false);
        auto* saver = static_cast<isvrVitrea*>(project.Adopt(std::make_unique<isvrVitrea>("Array")));
        saver->LinkParent(layer);
        qvrTest::SetUpSmallArray(*saver, home.Path.string());
        saver->GetSetup().LogKeep = true;
        saver->GetSetup().LogFile = home.File("array.rlog");
        if (change) change(*saver);
        const std::string path = home.File("array.tsp");
        hReportRoot report("Saving");
        iDataBase database;
        EXPECT_TRUE(database.Save(path, DBMaskProject, 0, &report));
        project.Clear();
        return path;
    }
    std::string projectorDirectory(int number) const {
        char name[8];
        std::snprintf(name, sizeof name, "p%02d", number);
        return home.File(name);
    }

    ScratchDirectory home{"vitrea_render"};
};

} // namespace

TEST_F(QvrVitreaRenderRun, EveryProjectorGetsItsFramesAndItsOutcomeIsPrinted) {
    const std::string project = writeProject(
        [](isvrVitrea& saver) { saver.GetConfiguration().OutputFiles.ProjectorActive[10] = false; });
    const QvrRunResult run = RunQvr(home.Path.string(), "render '" + project + "' --threads 2");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    for (int number = 1; number <= 18; ++number)
        EXPECT_EQ(qvrTest::CountFiles(projectorDirectory(number)), number == 11 ? 0 : 3) << number;
    EXPECT_EQ(qvrTest::BmpPixel(projectorDirectory(18) + "/f0002.bmp", 3, 3), 0x0000FFu);
    EXPECT_NE(run.Output.find("Projector #07  -   output to \"" + projectorDirectory(7) +
                              "/f.bmp\": 3 frames rendered."),
              std::string::npos)
        << run.Output;
    EXPECT_EQ(run.Output.find("Projector #11  -"), std::string::npos)
        << "a projector switched off isn't listed";
    EXPECT_NE(run.Output.find("51 of 51 frames done, 0 failed"), std::string::npos) << run.Output;
    const std::string log = ScratchDirectory::ReadAll(home.File("array.rlog"));
    EXPECT_EQ(log.rfind("qvrTessarine isvrVitrea rendering log file:\r\n", 0), 0u) << log;
    EXPECT_NE(log.find("Projector #18: <Done 3/3 frames>\r\n"), std::string::npos) << log;
}

TEST_F(QvrVitreaRenderRun, AnArrayThatCannotRenderExitsWithTwo) {
    const std::string project = writeProject(
        [](isvrVitrea& saver) { saver.GetConfiguration().OutputFiles.ProjectorActive.fill(false); });
    const QvrRunResult run = RunQvr(home.Path.string(), "render '" + project + "'");
    EXPECT_EQ(run.ExitCode, 2) << run.Output;
    EXPECT_NE(run.Output.find("All projectors have been turned off."), std::string::npos) << run.Output;
    EXPECT_EQ(RunQvr(home.Path.string(), "render '" + project + "' --output x.bmp").ExitCode, 2);
}

TEST_F(QvrVitreaRenderRun, ExportWritesTheThreeDefinitionFilesAsTheSetupPagesSaveThem) {
    const std::string project = writeProject();
    const QvrRunResult run =
        RunQvr(home.Path.string(), "vitrea export '" + project + "' --calibration '" + home.File("a.vtcl") +
                                       "' --metrics '" + home.File("a.vtmt") + "' --outputs '" +
                                       home.File("a.vtfl") + "'");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    iProject::GetStandard().Clear();
    isvrVitrea expected("Array");
    qvrTest::SetUpSmallArray(expected, home.Path.string());
    const LConfiguration& configuration = expected.GetConfiguration();
    std::string problem;
    ASSERT_TRUE(configuration.Calibration.SaveToFile(home.File("b.vtcl"), problem)) << problem;
    ASSERT_TRUE(configuration.Metrics.SaveToFile(home.File("b.vtmt"), problem)) << problem;
    ASSERT_TRUE(configuration.OutputFiles.SaveToFile(home.File("b.vtfl"), problem)) << problem;
    for (const char* extension : {".vtcl", ".vtmt", ".vtfl"})
        EXPECT_EQ(ScratchDirectory::ReadAll(home.File(std::string("a") + extension)),
                  ScratchDirectory::ReadAll(home.File(std::string("b") + extension)))
            << extension;

    const QvrRunResult none = RunQvr(home.Path.string(), "vitrea export '" + project + "' --saver Blue");
    EXPECT_EQ(none.ExitCode, 2);
    EXPECT_NE(none.Output.find("\"Blue\" is not a projector array saver"), std::string::npos) << none.Output;
    const QvrRunResult unwritable = RunQvr(home.Path.string(), "vitrea export '" + project + "' --metrics '" +
                                                                   home.File("no/such/a.vtmt") + "'");
    EXPECT_EQ(unwritable.ExitCode, 1);
    EXPECT_NE(unwritable.Output.find("No such file or directory"), std::string::npos) << unwritable.Output;
}
