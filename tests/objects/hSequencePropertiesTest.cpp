#include "objects/hSequenceProperties.h"

#include "foundation/ScratchDirectory.h"
#include "imaging/EImageData.h"
#include "imaging/EImageStorage.h"
#include "model/ScriptedUserInterface.h"
#include "model/iProject.h"
#include "objects/imodMerger.h"
#include "objects/imodScale.h"
#include "objects/isrcSequence.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

class SequencePage : public ::testing::Test {
protected:
    void SetUp() override {
        sequence.SetFile(EFileGroupSetup("/shots", EFileGroup("shot_", ".qts", 4, 10, 19)), false);
    }

    isrcSequence sequence{"Footage.1"};
    hSequenceProperties page{sequence};
    ScriptedUserInterface user;
};

} // namespace

TEST_F(SequencePage, RangeNeedsACommaAndOutsideTheAvailableNumbersIsIgnoredSilently) {
    EXPECT_TRUE(page.CommitRange(" 12 , 14"));
    EXPECT_EQ(page.GetFilesText(), "shot_0012.qts - shot_0014.qts");
    EXPECT_FALSE(page.CommitRange("12;14"));
    EXPECT_EQ(user.Messages, (std::vector<std::string>{
                                 "Invalid range; first and last image must be divided by a comma..."}));
    EXPECT_FALSE(page.CommitRange("5,14"));
    EXPECT_EQ(user.Messages.size(), 1u);
    page.UseWholeRange();
    EXPECT_EQ(sequence.GetImageCount(), 10);
}

TEST_F(SequencePage, FramesAreNumbersAndTheEndFrameMovesTheStart) {
    EXPECT_FALSE(page.CommitStartFrame("soon"));
    EXPECT_EQ(user.Messages, (std::vector<std::string>{"Invalid value; you must enter a number."}));
    EXPECT_TRUE(page.CommitStartFrame("-3"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 0);
    ASSERT_TRUE(page.CommitRange("12,14"));
    ASSERT_TRUE(page.CommitFramesPerImage("2"));
    EXPECT_TRUE(page.CommitEndFrame("20"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 16);
    EXPECT_TRUE(page.CommitEndFrame("1"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 0);
}

TEST_F(SequencePage, TextsTellFilesSizeAndKindOfDuration) {
    EXPECT_EQ(page.GetSizeText(), "Size: unknown");
    EXPECT_EQ(page.GetFramesLabel(), "F&rames/Image:");
    EFileGroupSetup still = EFileGroupSetup::SingleFile("/shots", "still.qts");
    still.ImageSize = {720, 576};
    sequence.SetFile(still, false);
    EXPECT_EQ(page.GetSizeText(), "Size: 720x576");
    EXPECT_EQ(page.GetFramesLabel(), "Du&ration:");
    isrcSequence empty("Empty");
    EXPECT_EQ(hSequenceProperties(empty).GetFilesText(), "No source files");
}

namespace {

// Footage of shot_0010.qts and shot_0011.qts in a project, the background of a
// composer and the parent of a scaler. The folder also holds take_1.qts to
// take_3.qts and still.qts.
class ChangeFootage : public ::testing::Test {
protected:
    void SetUp() override {
        useProxyDirectory(home.File("proxies"));
        fs::create_directories(shots);
        for (const char* name :
             {"shot_0010.qts", "shot_0011.qts", "take_1.qts", "take_2.qts", "take_3.qts", "still.qts"}) {
            EImageFileResult saved;
            ASSERT_TRUE(EImageFileFormat::Save(*EImageData::New({8, 4}, EImageMemory::NoFreeing),
                                               shots + "/" + name, saved));
        }
        footage = adopt<isrcSequence>("shot_####.qts");
        footage->SetFile(EFileGroupSetup(shots, EFileGroup("shot_", ".qts", 4, 10, 11)), false);
        footage->SetPanePosition({100, 50}, false);
        merger = adopt<imodMerger>("Merger");
        scale = adopt<imodScale>("Scaler");
        merger->LinkParent(footage);
        scale->LinkParent(footage);
    }
    void TearDown() override { EImageStorage::Get().EmptyInfoCache(); }

    static void useProxyDirectory(const std::string& directory) {
        EProxySettings settings;
        settings.proxyDirectory = directory;
        EImageStorage::Get().SetSettings(settings);
        EImageStorage::Get().EmptyInfoCache();
    }
    template <class Element> Element* adopt(const std::string& name) {
        return static_cast<Element*>(project.Adopt(std::make_unique<Element>(name)));
    }
    hSequenceProperties page() { return hSequenceProperties(*footage); }
    EFileGroupSetup takes() const { return EFileGroupSetup(shots, EFileGroup("take_", ".qts", 0, 1, 3)); }
    EFileGroupSetup file(const std::string& name) const { return EFileGroupSetup::SingleFile(shots, name); }

    ScratchDirectory home{"change"};
    std::string shots = home.File("shots");
    ScriptedUserInterface user;
    iProject project;
    isrcSequence* footage = nullptr;
    imodMerger* merger = nullptr;
    imodScale* scale = nullptr;
};

} // namespace

TEST_F(ChangeFootage, ABadSelectionOrAFileThatFailsChangesNothing) {
    EXPECT_FALSE(page().ChangeFootage({}));
    EXPECT_FALSE(page().ChangeFootage({takes(), EFileGroupSetup()}));
    EXPECT_FALSE(page().ChangeFootage({takes(), file("absent.qts")}));
    const std::string blocker = home.File("blocker");
    std::ofstream(blocker) << "a file where the proxy directory should be";
    useProxyDirectory(blocker + "/proxies");
    EXPECT_FALSE(page().ChangeFootage({file("still.qts")}));
    ASSERT_EQ(user.Messages.size(), 4u);
    EXPECT_EQ(user.Messages[0], "Bad file selection !");
    EXPECT_EQ(user.Messages[1], "Bad file selection !");
    const std::string absent = "Unable to receive file information\nfor " + shots + "/absent.qts:\n";
    EXPECT_EQ(user.Messages[2].substr(0, absent.size()), absent);
    const std::string proxy = "Failed to generate proxy for " + shots + "/still.qts:\n";
    EXPECT_EQ(user.Messages[3].substr(0, proxy.size()), proxy);
    EXPECT_EQ(user.Messages[3].substr(user.Messages[3].size() - 2), " !");
    EXPECT_EQ(footage->GetDisplayFileName(), "shot_####.qts");
    EXPECT_EQ(project.GetElements().size(), 3u);

    isrcSequence alone("Alone");
    EXPECT_FALSE(hSequenceProperties(alone).ChangeFootage({takes(), file("still.qts")}))
        << "copies need a project";
    EXPECT_EQ(user.Messages.back(), "Bad file selection !");
}

TEST_F(ChangeFootage, FurtherGroupsBecomeCopiesBesideTheFootageThatFeedWhatHasRoom) {
    ASSERT_TRUE(page().ChangeFootage({takes(), file("still.qts"), file("take_2.qts")}));
    EXPECT_TRUE(user.Messages.empty());
    EXPECT_EQ(footage->GetName(), "take_#.qts") << "a name made from the files follows them";
    EXPECT_EQ(footage->ImageSize, (CSize{8, 4}));
    EXPECT_FALSE(fs::is_empty(home.File("proxies"))) << "the first file's proxy is made";

    auto* still = dynamic_cast<isrcSequence*>(project.FindElement("still.qts"));
    auto* second = dynamic_cast<isrcSequence*>(project.FindElement("take_2.qts"));
    ASSERT_TRUE(still && second);
    EXPECT_FALSE(still->IsSequence());
    EXPECT_EQ(still->GetPanePosition(), (CPoint{116, 66}));
    EXPECT_EQ(second->GetPanePosition(), (CPoint{132, 82}));
    for (const iElement* layer :
         {static_cast<const iElement*>(still), static_cast<const iElement*>(second)}) {
        EXPECT_NE(merger->GetLinkOf(layer), nullptr);
        EXPECT_FALSE(scale->HasParent(layer));
    }
    EXPECT_EQ(merger->GetFirstParent(), footage);
    EXPECT_EQ(scale->GetFirstParent(), footage) << "a child with room for one parent keeps its own";
}
