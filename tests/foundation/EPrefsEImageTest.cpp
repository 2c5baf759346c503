#include "foundation/EPrefsEImage.h"

#include <gtest/gtest.h>

TEST(ImagingPrefs, SavedKeysLoadBackAndDiskUseNeedsBothSwitches) {
    EPrefsEImage::SetMemoryControl(false, 300, false);
    EPrefsEImage::SetCaching(true, false);
    EPrefsEImage::SetCacheDirectory("/scratch/pages");
    qvrCTreeData block("Imaging");
    hReportRoot root("Test");
    EPrefsEImage::Get().Save(block, root);
    long reserveText = 0;
    EXPECT_TRUE(block.GetLong("MemCtrl/MinFreeMem(MB)", reserveText));
    EXPECT_EQ(reserveText, 300);
    EXPECT_NE(block.GetText("Cache/Directory"), nullptr);

    EPrefsEImage::Get().Reset();
    EPrefsEImage::Get().Load(block, root);
    uint32_t reserve = 0;
    bool physicalOnly = true;
    EXPECT_FALSE(EPrefsEImage::cacheOn(reserve, physicalOnly));
    EXPECT_EQ(reserve, 300u);
    EXPECT_FALSE(physicalOnly);
    EXPECT_FALSE(EPrefsEImage::cacheVirtual());
    EXPECT_EQ(EPrefsEImage::GetCacheDirectory(), "/scratch/pages");
    EXPECT_EQ(root.GetCount(), 0);
    EPrefsEImage::Get().Reset();
}
