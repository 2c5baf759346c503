#include "foundation/EPrefsEImage.h"
#include "foundation/SectionLockHolder.h"
#include "foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace {

class ImagingPrefsTest : public ::testing::Test {
protected:
    void SetUp() override { EPrefsEImage::Get().Reset(); }
    void TearDown() override { EPrefsEImage::Get().Reset(); }
};

} // namespace

TEST_F(ImagingPrefsTest, SavedKeysLoadBackUnderTheirNames) {
    EPrefsEImage::SetMemoryControl(false, 300, false);
    EPrefsEImage::SetCaching(true, false);
    EPrefsEImage::SetCacheDirectory("/scratch/pages");
    qvrCTreeData block("Imaging");
    hReportRoot root("Test");
    EPrefsEImage::Get().Save(block, root);
    long reserveText = 0;
    EXPECT_TRUE(block.GetLong("MemCtrl/MinFreeMem(MB)", reserveText));
    EXPECT_EQ(reserveText, 300);
    ASSERT_NE(block.GetText("Cache/Directory"), nullptr);

    EPrefsEImage::Get().Reset();
    EPrefsEImage::Get().Load(block, root);
    uint32_t reserve = 0;
    bool physicalOnly = true;
    EXPECT_FALSE(EPrefsEImage::cacheOn(reserve, physicalOnly));
    EXPECT_EQ(reserve, 300u);
    EXPECT_FALSE(physicalOnly);
    EXPECT_FALSE(EPrefsEImage::cacheVirtual()) << "disk use needs both switches";
    EXPECT_EQ(EPrefsEImage::GetCacheDirectory(), "/scratch/pages");
    EXPECT_EQ(root.GetCount(), 0);
}

TEST_F(ImagingPrefsTest, AValueThatFailsToParseKeepsTheDefaultAndIsReported) {
    qvrCTreeData block("Imaging");
    block.SetText("MemCtrl/MinFreeMem(MB)", "-1");
    block.SetText("CacheData", "perhaps");
    block.SetBool("MemCtrl/PhysicalOnly", false);
    hReportRoot root("Test");
    EPrefsEImage::Get().Load(block, root);
    uint32_t reserve = 0;
    bool physicalOnly = true;
    EXPECT_TRUE(EPrefsEImage::cacheOn(reserve, physicalOnly));
    EXPECT_EQ(reserve, 4u);
    EXPECT_FALSE(physicalOnly);
    EXPECT_TRUE(EPrefsEImage::cacheVirtual());
    EXPECT_EQ(root.GetCount(), 2);
}

TEST_F(ImagingPrefsTest, ALockedSectionGivesDefaultsAndTellsTheDebugChannel) {
    EPrefsEImage::SetMemoryControl(false, 100, false);
    EPrefsEImage::SetCaching(false, false);
    TraceCapture trace;
    {
        SectionLockHolder holder(EPrefsEImage::Get());
        auto memory = std::async(std::launch::async, [] {
            uint32_t reserve = 0;
            bool physicalOnly = false;
            bool on = EPrefsEImage::cacheOn(reserve, physicalOnly);
            return on && physicalOnly && reserve == 4;
        });
        auto disk = std::async(std::launch::async, [] { return EPrefsEImage::cacheVirtual(); });
        EXPECT_TRUE(memory.get());
        EXPECT_TRUE(disk.get());
    }
    std::vector<std::string> lines = trace.Get();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "*** WARNING[EPrefsEImage::cacheOn()]: Locked; returning default directory.\n",
                         "*** WARNING[EPrefsEImage::cacheVirtual()]: Locked; returning true.\n"}));
}
