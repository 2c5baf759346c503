// A farm run's chunks, its state file and the status that the result files
// and the cluster's queue give together.

#include "batch/EFarmRun.h"
#include "foundation/ScratchDirectory.h"

#include <gtest/gtest.h>

namespace {

class FarmRun : public ::testing::Test {
protected:
    EFarmRun movieRun() {
        EFarmRun run;
        run.Folder = scratch.Path.string();
        run.RunKind = EFarmRun::Kind::Movie;
        run.First = 3;
        run.Last = 21;
        run.Step = 4;
        run.PlanFrameChunks(2);
        return run;
    }

    ScratchDirectory scratch{"farm"};
};

TEST_F(FarmRun, ChunksCoverTheRenderedFramesAndTheStateSurvivesItsFile) {
    EFarmRun run = movieRun();
    ASSERT_EQ(run.Chunks.size(), 3u);
    EXPECT_EQ(run.Chunks[0].First, 3);
    EXPECT_EQ(run.Chunks[0].Last, 7);
    EXPECT_EQ(run.Chunks[2].First, 19);
    EXPECT_EQ(run.Chunks[2].Last, 19) << "frame 21 is past the step";
    run.Chunks[1].JobId = "12_1";
    run.SbatchOptions = {"--account=film", "--time=10"};
    run.Project = "/projects/it's.tsp";
    hReportRoot report("Farm");
    ASSERT_TRUE(run.Save(report));
    const std::optional<EFarmRun> loaded = EFarmRun::Load(run.Folder, report);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->RunKind, EFarmRun::Kind::Movie);
    EXPECT_EQ(loaded->Step, 4);
    EXPECT_EQ(loaded->Chunks[1].JobId, "12_1");
    EXPECT_EQ(loaded->Chunks[2].Last, 19);
    EXPECT_EQ(loaded->SbatchOptions, run.SbatchOptions);
    EXPECT_EQ(loaded->Project, run.Project);
    EXPECT_FALSE(EFarmRun::Load(scratch.File("none"), report));
    EXPECT_NE(run.ChunkScriptText().find("farm task '" + run.Folder + "' \"$SLURM_ARRAY_TASK_ID\""),
              std::string::npos)
        << run.ChunkScriptText();
}

TEST_F(FarmRun, StatusTrustsOnlyResultsAndTellsDeadTasksFromQueuedOnes) {
    EFarmRun run = movieRun();
    run.Chunks.push_back({23, 27, -1, {}});
    run.Chunks[0].JobId = "7_0";
    run.Chunks[1].JobId = "7_1";
    run.Chunks[2].JobId = "7_2";
    run.AssemblyJobId = "8";
    ASSERT_TRUE(EFarmRun::WriteResult(run.ChunkFile(0, "result"), {0, 2, 2, 0}));
    ASSERT_TRUE(EFarmRun::WriteResult(run.ChunkFile(1, "result"), {1, 2, 1, 1}));
    EFarmStatus status = EFarmStatus::Of(run, {{"7_2", "RUNNING"}, {"8", "PENDING"}});
    EXPECT_EQ(status.Chunks[0].State, EFarmState::Done);
    EXPECT_EQ(status.Chunks[1].State, EFarmState::Failed);
    EXPECT_EQ(status.Chunks[2].State, EFarmState::Running);
    EXPECT_EQ(status.Chunks[3].State, EFarmState::Missing);
    EXPECT_EQ(status.Assembly->State, EFarmState::Pending);
    EXPECT_EQ(status.Done, 3u);
    EXPECT_EQ(status.Failed, 1u);
    EXPECT_EQ(status.Missing, 3u);
    EXPECT_TRUE(status.IsRunning());
    EXPECT_EQ(status.ChunksToResume(), (std::vector<std::size_t>{1, 3}));

    // The cluster has forgotten the tasks: one without a result died.
    status = EFarmStatus::Of(run, {});
    EXPECT_EQ(status.Chunks[2].State, EFarmState::Failed);
    EXPECT_EQ(status.Assembly->State, EFarmState::Failed);
    EXPECT_FALSE(status.IsRunning());
    EXPECT_FALSE(status.IsComplete());
    EXPECT_EQ(status.ChunksToResume(), (std::vector<std::size_t>{1, 2, 3}));
}

} // namespace
