#include "../model/ScriptedUserInterface.h"
#include "ProbeSource.h"

#include "objects/hCropProperties.h"
#include "objects/imodCrop.h"

#include <gtest/gtest.h>

namespace {

struct CropPage {
    CropPage() {
        probe.Size = {720, 576};
        crop.LinkParent(&probe);
    }
    ScriptedUserInterface dialogs;
    ProbeSource probe{"Probe"};
    imodCrop crop{"Cropper"};
    hCropProperties page{crop, 0};
};

} // namespace

TEST(hCropProperties, EdgesInTheRelativeFormBecomeSizeAndCentre) {
    CropPage page;
    EXPECT_EQ(page.page.GetParentText(), " Probe: 720x576");
    page.crop.SetRelativeGUI(true);
    EXPECT_EQ(page.page.GetFieldLabels(),
              (std::array<std::string, 4>{"&Left:", "&Right:", "&Top:", "B&ottom:"}));
    hCropEntry entry = page.page.GetEntry();
    EXPECT_EQ(entry.Fields, (std::array<std::string, 4>{"0", "720", "0", "576"}));
    entry.Fields = {"10", "110", "20", "70"};
    entry.Color = " 1, 2,3";
    entry.Alpha = "128";
    ASSERT_TRUE(page.page.Apply(entry));
    EXPECT_EQ(page.crop.GetCropSize(0), (EImageSize{100, 50}));
    EXPECT_EQ(page.crop.GetCenter(0), (CPoint{300, 243}));
    EXPECT_EQ(page.crop.GetBackgroundColor(), 0x80010203u);
    EXPECT_EQ(page.page.GetEntry().Fields, (std::array<std::string, 4>{"10", "110", "20", "70"}));
    page.crop.SetRelativeGUI(false);
    EXPECT_EQ(page.page.GetFieldLabels()[3], "Center &Y:");
    EXPECT_EQ(page.page.GetEntry().Fields, (std::array<std::string, 4>{"100", "50", "300", "243"}));
    EXPECT_TRUE(page.dialogs.Messages.empty());
    page.crop.UnlinkParent(&page.probe);
    EXPECT_EQ(page.page.GetParentText(), " <no valid source>");
}

TEST(hCropProperties, BadEntriesComplainAndChangeNothing) {
    CropPage page;
    const hCropEntry good = page.page.GetEntry();
    const std::vector<std::pair<std::function<void(hCropEntry&)>, std::string>> cases = {
        {[](hCropEntry& e) { e.Fields[2] = "1x"; }, "Bad string: This is not a number...."},
        {[](hCropEntry& e) { e.Fields[1] = "3.5"; },
         "Both width and height should be greater or equal to 4 pixels !"},
        {[](hCropEntry& e) { e.Name.clear(); }, "The name cannot be empty !"},
        {[](hCropEntry& e) { e.Color = "1,2"; }, "Invalid color !"},
        {[](hCropEntry& e) { e.Color = "1,2,256"; }, "Invalid color !"},
        {[](hCropEntry& e) { e.Alpha = "-1"; }, "Invalid alpha value !"},
    };
    for (const auto& [spoil, complaint] : cases) {
        hCropEntry entry = good;
        entry.Fields[0] = "50";
        spoil(entry);
        page.dialogs.Messages.clear();
        EXPECT_FALSE(page.page.Apply(entry));
        EXPECT_EQ(page.dialogs.Messages, std::vector<std::string>{complaint});
        EXPECT_EQ(page.crop.GetCropSize(0).Width, 720);
    }
}
