#include "views/CSplineBar.h"

#include "SplineTestSupport.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/TraceCapture.h"
#include "foundation/hReport.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrCTreeData.h"
#include "model/iFactory.h"
#include "objects/isrcLayer.h"
#include "views/CSplineBarSettings.h"

#include <gtest/gtest.h>

namespace {

// Names a collection with the scripted name.
class NamingFrontEnd : public CSplineBarTree::FrontEnd {
public:
    std::optional<std::string> AskName(const CSplineBarNameRequest&) override { return Name; }
    std::string Name;
};

class SplineBar : public ::testing::Test {
protected:
    SplineBar() {
        SplineTestElement::Make(project, "Crop", "Crop");
        SplineTestElement::Make(project, "Layer", "Layer", {"Red", "Green", "Blue"});
        bar.GetTree().SetFrontEnd(&naming);
    }
    ~SplineBar() override { CSplineBarSettings::Get().Attach(nullptr); }

    CSplineBarTree& tree() { return bar.GetTree(); }
    void newCollection(const std::string& name) {
        naming.Name = name;
        ASSERT_TRUE(tree().NewCollection());
    }
    void check(const std::string& element, size_t value) {
        tree().FindEntry(project.FindElement(element))->GetValues().at(value)->SetCheck(true);
    }
    int checkOf(CSplineBar& other, const std::string& element, size_t value) {
        return other.GetTree().FindEntry(project.FindElement(element))->GetValues().at(value)->GetCheck();
    }

    RecordingUserInterface ui;
    iProject project;
    CSplineBar bar{project};
    NamingFrontEnd naming;
};

} // namespace

TEST_F(SplineBar, BlockKeepsCollectionsChecksAndTheShownOne) {
    bar.LeftSize = 321;
    check("Layer", 2);
    newCollection("Colours");
    tree().OnDrop({true, {project.FindElement("Layer")}, {}});
    check("Layer", 1);
    tree().FindEntry(project.FindElement("Layer"))->Expanded = true;
    newCollection("Nothing");
    tree().SetSortMode(CSplineBarTree::SortByType | CSplineBarTree::SortReversed);
    tree().ShowCollection("Colours");

    qvrCTreeData block;
    bar.Save(block);
    const qvrCTreeData* saved = block.Find("Groups")->Find("Collections")->Find("Co#001");
    EXPECT_EQ(saved->Value, "Colours");
    EXPECT_EQ(*saved->Find("Entries")->Find("Layer")->GetText("Green"), "1");

    CSplineBar reopened(project);
    hReportRoot report("load");
    reopened.Load(block, report);
    EXPECT_EQ(report.GetCount(), 0);
    EXPECT_EQ(reopened.LeftSize, 321);
    EXPECT_EQ(reopened.GetTree().GetSortMode(), 18u);
    ASSERT_EQ(reopened.GetTree().GetCollections().size(), 2u);
    EXPECT_EQ(reopened.GetTree().GetCollections()[1]->Name, "Nothing");
    EXPECT_EQ(reopened.GetTree().GetCurrent().Name, "Colours");
    ASSERT_EQ(reopened.GetTree().GetEntries().size(), 1u);
    EXPECT_TRUE(reopened.GetTree().GetEntries()[0]->Expanded);
    EXPECT_EQ(checkOf(reopened, "Layer", 1), CSplineBarTreeEntry::Checked);
    EXPECT_EQ(checkOf(reopened, "Layer", 2), CSplineBarTreeEntry::Unchecked);

    // The default collection is never saved: its checks start afresh.
    reopened.GetTree().ShowCollection("<All>");
    EXPECT_EQ(checkOf(reopened, "Layer", 2), CSplineBarTreeEntry::Unchecked);
}

TEST_F(SplineBar, BadBlocksEndWithTheirReportsAndAConsistentTree) {
    newCollection("Stale");
    qvrCTreeData block;
    block.SetText("LeftSize", "wide");
    qvrCTreeData* groups = block.CreateChild("Groups");
    groups->SetText("SortMode", "by name");
    groups->SetText("SelGrp", "Missing");
    qvrCTreeData* list = groups->CreateChild("Collections");
    list->SetText("Co#001", "Mine");
    list->SetText("Co#002", "MINE");
    list->SetText("Co#003", "");
    list->SetText("Co#004", "<All>");
    qvrCTreeData* entries = list->Find("Co#001")->CreateChild("Entries");
    entries->SetText("Layer", "open");
    entries->Find("Layer")->SetText("Red", "7");
    entries->Find("Layer")->SetText("Green", "1");
    entries->Find("Layer")->SetText("Alpha", "1");
    entries->SetText("Gone", "Yes");

    hReportRoot report("load");
    TraceCapture trace;
    bar.Load(block, report);
    std::vector<std::string> texts;
    for (const hReportEntry& entry : report.GetEntries())
        texts.push_back(entry.Text);
    EXPECT_EQ(texts,
              (std::vector<std::string>{
                  "Invalid value \"wide\" for \"LeftSize\" (the present value stays)",
                  "Invalid value \"by name\" for \"SortMode\" (the present value stays)",
                  "Invalid value \"open\" for \"Layer\" (the present value stays)",
                  "A second collection named \"MINE\" has been ignored.",
                  "A second collection named \"<All>\" has been ignored.",
                  "The collection \"Missing\" does not exist; the default collection is shown instead.",
              }));
    EXPECT_EQ(report.GetEntries()[2].Path, "load/Object groups/Collection Mine");
    EXPECT_EQ(bar.LeftSize, CSplineBar::DefaultLeftSize);
    EXPECT_EQ(tree().GetSortMode(), 1u);
    ASSERT_EQ(tree().GetCollections().size(), 1u);
    EXPECT_EQ(tree().GetCurrent().Name, "<All>");

    ASSERT_TRUE(tree().ShowCollection("mine"));
    EXPECT_TRUE(trace.Contains("*** ERROR[CSplineBarCollection::ElementInfo::PopulateTree()]: An element of "
                               "name \"Gone\" no longer exists !\n"));
    ASSERT_EQ(tree().GetEntries().size(), 1u);
    EXPECT_FALSE(tree().GetEntries()[0]->Expanded);
    EXPECT_EQ(checkOf(bar, "Layer", 0), CSplineBarTreeEntry::Unchecked);
    EXPECT_EQ(checkOf(bar, "Layer", 1), CSplineBarTreeEntry::Checked);
}

TEST_F(SplineBar, SettingsReadBeforeTheBarReachItWhenItAttaches) {
    CSplineBarSettings& settings = CSplineBarSettings::Get();
    qvrCTreeData defaults;
    hReportRoot report("save");
    settings.Save(defaults, report);
    ASSERT_NE(defaults.Find("Coords"), nullptr);
    EXPECT_EQ(*defaults.Find("Coords")->GetText("nMax"), "10000");

    qvrCTreeData block;
    bar.LeftSize = 77;
    newCollection("Early");
    bar.Save(block);
    settings.Load(block, report);
    qvrCTreeData kept;
    settings.Save(kept, report);
    EXPECT_TRUE(kept.IsEqual(block));

    CSplineBar late(project);
    settings.Attach(&late);
    EXPECT_EQ(late.LeftSize, 77);
    EXPECT_EQ(late.GetTree().GetCurrent().Name, "Early");
    settings.Reset();
    EXPECT_TRUE(late.GetTree().GetCollections().empty());
}

TEST_F(SplineBar, ProjectEvents) {
    project.SetFrameLength(500, true);
    EXPECT_EQ(bar.GetView().World.right, 499);
    TraceCapture trace;
    project.Notify(42);
    EXPECT_TRUE(trace.Contains("*** WARNING[CSplineBar::HandleOnEvent()]: Unknown project event !\n"));
}

TEST(SplineBarFile, CollectionsTravelInTheProjectFile) {
    ScratchDirectory directory("splinebar");
    const std::string path = (directory.Path / "project.tsp").string();
    iFactoryProducerType::GlobalInit();
    iProject& project = iProject::GetStandard();
    RecordingUserInterface ui;
    project.Adopt(std::make_unique<isrcLayer>("Keeper"));
    {
        CSplineBar bar(project);
        CSplineBarSettings::Get().Attach(&bar);
        NamingFrontEnd naming;
        naming.Name = "Saved";
        bar.GetTree().SetFrontEnd(&naming);
        ASSERT_TRUE(bar.GetTree().CopyCollection());
        bar.GetTree().GetEntries()[0]->GetValues()[1]->SetCheck(true);
        iDataBase file;
        hReportRoot report("save");
        ASSERT_TRUE(file.Save(path, DBMaskProject, 0, &report));

        bar.GetTree().Reset();
        project.Clear();
        iDataBase reread;
        ASSERT_TRUE(reread.Load(path, DBMaskProject, 0, &report));
        EXPECT_EQ(bar.GetTree().GetCurrent().Name, "Saved");
        ASSERT_EQ(bar.GetTree().GetEntries().size(), 1u);
        EXPECT_EQ(bar.GetTree().GetEntries()[0]->GetLabel(), "Keeper (Solid)");
        EXPECT_EQ(bar.GetTree().GetEntries()[0]->GetValues()[1]->GetCheck(), CSplineBarTreeEntry::Checked);
    }
    EXPECT_EQ(CSplineBarSettings::Get().GetBar(), nullptr);
    project.Clear();
    iFactoryProducerType::GlobalRem();
}
