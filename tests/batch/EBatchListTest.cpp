// The batch list: its order through the preferences and list files, the
// reports of a load, the job-add dialog and "Render later...".

#include "batch/EBatchJob.h"
#include "batch/EBatchJobAddDialog.h"
#include "batch/EBatchListFile.h"
#include "batch/EBatchProcessorPrefs.h"
#include "batch/ERenderLater.h"
#include "foundation/ELog.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/SectionLockHolder.h"
#include "model/ScriptedUserInterface.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

#include <fstream>

namespace {

class BatchList : public ::testing::Test {
protected:
    void SetUp() override { list().DeleteAll(); }
    void TearDown() override { list().DeleteAll(); }

    static EBatchJobList& list() { return EBatchJobList::Get(); }

    // A project file that exists, so that a load keeps its jobs.
    std::string project(const std::string& name) {
        const std::string path = scratch.File(name);
        std::ofstream(path) << "project\n";
        return path;
    }
    EBatchJob& add(const std::string& name, const std::string& projectPath,
                   const std::string& saver = "Saver") {
        return list().Create({name, projectPath, saver, "Saver", 1'700'000'000});
    }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (std::size_t i = 0; i < list().GetCount(); ++i)
            result.push_back(list().GetJob(i).Name);
        return result;
    }
    // Loads the section's block into the list; the load's reports.
    std::vector<std::string> reload(qvrCTreeData& block) {
        hReportRoot report("Load");
        EBatchProcessorPrefs::Get().Load(block, report);
        return texts(report);
    }
    static std::vector<std::string> texts(const hReportRoot& report) {
        std::vector<std::string> result;
        for (const hReportEntry& entry : report.GetEntries())
            result.push_back(std::to_string(entry.Level) + " " + entry.Text);
        return result;
    }

    ScratchDirectory scratch{"batch"};
};

TEST_F(BatchList, ControlsMoveJobsAndTheOrderSurvivesTheSectionAndAListFile) {
    const std::string film = project("film.tsp");
    add("zeta", film, "A");
    add("Alpha", film, "B");
    add("mid", film, "C");
    EXPECT_EQ(list().Find("ALPHA"), &list().GetJob(1));
    EXPECT_EQ(list().Find("none"), nullptr);
    list().MoveJob(*list().Find("mid"), EBatchJobList::Move::Top);
    list().MoveJob(*list().Find("zeta"), EBatchJobList::Move::Up);
    EXPECT_EQ(names(), (std::vector<std::string>{"zeta", "mid", "Alpha"}));
    list().MoveJob(*list().Find("zeta"), EBatchJobList::Move::Bottom);
    list().MoveJob(*list().Find("zeta"), EBatchJobList::Move::Down);
    list().MoveJob(*list().Find("alpha"), EBatchJobList::Move::Down);
    EXPECT_EQ(names(), (std::vector<std::string>{"mid", "zeta", "Alpha"}));

    qvrCTreeData block("Batch processor");
    hReportRoot saveReport("Save");
    EBatchProcessorPrefs::Get().Save(block, saveReport);
    EXPECT_EQ(block.Find("Jobs")->Find("zeta")->GetText("Listposition")->c_str(), std::string("1"));
    EXPECT_EQ(*block.Find("Jobs")->Find("zeta")->GetText("TimeCode"), "2023-11-14 22:13:20 UTC");
    list().DeleteAll();
    EXPECT_EQ(reload(block), std::vector<std::string>{});
    EXPECT_EQ(names(), (std::vector<std::string>{"mid", "zeta", "Alpha"}));
    EXPECT_EQ(list().Find("mid")->TimeCode, 1'700'000'000);

    hReportRoot fileReport("File");
    ASSERT_TRUE(EBatchListFile::Save(scratch.File("jobs.tsp"), fileReport));
    list().Remove(*list().Find("zeta"));
    ASSERT_TRUE(EBatchListFile::Load(scratch.File("jobs.tsp"), fileReport));
    EXPECT_EQ(names(), (std::vector<std::string>{"mid", "zeta", "Alpha"}));
    EXPECT_EQ(fileReport.GetCount(), 0);
}

TEST_F(BatchList, LoadDropsIncompleteTwiceAndMovedJobsWithReportsAndALogLine) {
    const std::string logPath = scratch.File("batch.log");
    EPrefsLog::StoreSettings(logPath, false, ELog::LevelMessage);
    ELog::GlobalOpen();
    qvrCTreeData block("Batch processor");
    qvrCTreeData* jobs = block.CreateChild("Jobs");
    auto job = [&](const std::string& name, const std::string& path) {
        qvrCTreeData* entry = jobs->CreateChild(name);
        entry->SetText("Projectfile", path);
        entry->SetText("Saverobject", "Saver");
        entry->SetText("Saverclass", "Saver");
        entry->SetText("TimeCode", "2026-01-02 03:04:05 UTC");
        return entry;
    };
    job("good", project("good.tsp"));
    job("unsaved", "");
    job("moved", scratch.File("gone.tsp"));
    add("GOOD", project("other.tsp"));
    const std::vector<std::string> report = reload(block);
    ELog::GlobalClose();
    EXPECT_EQ(report,
              (std::vector<std::string>{"2 Job \"good\" defined twice.",
                                        "2 Job \"moved\": Unable to find project file \"" +
                                            scratch.File("gone.tsp") + "\" (see log file for details).",
                                        "2 Job \"unsaved\" definition incomplete (job is been removed)."}));
    EXPECT_EQ(list().GetCount(), 1u);
    const std::string log = ScratchDirectory::ReadAll(logPath);
    EXPECT_NE(log.find("Batch processor"), std::string::npos) << log;
    EXPECT_NE(log.find("While trying to query a job's project file, a file error"), std::string::npos) << log;

    SectionLockHolder busy(EBatchProcessorPrefs::Get());
    EXPECT_EQ(reload(block), std::vector<std::string>{"2 Resouce is in use"});
}

TEST_F(BatchList, AListFileThatDoesNotParseLoadsNothingAndSaysWhere) {
    add("kept", project("kept.tsp"));
    const std::string path = scratch.File("broken.tsp");
    std::ofstream(path)
        << "   qvrTessarine$_batch$_list = V1.10\n    {\n      Jobs =\n       {\n         x := 1\n";
    hReportRoot report("File");
    EXPECT_FALSE(EBatchListFile::Load(path, report));
    ASSERT_GE(report.GetCount(), 1);
    EXPECT_NE(report.GetEntries()[0].Text.find(path + ": line "), std::string::npos)
        << report.GetEntries()[0].Text;
    EXPECT_EQ(names(), std::vector<std::string>{"kept"});
    hReportRoot missing("File");
    EXPECT_FALSE(EBatchListFile::Load(scratch.File("none.tsp"), missing));
    EXPECT_EQ(names(), std::vector<std::string>{"kept"});
}

TEST_F(BatchList, JobAddDialogProposesFreeNamesChecksOkAndRenewsTheCurrentJob) {
    ScriptedUserInterface ui;
    const std::string film = scratch.File("film");
    add("film:Saver.1", film, "Other");
    EBatchJobAddDialog fresh(film + "/", "Saver.1", "Saver");
    EXPECT_EQ(fresh.GetName(), "film:Saver.1.1");
    EXPECT_EQ(fresh.GetCurrentJob(), nullptr);
    ASSERT_EQ(fresh.GetRows().size(), 2u);
    EXPECT_EQ(fresh.GetRows()[1].Icon, EBatchJobAddDialog::IconCurrent);
    EXPECT_EQ(fresh.GetRows()[1].Date, "<now>");
    EXPECT_EQ(fresh.GetRows()[0].Icon, EBatchJobAddDialog::IconJob);
    EXPECT_EQ(fresh.GetSaverLabel(), "Saver.1 (Saver)");
    fresh.SetName("FILM:SAVER.1");
    EXPECT_FALSE(fresh.IsOkEnabled());
    EXPECT_EQ(fresh.GetRows()[1].Name, "FILM:SAVER.1");
    EXPECT_FALSE(fresh.OnOk());
    fresh.SetName("");
    EXPECT_FALSE(fresh.OnOk());
    EXPECT_EQ(ui.Messages, (std::vector<std::string>{"A job with that name already exists.",
                                                     "Please enter a valid name."}));
    fresh.SetName("mine");
    ASSERT_TRUE(fresh.OnOk());
    EXPECT_EQ(list().GetCount(), 2u);

    // The same project and saver again: the one job is renewed and keeps its name.
    list().Find("mine")->TimeCode = 5;
    EBatchJobAddDialog again(film + "/", "SAVER.1", "Saver");
    EXPECT_EQ(again.GetCurrentJob(), list().Find("mine"));
    EXPECT_EQ(again.GetName(), "mine");
    again.SetName("renamed");
    ASSERT_TRUE(again.OnOk());
    EXPECT_EQ(list().GetCount(), 2u);
    EXPECT_EQ(list().GetJob(1).Name, "mine");
    EXPECT_EQ(list().GetJob(1).SaverObject, "SAVER.1");
    EXPECT_GT(list().GetJob(1).TimeCode, 5);
}

TEST_F(BatchList, RenderLaterChecksTheSaverFirstAndEntersItWithTheProposedName) {
    ScriptedUserInterface ui;
    isvrSaver saver("Out");
    saver.SetStream(EImageOutputStream::Find("BMP Image stream"));
    int shown = 0;
    const auto pressOk = [&shown](EBatchJobAddDialog& dialog) {
        ++shown;
        return dialog.OnOk();
    };
    EXPECT_EQ(ERenderLater::Run(saver, "/projects/film.tsp", pressOk), ERenderLater::Outcome::ChecksFailed);
    EXPECT_EQ(shown, 0);
    EXPECT_EQ(ui.Messages, std::vector<std::string>{"Please specify a file."});
    saver.SetFileName(scratch.File("out.bmp"));
    EXPECT_EQ(ERenderLater::Run(saver, "/projects/film.tsp", [](EBatchJobAddDialog&) { return false; }),
              ERenderLater::Outcome::Cancelled);
    EXPECT_EQ(ERenderLater::Run(saver, "/projects/film.tsp", pressOk), ERenderLater::Outcome::Entered);
    ASSERT_EQ(list().GetCount(), 1u);
    EXPECT_EQ(list().GetJob(0).Name, "film.tsp:Out");
    EXPECT_EQ(list().GetJob(0).SaverClass, "Saver");
}

} // namespace
