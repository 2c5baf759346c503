#include "imaging/EFileGroup.h"

#include "foundation/ScratchDirectory.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

// Head, tail, digit count, first and last number in one text.
std::string describe(const EFileGroup& group) {
    return group.Head + "|" + group.Tail + "|" + std::to_string(group.NumLen) + "|" +
           std::to_string(group.Min) + "|" + std::to_string(group.Max);
}

// Keeps every group it is given, and stops after `limit` of them.
class CollectingScanner : public EFileGroupScanner {
public:
    std::vector<std::string> groups;
    size_t limit = 1000;

protected:
    bool OnGroupFound(const EFileGroup& group) override {
        groups.push_back(describe(group));
        return groups.size() < limit;
    }
};

class FileGroupScan : public ::testing::Test {
protected:
    void makeFiles(const std::vector<std::string>& names) {
        for (const std::string& name : names)
            std::ofstream(directory.File(name)) << name;
    }
    std::vector<std::string> scan(const std::string& pattern = "*") {
        std::string reason;
        EXPECT_TRUE(scanner.ScanDirectory(directory.File(pattern), reason)) << reason;
        return scanner.groups;
    }

    ScratchDirectory directory{"filegroup"};
    CollectingScanner scanner;
};

using Groups = std::vector<std::string>;

const EFileGroup padded("a", ".tga", 3, 1, 3);

} // namespace

TEST_F(FileGroupScan, PaddedSequenceGivesHeadTailWidthAndRange) {
    makeFiles({"a001.tga", "a002.tga", "a003.tga"});
    EXPECT_EQ(scan(), Groups{"a|.tga|3|1|3"});
}

TEST_F(FileGroupScan, NamesOfDifferentWidthGiveWidthZero) {
    makeFiles({"a9.tga", "a10.tga", "b8.tga", "b9.tga", "b10.tga", "c098.tga", "c099.tga", "c100.tga"});
    EXPECT_EQ(scan(), (Groups{"a|.tga|0|9|10", "b|.tga|0|8|10", "c|.tga|3|98|100"}));
}

TEST_F(FileGroupScan, GapsSplitSequencesAndLoneFilesMakeNoGroup) {
    makeFiles({"a1.tga", "a2.tga", "a4.tga", "b5.tga", "b6.tga", "b8.tga", "b9.tga", "123", "readme.txt"});
    EXPECT_EQ(scan(), (Groups{"a|.tga|1|1|2", "b|.tga|1|5|6", "b|.tga|1|8|9"}));
}

TEST_F(FileGroupScan, ANumberThatStaysTheSameIsPartOfTheName) {
    makeFiles({"take2_001.tga", "take2_002.tga", "take1_001.tga", "take1_002.tga", "take1_003.tga"});
    EXPECT_EQ(scan(), (Groups{"take1_|.tga|3|1|3", "take2_|.tga|3|1|2"}));
}

TEST_F(FileGroupScan, OnlyOneNumberMayCountBetweenNeighbours) {
    makeFiles({"x1_1.tga", "x2_2.tga", "x3_3.tga"});
    EXPECT_TRUE(scan().empty());
}

TEST_F(FileGroupScan, GroupsComeInOrderOfTokenCountThenNameWithoutCase) {
    makeFiles({"s1_1.tga", "s1_2.tga", "B1.tga", "B2.tga", "a1.tga", "a2.tga", "7a.tga", "8a.tga"});
    EXPECT_EQ(scan(), (Groups{"|a.tga|1|7|8", "a|.tga|1|1|2", "B|.tga|1|1|2", "s1_|.tga|1|1|2"}));
}

TEST_F(FileGroupScan, CaseOfNamesDoesNotBreakASequence) {
    makeFiles({"SHOT001.TGA", "shot002.tga", "Shot003.Tga"});
    ASSERT_EQ(scan().size(), 1u);
    EXPECT_EQ(scanner.groups[0], "SHOT|.TGA|3|1|3");
}

TEST_F(FileGroupScan, PatternChoosesFilesWithoutCaseAndDirectoriesAreSkipped) {
    makeFiles({"a001.tga", "a002.TGA", "a003.tif", "a004.tif"});
    std::filesystem::create_directory(directory.Path / "a003.tga");
    EXPECT_EQ(scan("*.tga"), Groups{"a|.tga|3|1|2"});
}

TEST_F(FileGroupScan, NumbersBeyondThirtyTwoBitsNeverCount) {
    makeFiles(
        {"a4294967294.tga", "a4294967295.tga", "a4294967296.tga", "b8589934591.tga", "b8589934592.tga"});
    EXPECT_EQ(scan(), Groups{"a|.tga|10|4294967294|4294967295"});
}

TEST_F(FileGroupScan, FalseFromTheCallbackEndsTheScan) {
    makeFiles({"a1.tga", "a2.tga", "b1.tga", "b2.tga"});
    scanner.limit = 1;
    EXPECT_EQ(scan(), Groups{"a|.tga|1|1|2"});
}

TEST_F(FileGroupScan, MissingDirectoryFailsWithAReason) {
    std::string reason;
    EXPECT_FALSE(scanner.ScanDirectory(directory.File("absent/*"), reason));
    EXPECT_FALSE(reason.empty());
    EXPECT_TRUE(scanner.groups.empty());
}

TEST(FileGroup, MatchesIgnoresCaseButNotTheDigitCount) {
    long number = 0;
    EXPECT_TRUE(padded.Matches("A002.TGA", number));
    EXPECT_EQ(number, 2);
    for (const char* name : {"a0002.tga", "a02.tga", "a004.tga", "a000.tga", "a002.tgax", "b002.tga", "a"}) {
        number = 0;
        EXPECT_FALSE(padded.Matches(name, number)) << name;
        EXPECT_EQ(number, -1) << name;
    }
}

TEST(FileGroup, UnpaddedGroupMatchesAnyWidthButNeedsADigit) {
    EFileGroup unpadded("", ".tga", 0, 9, 10);
    long number = 0;
    EXPECT_TRUE(unpadded.Matches("0009.tga", number));
    EXPECT_EQ(number, 9);
    EXPECT_TRUE(unpadded.Matches("10.TGA", number));
    EXPECT_EQ(number, 10);
    EXPECT_FALSE(unpadded.Matches(".tga", number));
}

TEST(FileGroup, FileNamesFollowThePattern) {
    EXPECT_EQ(padded.GetFileNamePattern(), "a%03ld.tga");
    EXPECT_EQ(padded.GetFileName(7), "a007.tga");
    EXPECT_EQ(padded.GetFileName(1234), "a1234.tga");
    EFileGroup unpadded("shot_", ".jpg", 0, 1, 100);
    EXPECT_EQ(unpadded.GetFileNamePattern(), "shot_%ld.jpg");
    EXPECT_EQ(unpadded.GetFileName(42), "shot_42.jpg");
    EFileGroup percent("50%_", "%d.tga", 2, 1, 2);
    EXPECT_EQ(percent.GetFileName(1), "50%_01%d.tga");
}

TEST(FileGroup, SavedKeysLoadBack) {
    qvrCTreeData section("File Group setup");
    EFileGroup("shot_", ".tga", 4, 10, 250).Save(section);
    EXPECT_EQ(*section.GetText("Min"), "10");
    EXPECT_EQ(*section.GetText("Max"), "250");
    EXPECT_EQ(*section.GetText("NumLen"), "4");
    EXPECT_EQ(*section.GetText("Head"), "shot_");
    EXPECT_EQ(*section.GetText("Tail"), ".tga");
    hReportRoot report("Loading");
    EFileGroup loaded;
    loaded.Load(section, report);
    EXPECT_EQ(describe(loaded), "shot_|.tga|4|10|250");
    EXPECT_EQ(report.GetCount(), 0);
}

TEST(FileGroup, LoadTurnsABackwardRangeRoundWithAWarning) {
    qvrCTreeData section("File Group setup");
    EFileGroup("a", ".tga", 3, 1, 3).Save(section);
    section.SetLong("Min", 20);
    hReportRoot report("Loading");
    hReport footage(&report, "Footage");
    EFileGroup loaded;
    loaded.Load(section, footage);
    EXPECT_EQ(describe(loaded), "a|.tga|3|3|20");
    ASSERT_EQ(report.GetCount(), 1);
    EXPECT_EQ(report.GetEntries()[0].Text, "Minimum file number was greater than maximum; fixed.");
    EXPECT_EQ(report.GetEntries()[0].Level, hReportWarning);
    EXPECT_EQ(report.GetEntries()[0].Path, "Loading/Footage");
}
