// Whole runs of `qvr batch` on projects that the test writes first: the list
// in the preferences as the batch processor's controls edit it, and a run of
// its jobs in which a failing job doesn't stop the next.

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

class QvrBatchRun : public ::testing::Test {
protected:
    QvrRunResult batch(const std::string& arguments) {
        return RunQvr(home.Path.string(), "batch " + arguments);
    }

    // A green layer and a BMP saver of 16x12 per name, frames 0 to 2, each
    // writing into a folder of its own name (no file name for "NoFile").
    std::string writeProject(const std::vector<std::string>& savers) {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Green")));
        layer->SetSize({32, 24});
        layer->GetGreenValue().SetSingleKey(0, 255, false);
        for (const std::string& name : savers) {
            auto* saver = static_cast<isvrSaver*>(project.Adopt(std::make_unique<isvrSaver>(name)));
            saver->LinkParent(layer);
            saver->SetStream(EImageOutputStream::Find("BMP Image stream"));
            if (name != "NoFile") saver->SetFileName(home.File(name + "/f.bmp"));
            saver->SetSize({16, 12});
            saver->GetSetup().VideoEnd = 2;
            saver->GetSetup().LogFile = home.File(name + ".rlog");
            std::filesystem::create_directories(home.File(name));
        }
        const std::string path = home.File("film.tsp");
        hReportRoot report("Saving");
        iDataBase database;
        EXPECT_TRUE(database.Save(path, DBMaskProject, 0, &report));
        project.Clear();
        return path;
    }
    std::string names() {
        std::string text;
        for (const std::string& line : qvrSplit(batch("list").Output, '\n'))
            if (!line.empty()) text += line.substr(0, line.find('\t')) + ";";
        return text;
    }

    ScratchDirectory home{"batch"};
};

} // namespace

TEST_F(QvrBatchRun, TheControlsEditTheListInThePreferencesAndAListFile) {
    const std::string project = "'" + writeProject({"A", "B", "NoFile"}) + "'";
    EXPECT_EQ(batch("add " + project + " --saver A").Output, "film.tsp:A\n");
    EXPECT_EQ(batch("add " + project + " --saver B --name second").Output, "second\n");
    const QvrRunResult taken = batch("add " + project + " --saver NoFile");
    EXPECT_EQ(taken.ExitCode, 1);
    EXPECT_NE(taken.Output.find("Please specify a file."), std::string::npos) << taken.Output;
    EXPECT_EQ(batch("add " + project + " --saver A --name SECOND").ExitCode, 1);
    EXPECT_EQ(batch("add " + project + " --saver A --name renamed").Output, "film.tsp:A\n")
        << "a renewed job keeps its name";
    EXPECT_EQ(names(), "film.tsp:A;second;");
    EXPECT_EQ(batch("move SECOND top").ExitCode, 0);
    EXPECT_EQ(names(), "second;film.tsp:A;");
    const QvrRunResult json = batch("list --json");
    EXPECT_NE(json.Output.find("{\"name\":\"second\",\"project\":\"" + home.File("film.tsp") +
                               "\",\"saver\":\"B\",\"class\":\"Saver\",\"time\":\""),
              std::string::npos)
        << json.Output;

    EXPECT_EQ(batch("save '" + home.File("jobs.tsp") + "'").ExitCode, 0);
    EXPECT_EQ(batch("clear").ExitCode, 0);
    EXPECT_EQ(names(), "");
    EXPECT_EQ(batch("load '" + home.File("jobs.tsp") + "'").ExitCode, 0);
    EXPECT_EQ(names(), "second;film.tsp:A;");
    EXPECT_EQ(batch("remove film.tsp:a").ExitCode, 0);
    EXPECT_EQ(names(), "second;");
    EXPECT_EQ(batch("remove none").ExitCode, 2);
    EXPECT_EQ(batch("move second sideways").ExitCode, 2);
    EXPECT_EQ(batch("load '" + home.File("film.tsp") + "'").ExitCode, 2) << "a project is no batch list";
    EXPECT_EQ(names(), "second;");
}

TEST_F(QvrBatchRun, ARunRendersEveryJobInListOrderPastOneThatFails) {
    const std::string project = "'" + writeProject({"A", "B"}) + "'";
    ASSERT_EQ(batch("add " + project + " --saver A").ExitCode, 0);
    ASSERT_EQ(batch("add " + project + " --saver B").ExitCode, 0);
    ASSERT_EQ(batch("move film.tsp:B top").ExitCode, 0);
    writeProject({"A"});
    std::filesystem::remove_all(home.File("B"));
    const QvrRunResult run = batch("run --threads 2");
    EXPECT_EQ(run.ExitCode, 1) << run.Output;
    const std::size_t failed =
        run.Output.find("film.tsp:B: not rendered: " + home.File("film.tsp") + ": there is no element \"B\"");
    const std::size_t rendered = run.Output.find("film.tsp:A: 3 of 3 frames done, 0 failed");
    EXPECT_NE(failed, std::string::npos) << run.Output;
    EXPECT_NE(rendered, std::string::npos) << run.Output;
    EXPECT_LT(failed, rendered) << "jobs run in list order";
    EXPECT_TRUE(std::filesystem::exists(home.File("A/f0002.bmp")));
    EXPECT_EQ(names(), "film.tsp:B;film.tsp:A;") << "the list stays as it is";

    const QvrRunResult one = batch("run --job FILM.TSP:A");
    EXPECT_EQ(one.ExitCode, 0) << one.Output;
    EXPECT_EQ(one.Output.find("film.tsp:B"), std::string::npos) << one.Output;
    EXPECT_EQ(batch("run --job nobody").ExitCode, 2);
}
