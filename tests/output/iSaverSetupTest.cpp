#include "output/iSaverSetup.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <gtest/gtest.h>

namespace {

const char* const RepairWarning = "Saver rendering settings were invalid in some points - has been fixed.";

// Loads a block of the given keys; the report's texts come back in `texts`.
iSaverSetup loadFrom(const std::vector<std::pair<std::string, std::string>>& keys,
                     std::vector<std::string>& texts) {
    qvrCTreeData block("Object");
    for (const auto& [name, value] : keys)
        block.SetText(name, value);
    hReportRoot report("Loading");
    iSaverSetup setup;
    setup.Load(block, report);
    for (const hReportEntry& entry : report.GetEntries()) {
        EXPECT_EQ(entry.Level, hReportWarning);
        texts.push_back(entry.Text);
    }
    return setup;
}

} // namespace

TEST(iSaverSetup, SavedSettingsLoadBackUnchanged) {
    iSaverSetup written;
    written.ErrorsIgnore = false;
    written.ErrorsReplaceBadFrames = true;
    written.LogFile = "run.rlog";
    written.VideoStart = 10;
    written.VideoEnd = 20;
    written.VideoSteps = 2;
    written.VideoFPS = 30000;
    written.VideoRes = 1001;
    written.MiscMinimize = false;
    written.MiscThreadCnt = 3;
    qvrCTreeData block("Object");
    written.Save(block);
    hReportRoot report("Loading");
    iSaverSetup read;
    read.Load(block, report);
    EXPECT_EQ(report.GetCount(), 0);
    EXPECT_FALSE(read.ErrorsIgnore);
    EXPECT_TRUE(read.ErrorsReplaceBadFrames);
    EXPECT_EQ(read.LogFile, "run.rlog");
    EXPECT_EQ(read.VideoStart, 10u);
    EXPECT_EQ(read.VideoEnd, 20u);
    EXPECT_EQ(read.VideoSteps, 2u);
    EXPECT_EQ(read.VideoFPS, 30000u);
    EXPECT_EQ(read.VideoRes, 1001u);
    EXPECT_FALSE(read.MiscMinimize);
    EXPECT_EQ(read.MiscThreadCnt, 3u);
}

TEST(iSaverSetup, MissingKeysTakeTheDefaults) {
    std::vector<std::string> texts;
    const iSaverSetup setup = loadFrom({{"VideoEnd", "99"}}, texts);
    EXPECT_TRUE(texts.empty());
    EXPECT_TRUE(setup.ErrorsIgnore);
    EXPECT_TRUE(setup.LogKeep);
    EXPECT_EQ(setup.LogFile, "render.rlog");
    EXPECT_EQ(setup.VideoStart, 0u);
    EXPECT_EQ(setup.VideoEnd, 99u);
    EXPECT_EQ(setup.VideoFPS, 25u);
    EXPECT_EQ(setup.MiscThreadCnt, 4u);
    EXPECT_TRUE(setup.IsValid());
}

TEST(iSaverSetup, ABackwardRangeIsSwappedWithOneWarning) {
    std::vector<std::string> texts;
    const iSaverSetup setup = loadFrom({{"VideoStart", "100"}, {"VideoEnd", "50"}}, texts);
    EXPECT_EQ(setup.VideoStart, 50u);
    EXPECT_EQ(setup.VideoEnd, 100u);
    EXPECT_EQ(texts, std::vector<std::string>{RepairWarning});
}

TEST(iSaverSetup, ZerosAndANamelessLogAreMendedUnderOneWarning) {
    std::vector<std::string> texts;
    const iSaverSetup setup = loadFrom({{"VideoSteps", "0"},
                                        {"VideoFPS", "0"},
                                        {"VideoRes", "0"},
                                        {"MiscThreadCnt", "0"},
                                        {"LogKeep", "Yes"},
                                        {"LogFile", ""}},
                                       texts);
    EXPECT_EQ(setup.VideoSteps, 1u);
    EXPECT_EQ(setup.VideoFPS, 25u);
    EXPECT_EQ(setup.VideoRes, 1u);
    EXPECT_EQ(setup.MiscThreadCnt, 1u);
    EXPECT_FALSE(setup.LogKeep);
    EXPECT_EQ(texts, std::vector<std::string>{RepairWarning});
    EXPECT_TRUE(setup.IsValid());
}

TEST(iSaverSetup, EachUnusableValueMakesTheSetupInvalid) {
    const std::vector<void (*)(iSaverSetup&)> breakers = {
        [](iSaverSetup& s) { s.VideoEnd = s.VideoStart - 1; },
        [](iSaverSetup& s) { s.VideoSteps = 0; },
        [](iSaverSetup& s) { s.VideoFPS = 0; },
        [](iSaverSetup& s) { s.VideoRes = 0; },
        [](iSaverSetup& s) { s.MiscThreadCnt = 0; },
        [](iSaverSetup& s) { s.LogFile.clear(); },
    };
    for (size_t i = 0; i < breakers.size(); ++i) {
        iSaverSetup setup;
        setup.VideoStart = 5;
        breakers[i](setup);
        EXPECT_FALSE(setup.IsValid()) << "case " << i;
    }
    iSaverSetup withoutLog;
    withoutLog.LogKeep = false;
    withoutLog.LogFile.clear();
    EXPECT_TRUE(withoutLog.IsValid());
}
