#include "../model/ScriptedUserInterface.h"
#include "ProbeSource.h"

#include "model/TestProject.h"
#include "objects/hMergerProperties.h"
#include "objects/imodMerger.h"

#include <gtest/gtest.h>

namespace {

// A composer over "Base" with the layers "Low" and "High", edited at frame 7.
class MergerPage : public ::testing::Test {
protected:
    void SetUp() override {
        for (iElement* element : std::initializer_list<iElement*>{&merger, &base, &low, &high}) {
            ASSERT_TRUE(element->ProjectLink(&project, false));
            if (element != &merger) merger.LinkParent(element);
        }
    }
    std::vector<std::string> order() const {
        std::vector<std::string> names;
        for (imodMergerLink* link = merger.GetFirstLink(); link; link = link->GetNextLink())
            names.push_back(link->GetParent()->GetName());
        return names;
    }

    ScriptedUserInterface user;
    TestProject project;
    ProbeSource base{"Base"};
    ProbeSource low{"Low"};
    ProbeSource high{"High"};
    imodMerger merger{"Merger"};
    hMergerProperties page{merger, 7};
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(MergerPage, RowsShowTheLayersAtThePagesFrameAndFixedTextsForTheBackground) {
    EXPECT_EQ(hMergerProperties::GetColumnTitles(), (std::array<std::string, 4>{"Source", "X", "Y", "Op."}));
    merger.GetLinkOf(&high)->GetOpacity().SetKey(20, 0.0, true, false, false);
    const std::vector<hMergerRow> rows = page.GetRows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].Source, "Base");
    EXPECT_EQ((Names{rows[0].X, rows[0].Y, rows[0].Opacity}), (Names{"--", "--", "<background>"}));
    EXPECT_EQ((Names{rows[1].Source, rows[1].X, rows[1].Y, rows[1].Opacity}),
              (Names{"Low", "0.00", "0.00", "100.00"}));
    EXPECT_EQ(rows[2].Opacity, "65.00*");
}

TEST_F(MergerPage, BadEntriesAndImpossibleMovesComplainAndChangeNothing) {
    EXPECT_FALSE(page.CommitName(""));
    EXPECT_FALSE(page.CommitName("low"));
    EXPECT_FALSE(page.CommitOpacity(1, "100.5"));
    EXPECT_FALSE(page.CommitOpacity(1, "half"));
    EXPECT_FALSE(page.CommitPosition(2, "3;4"));
    EXPECT_FALSE(page.CommitPosition(2, "3,4.5"));
    EXPECT_FALSE(page.MoveDown(0));
    EXPECT_FALSE(page.MakeBackground(0));
    EXPECT_FALSE(page.MoveUp(2));
    EXPECT_EQ(user.Messages,
              (Names{"The name of the merger cannot be empty !",
                     "There is already an object with that name !", "Invalid opacity !", "Invalid opacity !",
                     "Invalid position !", "Invalid position !", "\"Base\" is already the background !",
                     "\"Base\" is already the background !", "\"High\" is already the top level source !"}));
    EXPECT_FALSE(page.CommitOpacity(0, "50")) << "the background takes no entries";
    EXPECT_FALSE(page.MoveUp(3));
    EXPECT_EQ(user.Messages.size(), 9u);
    EXPECT_EQ(order(), (Names{"Base", "Low", "High"}));
    EXPECT_EQ(page.GetRows()[1].Opacity, "100.00");
}

TEST_F(MergerPage, EntriesAreKeyedAtThePagesFrame) {
    EXPECT_TRUE(page.CommitName("Mix"));
    EXPECT_TRUE(page.CommitOpacity(1, " 42.5"));
    EXPECT_TRUE(page.CommitPosition(2, "-10, 20"));
    EXPECT_TRUE(user.Messages.empty());
    imodMergerLink& lowLink = *merger.GetLinkOf(&low);
    EXPECT_EQ(lowLink.GetOpacity().GetKey(1)->frame, 7);
    EXPECT_EQ(lowLink.GetOpacity().GetValue(7), 42.5);
    EXPECT_EQ(page.GetRows()[1].Opacity, "42.50*");
    EXPECT_EQ(page.GetRows()[2].X, "-10.00*");
    EXPECT_EQ(merger.GetLinkOf(&high)->GetYPosition().GetValue(7), 20.0);
    EXPECT_EQ(project.FindElement("mix"), &merger);
}

TEST_F(MergerPage, LayersMoveByLeavingAndReenteringTheChain) {
    merger.GetLinkOf(&low)->GetXPosition().SetSingleKey(0, 33.0, false);
    EXPECT_TRUE(page.MoveUp(1));
    EXPECT_EQ(order(), (Names{"Base", "High", "Low"}));
    EXPECT_TRUE(page.MoveDown(2));
    EXPECT_TRUE(page.MoveDown(1));
    EXPECT_EQ(order(), (Names{"Low", "Base", "High"}));
    EXPECT_EQ(merger.GetFirstParent(), &low);
    EXPECT_EQ(FindValue(merger, "Low: X position"), nullptr) << "the background's values leave the composer";
    EXPECT_NE(FindValue(merger, "Base: X position"), nullptr);
    EXPECT_TRUE(page.MoveUp(0));
    EXPECT_EQ(order(), (Names{"Base", "Low", "High"}));
    ASSERT_NE(FindValue(merger, "Low: X position"), nullptr);
    EXPECT_EQ(FindValue(merger, "Low: X position")->GetValue(0), 33.0) << "the old keys come back";
    EXPECT_TRUE(page.MakeBackground(2));
    EXPECT_EQ(order(), (Names{"High", "Base", "Low"}));
    EXPECT_EQ(page.GetRows()[0].Opacity, "<background>");
    EXPECT_TRUE(user.Messages.empty());
}
