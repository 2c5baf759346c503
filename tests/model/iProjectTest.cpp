#include "TestElements.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrCTreeData.h"
#include "model/iElementData.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"

#include <gtest/gtest.h>

namespace {

// A node that takes any number of parents, as a composer does.
class MixNode : public TestNode {
public:
    using TestNode::TestNode;
    iFactoryProducer* GetProducer() const override { return &Producer; }
    int GetMaxParents() const override { return 2; }
    static iFactoryProducerOf<MixNode> Producer;
};
iFactoryProducerOf<MixNode> MixNode::Producer(TestNode::ClassType, "Mix");

class ProjectFileTest : public ::testing::Test {
protected:
    void SetUp() override { iFactoryProducerType::GlobalInit(); }
    void TearDown() override { iFactoryProducerType::GlobalRem(); }

    TestNode* add(iProject& project, const std::string& name) {
        return static_cast<TestNode*>(project.Adopt(std::make_unique<MixNode>(name)));
    }

    std::string saveText(iProject& project) {
        qvrCTreeData block("Project");
        hReportRoot report("Saving");
        project.Save(block, report);
        qvrCMemoryTextFile file;
        block.Save(file, "   ", nullptr);
        return file.GetText();
    }

    void loadText(iProject& project, const std::string& text, hReportRoot& report) {
        qvrCMemoryTextFile file(text);
        qvrCTreeData block;
        long lines = 0;
        block.Load(file, lines, false, nullptr);
        project.Clear();
        project.Load(block, report);
    }

    static std::vector<std::string> parentNames(const iElement& element) {
        std::vector<std::string> names;
        for (iElementLink* link = element.GetFirstParentLink(); link; link = link->GetNextOfChild())
            names.push_back(link->GetParent()->GetName());
        return names;
    }

    static std::vector<std::string> texts(const hReportRoot& report) {
        std::vector<std::string> all;
        for (const hReportEntry& entry : report.GetEntries())
            all.push_back(entry.Text);
        return all;
    }
};

} // namespace

TEST_F(ProjectFileTest, ElementsLinksGroupsAndSettingsSurviveASaveAndLoad) {
    iProject project;
    TestNode* b = add(project, "B");
    TestNode* a = add(project, "A");
    TestNode* mix = add(project, "Mix");
    ASSERT_EQ(mix->LinkParent(b), link_done);
    ASSERT_EQ(mix->LinkParent(a), link_done);
    mix->SetPanePosition({120, 80}, false);
    project.SetFrameLength(500, false);
    project.SetPaneGrid({8, 0}, false, false);
    iElementGroup* group = project.AddGrp("Sources", true);
    group->AddMember(a, false);
    group->AddMember(b, false);
    group->SetCollapsed(true);
    std::string text = saveText(project);

    iProject loaded;
    hReportRoot report("Loading");
    loadText(loaded, text, report);
    EXPECT_EQ(report.GetCount(), 0) << (report.GetCount() ? report.GetEntries()[0].Text : "");
    ASSERT_EQ(loaded.GetElementCount(), 3u);
    iElement* loadedMix = loaded.FindElement("mix");
    ASSERT_NE(loadedMix, nullptr);
    EXPECT_EQ(parentNames(*loadedMix), (std::vector<std::string>{"B", "A"}))
        << "the primary parent stays first";
    EXPECT_EQ(loadedMix->GetPanePosition(), (CPoint{120, 80}));
    EXPECT_EQ(loaded.GetFrameLength(), 500);
    EXPECT_EQ(loaded.GetPaneGrid(), (CPoint{8, 1}));
    EXPECT_FALSE(loaded.IsPaneGridEnabled());
    ASSERT_NE(loaded.FindGroup("SOURCES"), nullptr);
    EXPECT_EQ(loaded.FindGroup("Sources")->GetMemberCount(), 2);
    EXPECT_TRUE(loaded.FindGroup("Sources")->IsCollapsed());
    EXPECT_EQ(saveText(loaded), text) << "the same project always gives the same bytes";
}

TEST_F(ProjectFileTest, ParentOrderFollowsTheFileWhateverTheBlockOrder) {
    // "Mix" is read first and names its parents before their own blocks come.
    const std::string text = "Project =\n{\nElements =\n{\n"
                             "Aaa$_Mix = Test/Mix\n{\nParents =\n{\nParent#001 := Test/Mix/Zed\n"
                             "Parent#002 := Test/Mix/Bee\n}\n}\n"
                             "Bee = Test/Mix\n{\nChilds =\n{\nChild#001 := Test/Mix/Aaa$_Mix\n}\n}\n"
                             "Zed = Test/Mix\n{\nCommon =\n{\nPanePosition := 5,6\n}\n}\n}\n}\n";
    iProject project;
    hReportRoot report("Loading");
    loadText(project, text, report);
    iElement* mix = project.FindElement("Aaa Mix");
    ASSERT_NE(mix, nullptr);
    EXPECT_EQ(parentNames(*mix), (std::vector<std::string>{"Zed", "Bee"}));
    EXPECT_EQ(project.FindElement("Zed")->GetPanePosition(), (CPoint{5, 6}));
    for (const std::string& t : texts(report))
        EXPECT_EQ(t.find("defined twice"), std::string::npos) << t;
}

TEST_F(ProjectFileTest, BadBlocksAreReportedAndTheRestLoads) {
    const std::string text = "Project =\n{\nFrameLength := 0\nPaneSize := wide\nElements =\n{\n"
                             "Good = Test/Mix\n{\nParents =\n{\nParent#001 := Test/Mix/Good\n"
                             "Parent#002 := nonsense\n}\n}\n"
                             "Ghost = Nowhere/Thing\n{\n}\n"
                             "Junk := nothing\n"
                             "Other = Test/Mix\n{\nGrid := Test/Mix/Good\nChilds =\n{\n"
                             "Child#001 := Wrong/Kind/Good\n}\n}\n}\n"
                             "Groups =\n{\nG1 =\n{\nMembers =\n{\nMissing := Test\n}\n}\n}\n}\n";
    iProject project;
    hReportRoot report("Loading");
    loadText(project, text, report);
    EXPECT_NE(project.FindElement("Good"), nullptr);
    EXPECT_NE(project.FindElement("Other"), nullptr);
    EXPECT_EQ(project.FindElement("Ghost"), nullptr);
    EXPECT_EQ(project.GetFrameLength(), iProject::DefaultFrameLength);
    std::vector<std::string> all = texts(report);
    auto has = [&](const std::string& wanted) {
        return std::find(all.begin(), all.end(), wanted) != all.end();
    };
    EXPECT_TRUE(has("Length of project (in frames) is invalid"));
    EXPECT_TRUE(has("Pane size is invalid"));
    EXPECT_TRUE(has("Cannot add object \"Ghost\": Unknown type Nowhere/Thing"));
    EXPECT_TRUE(has("Can't add object: Invalid class identifier (or empty name) - seems to be garbage"));
    EXPECT_TRUE(has("Bad object descriptor \"nonsense\""));
    EXPECT_TRUE(has("Linking to parent \"Good\" was not executed as expected"));
    EXPECT_TRUE(has("This object does not accept grids"));
    EXPECT_TRUE(has("Failed to create \"Good\": Object with this name already exists, but has type Test/Mix, "
                    "not Wrong/Kind as expected"));
    EXPECT_TRUE(has("There is no object called \"Missing\" (the object is been removed from the group)"));
    for (const hReportEntry& entry : report.GetEntries())
        if (entry.Text.find("Linking to parent") == 0) {
            EXPECT_EQ(entry.Path, "Loading/Object Good (Mix)");
        }
}

TEST_F(ProjectFileTest, ClearDeletesEverythingAndMarksOnlyTheStandardProject) {
    iProject temporary;
    add(temporary, "One");
    temporary.AddGrp("G", true);
    temporary.Clear();
    EXPECT_EQ(temporary.GetElementCount(), 0u);
    EXPECT_TRUE(temporary.GetGroups().empty());
    EXPECT_FALSE(temporary.IsStandard());
}

TEST_F(ProjectFileTest, AdoptedElementsWithTakenNamesGetNumbered) {
    iProject project;
    add(project, "Node");
    TestNode* second = add(project, "node");
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second->GetName(), "node");
    EXPECT_EQ(project.GetElementCount(), 2u);
    EXPECT_EQ(project.AddGrp("g", true) != nullptr, true);
    EXPECT_EQ(project.AddGrp("G", true), nullptr);
}
