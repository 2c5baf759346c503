#include "projector/DefinitionFiles.h"

#include "foundation/qvrCTreeData.h"
#include "projector/LConfiguration.h"

#include <gtest/gtest.h>

TEST(ConfigurationBlock, HoldsTheThreePartsAndTheFilter) {
    LConfiguration written;
    written.Calibration.ImageWidth = 640;
    written.Metrics.Windows[3] = {1, 2, 3, 4};
    written.OutputFiles.StreamType = "BMP Image stream";
    written.OutputFiles.ProjectorFiles[0] = "first.bmp";
    written.Filter = 3;
    written.FilterLevel = 0.75;
    qvrCTreeData saver("Saver");
    written.Save(saver);
    const qvrCTreeData* block = saver.Find("Configuration");
    ASSERT_NE(block, nullptr);
    for (const char* part : {"Calibration", "OutputMetrics", "OutputFiles"})
        EXPECT_NE(block->Find(part), nullptr) << part;

    hReportRoot report("Load");
    LConfiguration read;
    read.Load(saver, report);
    EXPECT_EQ(report.GetCount(), 0);
    EXPECT_EQ(read.Calibration.ImageWidth, 640u);
    EXPECT_EQ(read.Metrics.Windows[3], (CRect{1, 2, 3, 4}));
    EXPECT_EQ(read.OutputFiles.ProjectorFiles[0], "first.bmp");
    EXPECT_EQ(read.Filter, 3);
    EXPECT_DOUBLE_EQ(read.FilterLevel, 0.75);
}

TEST(ConfigurationBlock, AMissingBlockIsReportedAndChangesNothing) {
    hReportRoot report("Load");
    qvrCTreeData saver("Saver");
    LConfiguration read;
    read.Filter = 4;
    read.Load(saver, report);
    EXPECT_EQ(qvrTest::ReportLines(report),
              std::vector<std::string>{"2: Can't find section 'Configuration'"});
    EXPECT_EQ(read.Filter, 4);
    EXPECT_DOUBLE_EQ(LConfiguration().FilterLevel, 2.0);
}
