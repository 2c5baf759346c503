#include "views/CProjectCutBuffer.h"

#include "ProjectViewFixture.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "objects/imodMerger.h"

namespace {

class CutBuffer : public ProjectViewFixture {
protected:
    std::string copyOf(std::vector<iElement*> elements) {
        project.ClearSelection();
        for (iElement* element : elements)
            element->SetSelected(true);
        std::string buffer;
        EXPECT_TRUE(view->Copy(buffer));
        return buffer;
    }

    // Pastes a damaged buffer and checks that nothing at all changed.
    std::vector<std::string> refusedPaste(const std::string& buffer) {
        const size_t elements = project.GetElementCount();
        hReportRoot report("Paste");
        EXPECT_FALSE(view->Paste(buffer, report));
        EXPECT_EQ(project.GetElementCount(), elements);
        EXPECT_FALSE(project.GetActionManager().CanUndo());
        std::vector<std::string> texts;
        for (const hReportEntry& entry : report.GetEntries())
            texts.push_back(entry.Text);
        return texts;
    }

    static std::string replaced(std::string text, const std::string& from, const std::string& to) {
        const size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        if (at != std::string::npos) text.replace(at, from.size(), to);
        return text;
    }
};

std::vector<std::string> blockNames(const qvrCTreeData& blocks) {
    std::vector<std::string> names;
    for (const auto& [key, block] : blocks.GetChildren())
        names.push_back(block->GetName());
    return names;
}

} // namespace

TEST_F(CutBuffer, APasteBringsNewElementsWithTheLinksAmongThemselvesOnly) {
    TestNode* outside = add("Outside", {100, 100});
    TestNode* top = add("Top", {200, 100});
    TestNode* bottom = add("Bottom", {200, 200});
    top->LinkParent(outside);
    bottom->LinkParent(top);
    const std::string buffer = copyOf({top, bottom});

    hReportRoot report("Paste");
    ASSERT_TRUE(view->Paste(buffer, report));
    EXPECT_EQ(report.GetCount(), 0);
    iElement* newTop = project.FindElement("Top.1");
    iElement* newBottom = project.FindElement("Bottom.1");
    ASSERT_TRUE(newTop && newBottom);
    EXPECT_EQ(newTop->GetParentCount(), 0) << "the link to an element left behind isn't copied";
    EXPECT_EQ(newBottom->GetFirstParent(), newTop);
    EXPECT_EQ(outside->GetChildCount(), 1);
    EXPECT_EQ(newBottom->GetPanePosition(), (CPoint{216, 216})) << "one grid step away";
    EXPECT_TRUE(newTop->IsSelected() && newBottom->IsSelected());
    EXPECT_FALSE(top->IsSelected());

    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_EQ(project.GetElementCount(), 3u);
    ASSERT_TRUE(project.GetActionManager().Redo());
    ASSERT_NE(project.FindElement("Bottom.1"), nullptr);
    EXPECT_EQ(project.FindElement("Bottom.1")->GetFirstParent(), project.FindElement("Top.1"));
}

TEST_F(CutBuffer, PastedNamesAreNumberedAsTheProjectNumbersTakenNames) {
    TestNode* layer = add("Layer.3", {100, 100});
    TestNode* plain = add("X", {100, 200});
    TestNode* numbered = add("X.1", {100, 300});
    numbered->LinkParent(plain);
    add("Layer.4", {300, 100});
    const std::string buffer = copyOf({layer, plain, numbered});

    iProject other;
    other.Adopt(std::make_unique<TestNode>("X"));
    hReportRoot report("Paste");
    std::unique_ptr<qvrCTreeData> blocks = CProjectCutBuffer::Read(buffer, other, {0, 0}, report);
    ASSERT_NE(blocks, nullptr);
    EXPECT_EQ(blockNames(*blocks), (std::vector<std::string>{"Layer.3", "X.1", "X.2"}))
        << "X.1 stays free for the element that bears it";
    const std::string* parent = blocks->Find("X.1")->Find("Parents")->GetText("Parent#001");
    ASSERT_NE(parent, nullptr);
    EXPECT_EQ(*parent, "Test/Node/X.2");

    blocks = CProjectCutBuffer::Read(buffer, project, {0, 0}, report);
    ASSERT_NE(blocks, nullptr);
    EXPECT_EQ(blockNames(*blocks), (std::vector<std::string>{"Layer.5", "X.2", "X.3"}));
}

TEST_F(CutBuffer, ADamagedBufferIsRefusedWholeAndLeavesTheProjectAsItWas) {
    TestNode* top = add("Top", {100, 100});
    TestNode* bottom = add("Bottom", {100, 200});
    bottom->LinkParent(top);
    const std::string buffer = copyOf({top, bottom});

    EXPECT_EQ(refusedPaste("nonsense"), std::vector<std::string>{"File contains no data."});
    EXPECT_EQ(refusedPaste(replaced(buffer, "V1.10", "V7.00")),
              std::vector<std::string>{"File contains no data."});
    EXPECT_EQ(refusedPaste(replaced(buffer, "Bottom = Test/Node", "Bottom = Test/Gone")),
              std::vector<std::string>{"Cannot add object \"Bottom\": Unknown type Test/Gone"});
    const std::vector<std::string> stranger =
        refusedPaste(replaced(buffer, "Test/Node/Top", "Test/Node/Elsewhere"));
    EXPECT_NE(std::find(stranger.begin(), stranger.end(), "Bad object descriptor \"Test/Node/Elsewhere\""),
              stranger.end());
    EXPECT_EQ(project.FindElement("Elsewhere"), nullptr);
    EXPECT_EQ(project.FindElement("Top.1"), nullptr);
}

TEST_F(CutBuffer, ALayersValuesFollowItsElementToItsNewName) {
    auto* background = add<ProbeSource>("Back", {100, 100});
    auto* layer = add<ProbeSource>("Lay", {100, 200});
    auto* composer = add<imodMerger>("Comp", {300, 150});
    composer->LinkParent(background);
    composer->LinkParent(layer);
    composer->GetLinkOf(layer)->GetXPosition().SetKey(0, 40.0, true, false, false);
    composer->GetLinkOf(layer)->GetXPosition().SetKey(10, 55.0, true, false, false);
    const std::string buffer = copyOf({background, layer, composer});

    hReportRoot report("Paste");
    ASSERT_TRUE(view->Paste(buffer, report));
    auto* copy = dynamic_cast<imodMerger*>(project.FindElement("Comp.1"));
    ASSERT_NE(copy, nullptr);
    ASSERT_NE(copy->GetFirstParent(), nullptr);
    EXPECT_EQ(copy->GetFirstParent()->GetName(), "Back.1") << "the background stays first";
    iActiveValue* x = FindValue(*copy, "Lay.1: X position");
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(x->GetKeyCount(), 2);
    EXPECT_DOUBLE_EQ(x->GetValue(10), 55.0);
}
