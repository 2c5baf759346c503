// Farm runs against a real Slurm cluster that the test brings up on this
// machine (tools/slurm_local.sh) and ends by its daemons' process ids. Every
// file that a farm run writes must be the same, byte for byte, as what a
// local `qvr render` of the same saver writes.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"
#include "projector/VitreaTestSupport.h"

#include "foundation/iDataBase.h"
#include "foundation/qvrCRegKey.h"
#include "imaging/EProxySettings.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"
#include "output/EImageOutputStream.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

namespace {

namespace fs = std::filesystem;

class QvrFarmRun : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (RunShell("command -v slurmctld && command -v munged").ExitCode != 0) return;
        clusterDir() = (fs::temp_directory_path() / ("qvr_slurm_" + std::to_string(::getpid()))).string();
        const QvrRunResult started = RunShell(script() + " start '" + clusterDir() + "'");
        if (started.ExitCode == 0)
            ::setenv("SLURM_CONF", (clusterDir() + "/slurm.conf").c_str(), 1);
        else
            clusterProblem() = started.Output;
    }
    static void TearDownTestSuite() {
        if (clusterDir().empty()) return;
        RunShell(script() + " stop '" + clusterDir() + "'");
        std::error_code ignored;
        fs::remove_all(clusterDir(), ignored);
    }
    void SetUp() override {
        if (clusterDir().empty()) GTEST_SKIP() << "Slurm isn't installed (tools/deps.sh installs it)";
        ASSERT_TRUE(clusterProblem().empty()) << clusterProblem();
    }

    static std::string& clusterDir() {
        static std::string dir;
        return dir;
    }
    static std::string& clusterProblem() {
        static std::string problem;
        return problem;
    }
    static std::string script() { return std::string("'") + QVR_SOURCE_DIR + "/tools/slurm_local.sh'"; }

    QvrRunResult qvr(const std::string& arguments) { return RunQvr(home.Path.string(), arguments); }
    // Waits for the run, but never longer than a stuck cluster deserves.
    QvrRunResult wait(const std::string& run) {
        return RunShell("QVR_HOME='" + home.Path.string() + "' timeout 300 '" QVR_PROGRAM "' farm wait '" +
                        run + "'");
    }

    // A layer whose red runs from 0 to 255 over frames 0 to 9, a BMP sequence
    // saver "Frames" and an AVI saver "Movie" of 32x24 writing into "out".
    std::string writeProject() {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Ramp")));
        layer->SetSize({40, 30});
        layer->GetRedValue().SetSingleKey(0, 0, false);
        layer->GetRedValue().SetKey(9, 255, true, false, false);
        layer->GetGreenValue().SetSingleKey(0, 90, false);
        layer->GetBlueValue().SetSingleKey(0, 200, false);
        const std::pair<const char*, const char*> savers[] = {{"Frames", "BMP Image stream"},
                                                              {"Movie", "AVI video stream"}};
        for (const auto& [name, stream] : savers) {
            auto* saver = static_cast<isvrSaver*>(project.Adopt(std::make_unique<isvrSaver>(name)));
            saver->LinkParent(layer);
            saver->SetStream(EImageOutputStream::Find(stream));
            saver->SetFileName(home.File(std::string("out/") + (name[0] == 'F' ? "frame.bmp" : "movie.avi")));
            saver->SetSize({32, 24});
            saver->GetSetup().VideoEnd = 9;
            saver->GetSetup().MiscThreadCnt = 1;
            saver->GetSetup().LogFile = home.File(std::string(name) + ".rlog");
        }
        fs::create_directories(home.File("out"));
        fs::create_directories(home.File("local"));
        return save("ramp.tsp");
    }
    std::string writeArrayProject() {
        iProject& project = iProject::GetStandard();
        project.Clear();
        auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Ramp")));
        layer->SetSize({40, 20});
        layer->GetRedValue().SetSingleKey(0, 0, false);
        layer->GetRedValue().SetKey(2, 255, true, false, false);
        auto* saver = static_cast<isvrVitrea*>(project.Adopt(std::make_unique<isvrVitrea>("Array")));
        saver->LinkParent(layer);
        qvrTest::SetUpSmallArray(*saver, home.File("array"));
        saver->GetConfiguration().OutputFiles.ProjectorActive[4] = false;
        saver->GetSetup().LogFile = home.File("array.rlog");
        return save("array.tsp");
    }
    std::string save(const std::string& name) {
        const std::string path = home.File(name);
        hReportRoot report("Saving");
        iDataBase database;
        EXPECT_TRUE(database.Save(path, DBMaskProject, 0, &report));
        iProject::GetStandard().Clear();
        return path;
    }

    // Submits and waits; the run's folder.
    std::string farmRun(const std::string& arguments, int expectedExit = 0) {
        const QvrRunResult submitted = qvr("farm submit " + arguments);
        EXPECT_EQ(submitted.ExitCode, 0) << submitted.Output;
        const std::string run = submitted.Output.substr(0, submitted.Output.find('\n'));
        const QvrRunResult waited = wait(run);
        EXPECT_EQ(waited.ExitCode, expectedExit)
            << waited.Output << ScratchDirectory::ReadAll(run + "/chunk000000.out");
        return run;
    }
    // Every file below `local` has its twin of the same bytes below `farm`; the count of files.
    static int expectSameFiles(const std::string& local, const std::string& farm) {
        int count = 0;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(local)) {
            if (!entry.is_regular_file()) continue;
            const fs::path twin = fs::path(farm) / fs::relative(entry.path(), local);
            EXPECT_TRUE(ScratchDirectory::ReadAll(entry.path().string()) ==
                        ScratchDirectory::ReadAll(twin.string()))
                << twin;
            ++count;
        }
        return count;
    }

    ScratchDirectory home{"farm"};
};

} // namespace

TEST_F(QvrFarmRun, SequenceAndMovieChunksWriteWhatALocalRenderWrites) {
    const std::string project = "'" + writeProject() + "'";
    for (const char* saver : {"Frames", "Movie"}) {
        const std::string output =
            home.File(std::string("local/") + (saver[0] == 'F' ? "frame.bmp" : "movie.avi"));
        const QvrRunResult local =
            qvr("render " + project + " --saver " + saver + " --output '" + output + "'");
        ASSERT_EQ(local.ExitCode, 0) << local.Output;
    }
    // Every session empties the proxy directory at its end, but for the farm's tasks.
    ASSERT_TRUE(qvrCRegKey::OpenStore(home.Path.string()));
    qvrCRegKey proxies;
    ASSERT_TRUE(proxies.Open(qvrCRegKey::Root(), EProxySettings::RegistryKey));
    ASSERT_TRUE(proxies.SetLong("Proxy clean-up mode", static_cast<long>(EProxyCleanUp::EmptyAtExit)));
    const std::string proxy = home.File("proxies/pxy(clip)_8x6.qts");
    fs::create_directories(home.File("proxies"));
    std::ofstream(proxy) << "proxy";
    const std::string frames = farmRun(project + " --saver Frames --chunk 3 --threads 2");
    const std::string movie = farmRun(project + " --saver Movie --chunk 4");
    EXPECT_EQ(expectSameFiles(home.File("local"), home.File("out")), 11);
    const QvrRunResult status = qvr("farm status '" + frames + "'");
    EXPECT_EQ(status.ExitCode, 0);
    EXPECT_NE(status.Output.find("chunk 3: frames 9-9: done, 1 of 1 frames done"), std::string::npos)
        << status.Output;
    EXPECT_NE(status.Output.find("frames: 10 done, 0 failed, 0 missing"), std::string::npos) << status.Output;
    EXPECT_NE(qvr("farm status '" + movie + "' --json").Output.find("\"movie\":\"done\""), std::string::npos);
    EXPECT_TRUE(fs::exists(frames + "/chunk000002.rlog"));
    EXPECT_FALSE(fs::exists(movie + "/frames")) << "the quick files go once the movie is written";
    EXPECT_TRUE(fs::exists(proxy));
    qvr("info " + project);
    EXPECT_FALSE(fs::exists(proxy));
}

TEST_F(QvrFarmRun, AProjectorArrayRendersOneTaskPerActiveProjector) {
    const std::string project = "'" + writeArrayProject() + "'";
    const QvrRunResult local = qvr("render " + project + " --threads 2");
    ASSERT_EQ(local.ExitCode, 0) << local.Output;
    // The projectors' folders stay, empty.
    fs::copy(home.File("array"), home.File("array_local"), fs::copy_options::recursive);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(home.File("array_local")))
        if (entry.is_regular_file())
            fs::remove(home.File("array") / fs::relative(entry.path(), home.File("array_local")));
    const std::string run = farmRun(project + " --threads 1");
    EXPECT_EQ(expectSameFiles(home.File("array_local"), home.File("array")), 17 * 3);
    const QvrRunResult status = qvr("farm status '" + run + "'");
    EXPECT_NE(status.Output.find("chunk 16: frames 0-2, projector #18: done"), std::string::npos)
        << status.Output;
    EXPECT_EQ(status.Output.find("projector #05"), std::string::npos) << status.Output;
}

TEST_F(QvrFarmRun, AKilledChunkShowsAsFailedAndResumeRendersItAlone) {
    const std::string project = "'" + writeProject() + "'";
    ASSERT_EQ(
        qvr("render " + project + " --saver Frames --output '" + home.File("local/frame.bmp") + "'").ExitCode,
        0);
    const QvrRunResult submitted =
        qvr("farm submit " + project + " --saver Frames --chunk 4 --sbatch --hold");
    ASSERT_EQ(submitted.ExitCode, 0) << submitted.Output;
    const std::string run = submitted.Output.substr(0, submitted.Output.find('\n'));
    const QvrRunResult held = qvr("farm status '" + run + "' --json");
    EXPECT_EQ(held.ExitCode, 3) << held.Output;
    std::smatch job;
    ASSERT_TRUE(std::regex_search(held.Output, job, std::regex("\"job\":\"([0-9]+)_0\""))) << held.Output;
    ASSERT_EQ(RunShell("scancel " + job[1].str() + "_1 && scontrol release " + job[1].str()).ExitCode, 0);
    const QvrRunResult failed = wait(run);
    EXPECT_EQ(failed.ExitCode, 1) << failed.Output;
    EXPECT_NE(failed.Output.find("chunk 1: frames 4-7: failed, 0 of 4 frames done"), std::string::npos)
        << failed.Output;
    EXPECT_NE(failed.Output.find("frames: 6 done, 4 failed, 0 missing"), std::string::npos) << failed.Output;

    const QvrRunResult resumed = qvr("farm resume '" + run + "'");
    EXPECT_NE(resumed.Output.find("1 chunk(s) submitted again"), std::string::npos) << resumed.Output;
    // The run keeps its own sbatch options: the chunk is held again.
    const QvrRunResult again = qvr("farm status '" + run + "' --json");
    ASSERT_TRUE(std::regex_search(again.Output, job, std::regex("\"job\":\"([0-9]+)_1\""))) << again.Output;
    ASSERT_EQ(RunShell("scontrol release " + job[1].str()).ExitCode, 0);
    EXPECT_EQ(wait(run).ExitCode, 0);
    EXPECT_EQ(expectSameFiles(home.File("local"), home.File("out")), 10);
    EXPECT_NE(qvr("farm resume '" + run + "'").Output.find("nothing to resume"), std::string::npos);
}

TEST_F(QvrFarmRun, BadRunsAndAnUnreachableClusterExitWithTwo) {
    const std::string project = "'" + writeProject() + "'";
    EXPECT_EQ(qvr("farm status '" + home.File("none") + "'").ExitCode, 2);
    EXPECT_EQ(qvr("farm submit " + project + " --saver Nothing").ExitCode, 2);
    const std::string conf = home.File("unreachable.conf");
    ASSERT_EQ(
        RunShell("sed 's/^SlurmctldPort=.*/SlurmctldPort=1/' \"$SLURM_CONF\" > '" + conf + "'").ExitCode, 0);
    const QvrRunResult unreachable =
        RunShell("SLURM_CONF='" + conf + "' QVR_HOME='" + home.Path.string() +
                 "' '" QVR_PROGRAM "' farm submit " + project + " --saver Frames");
    EXPECT_EQ(unreachable.ExitCode, 2) << unreachable.Output;
    EXPECT_NE(unreachable.Output.find("Unable to contact slurm controller"), std::string::npos)
        << unreachable.Output;
}
