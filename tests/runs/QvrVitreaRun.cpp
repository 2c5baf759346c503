// Whole runs of qvr vitrea: the metric and output definition files it writes.

#include "QvrProgram.h"
#include "foundation/ScratchDirectory.h"

#include "projector/LMetrics.h"
#include "projector/LOutputFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class QvrVitreaRun : public ::testing::Test {
protected:
    QvrRunResult vitrea(const std::string& arguments) {
        return RunQvr(home.Path.string(), "vitrea " + arguments);
    }
    std::string file(const std::string& name) const { return home.File(name); }

    ScratchDirectory home{"vitrea"};
};

bool contains(const QvrRunResult& result, const std::string& text) {
    return result.Output.find(text) != std::string::npos;
}

} // namespace

TEST_F(QvrVitreaRun, MetricsLayTheWindowsOutFromTheNumbers) {
    const QvrRunResult run = vitrea("metrics '" + file("l.vtmt") + "' --w 50 --resolution 2,3");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    LMetrics metrics;
    std::string problem;
    ASSERT_TRUE(metrics.LoadFromFile(file("l.vtmt"), problem)) << problem;
    EXPECT_EQ(metrics.Windows[4], (CRect{0, 800, 50, 900}));
    EXPECT_EQ(metrics.Windows[5], (CRect{200, 1100, 250, 1200}));
    EXPECT_EQ(metrics.Windows[6], (CRect{350, 1100, 400, 1200}));
    EXPECT_DOUBLE_EQ(metrics.ResolutionY, 3.0);
    EXPECT_EQ(metrics.TotalHeight, 3600);
}

TEST_F(QvrVitreaRun, MetricsRefuseOverlapsUnlessToldToMendThem) {
    QvrRunResult run = vitrea("metrics '" + file("l.vtmt") + "' --vx 50 --hy 20");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "VX must be greater or equal to HX plus W.")) << run.Output;
    EXPECT_FALSE(std::filesystem::exists(file("l.vtmt")));
    run = vitrea("metrics '" + file("l.vtmt") + "' --vx 50 --hy 20 --fix");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    LMetrics metrics;
    std::string problem;
    ASSERT_TRUE(metrics.LoadFromFile(file("l.vtmt"), problem));
    EXPECT_EQ(metrics.Windows[5], (CRect{100, 1000, 200, 1100})) << "vx = hx + w, hy = vy + h";
}

TEST_F(QvrVitreaRun, MetricsRefuseEmptyWindowsAndBadNumbers) {
    QvrRunResult run = vitrea("metrics '" + file("l.vtmt") + "' --h 0");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "Error verifying window #1:")) << run.Output;
    EXPECT_EQ(vitrea("metrics '" + file("l.vtmt") + "' --dx many").ExitCode, 2);
    EXPECT_EQ(vitrea("windows x").ExitCode, 2);
    run = vitrea("metrics '" + file("l.vtmt") + "' --w 9223372036854775807 --fix");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "--w wants a whole number of 32 bits")) << run.Output;
    run = vitrea("metrics '" + file("l.vtmt") + "' --w 2147483647 --h 2147483647 --fix");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "The window reaches beyond the numbers")) << run.Output;
    EXPECT_FALSE(std::filesystem::exists(file("l.vtmt")));
}

TEST_F(QvrVitreaRun, OutputsNameEveryProjectorsFile) {
    const QvrRunResult run =
        vitrea("outputs '" + file("o.vtfl") + "' --dir 'render/p<P>' --file 'f_<F>.tga' --off 3,18");
    ASSERT_EQ(run.ExitCode, 0) << run.Output;
    LOutputFiles outputs;
    std::string problem;
    ASSERT_TRUE(outputs.LoadFromFile(file("o.vtfl"), problem)) << problem;
    EXPECT_EQ(outputs.StreamType, "BMP Image stream");
    EXPECT_EQ(outputs.StreamSetup, "SQ4|n|0|1");
    EXPECT_EQ(outputs.GetOutputName(0), "render/p01/f_<F>.bmp");
    EXPECT_EQ(outputs.GetOutputName(16), "render/p17/f_<F>.bmp");
    EXPECT_FALSE(outputs.ProjectorActive[2]);
    EXPECT_FALSE(outputs.ProjectorActive[17]);
    EXPECT_TRUE(outputs.ProjectorActive[16]);
}

TEST_F(QvrVitreaRun, OutputsRefuseUnknownFormatsAndIncompletePatterns) {
    QvrRunResult run = vitrea("outputs '" + file("o.vtfl") + "' --file 'p<P>' --format 'Laser stream'");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "The format \"Laser stream\" is not known to this version of qvrTessarine."))
        << run.Output;
    run = vitrea("outputs '" + file("o.vtfl") + "' --file 'p<P>.bmp'");
    EXPECT_EQ(run.ExitCode, 2);
    EXPECT_TRUE(contains(run, "you have to put a \"<F>\" in either the")) << run.Output;
    run = vitrea("outputs '" + file("o.vtfl") + "' --file 'p<P>' --format 'AVI video stream' --setup 'SQ4'");
    EXPECT_EQ(run.ExitCode, 2) << run.Output;
    EXPECT_FALSE(std::filesystem::exists(file("o.vtfl")));
    run = vitrea("outputs '" + file("o.vtfl") + "' --file 'p<P>' --format 'avi video stream'");
    EXPECT_EQ(run.ExitCode, 0) << "a movie needs no frame placeholder\n" << run.Output;
}
