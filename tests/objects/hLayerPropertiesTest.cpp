#include "objects/hLayerProperties.h"
#include "foundation/EUserInterface.h"
#include "model/TestProject.h"
#include "objects/isrcLayer.h"

#include <gtest/gtest.h>

namespace {

// Remembers the complaints instead of showing them.
class ComplaintLog : public EUserInterface {
public:
    ComplaintLog() { EUserInterface::Set(this); }
    ~ComplaintLog() override { EUserInterface::Set(nullptr); }
    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Texts.push_back(request.Text);
        return {};
    }
    std::vector<std::string> Texts;
};

struct LayerPage : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(layer.ProjectLink(&project, false));
        ASSERT_TRUE(other.ProjectLink(&project, false));
    }
    ComplaintLog complaints;
    TestProject project;
    isrcLayer layer{"Solid.1"};
    isrcLayer other{"Solid.2"};
    hLayerProperties page{layer, 12};
};

} // namespace

TEST_F(LayerPage, BadEntriesAreRefusedWithTheirComplaintAndChangeNothing) {
    EXPECT_FALSE(page.CommitName(""));
    EXPECT_FALSE(page.CommitName("solid.2"));
    EXPECT_FALSE(page.CommitWidth("9"));
    EXPECT_FALSE(page.CommitHeight("35001"));
    EXPECT_FALSE(page.CommitColor("1,2"));
    EXPECT_FALSE(page.CommitColor("1,x,3"));
    EXPECT_FALSE(page.CommitAlpha("256"));
    EXPECT_EQ(
        complaints.Texts,
        (std::vector<std::string>{"The name cannot be empty !", "There is already an object with that name !",
                                  "Invalid width !", "Invalid height !", "Invalid color !", "Invalid color !",
                                  "Invalid alpha value !"}));
    EXPECT_EQ(layer.GetName(), "Solid.1");
    EXPECT_EQ(layer.GetSize(0), (EImageSize{720, 576}));
    EXPECT_EQ(page.GetColorText(), "255,255,255");
}

TEST_F(LayerPage, GoodEntriesSetTheSizeAndKeysAtTheViewsFrame) {
    EXPECT_TRUE(page.CommitName("Background"));
    EXPECT_TRUE(page.CommitWidth(" 10"));
    EXPECT_TRUE(page.CommitHeight("35000"));
    EXPECT_TRUE(page.CommitColor("10, 20 ,30"));
    EXPECT_TRUE(page.CommitAlpha("0"));
    EXPECT_TRUE(complaints.Texts.empty());
    EXPECT_EQ(project.FindElement("background"), &layer);
    EXPECT_EQ(page.GetWidthText(), "10");
    EXPECT_EQ(page.GetHeightText(), "35000");
    EXPECT_EQ(page.GetColorText(), "10,20,30");
    EXPECT_EQ(page.GetAlphaText(), "0");
    EXPECT_GT(project.ChangeMarks, 0);
}
