#include "TestElements.h"

#include "model/Action.h"
#include "model/iProject.h"
#include "objects/isrcLayer.h"

#include <gtest/gtest.h>

namespace {

// An action whose steps answer as told and count their calls.
class ScriptedAction : public qvrCAction {
public:
    explicit ScriptedAction(std::string title, int* alive = nullptr) : Title(std::move(title)), Alive(alive) {
        if (Alive) ++*Alive;
    }
    ~ScriptedAction() override {
        if (Alive) --*Alive;
    }
    std::string GetTitle() const override { return Title; }
    bool Do() override { return DoAnswer; }
    bool Undo() override { return UndoAnswer; }
    bool Redo() override { return true; }

    std::string Title;
    int* Alive;
    bool DoAnswer = true;
    bool UndoAnswer = true;
};

} // namespace

TEST(ActionManager, ANewActionClearsRedoButARedoKeepsIt) {
    qvrCActionManager manager;
    manager.Do(new ScriptedAction("one"));
    manager.Do(new ScriptedAction("two"));
    manager.Do(new ScriptedAction("three"));
    ASSERT_TRUE(manager.Undo());
    ASSERT_TRUE(manager.Undo());
    EXPECT_EQ(manager.GetRedoCount(), 2);
    ASSERT_TRUE(manager.Redo());
    EXPECT_EQ(manager.GetRedoCount(), 1) << "a redo leaves the rest of the redo chain";
    EXPECT_EQ(manager.GetUndoTitle(), "two");
    manager.Do(new ScriptedAction("four"));
    EXPECT_FALSE(manager.CanRedo());
    EXPECT_EQ(manager.GetUndoCount(), 3);
}

TEST(ActionManager, TheLimitDropsTheOldestActions) {
    int alive = 0;
    qvrCActionManager manager;
    manager.SetMaxActions(3);
    for (const char* title : {"a", "b", "c", "d"})
        manager.Do(new ScriptedAction(title, &alive));
    EXPECT_EQ(alive, 3);
    EXPECT_TRUE(manager.Undo());
    EXPECT_TRUE(manager.Undo());
    EXPECT_TRUE(manager.Undo());
    EXPECT_FALSE(manager.Undo());
    EXPECT_EQ(manager.GetRedoTitle(), "b");
}

TEST(ActionManager, FailuresLeaveOrEmptyTheChainsAsTheRulesSay) {
    int alive = 0;
    qvrCActionManager manager;
    EXPECT_FALSE(manager.Undo());
    auto* refused = new ScriptedAction("refused", &alive);
    refused->DoAnswer = false;
    EXPECT_FALSE(manager.Do(refused));
    EXPECT_EQ(refused->GetState(), qvrCAction::in_no_chain);
    delete refused;
    manager.Do(new ScriptedAction("kept for redo", &alive));
    manager.Undo();
    manager.Do(new ScriptedAction("older", &alive));
    auto* failing = new ScriptedAction("failing", &alive);
    failing->UndoAnswer = false;
    // Doing a new action clears the redo chain, so build the redo chain after.
    manager.Do(failing);
    EXPECT_FALSE(manager.Undo());
    EXPECT_FALSE(manager.CanUndo()) << "a failed undo empties the undo chain";
    EXPECT_EQ(alive, 0);
}

namespace {

class ElementActionTest : public ::testing::Test {
protected:
    void SetUp() override { iFactoryProducerType::GlobalInit(); }
    void TearDown() override {
        project.Clear();
        iFactoryProducerType::GlobalRem();
    }
    TestNode* add(const std::string& name) {
        return static_cast<TestNode*>(project.Adopt(std::make_unique<TestNode>(name)));
    }
    iProject project;
};

} // namespace

TEST_F(ElementActionTest, AnUndoneDeleteBringsBackNameLinksAndKeys) {
    add("Parent");
    auto* layer = static_cast<isrcLayer*>(project.Adopt(std::make_unique<isrcLayer>("Layer")));
    TestNode* child = add("Child");
    ASSERT_EQ(child->LinkParent(layer), link_done);
    layer->GetRedValue().SetSingleKey(0, 10, false);
    layer->GetRedValue().SetKey(20, 200, true, false, false);
    qvrCActionManager& manager = project.GetActionManager();
    ASSERT_TRUE(manager.Do(new Action_iElementDelete(project, "Parent")));
    ASSERT_TRUE(manager.Do(new Action_iElementDelete(project, "Layer")));
    EXPECT_EQ(child->GetParentCount(), 0);

    ASSERT_TRUE(manager.Undo());
    auto* back = dynamic_cast<isrcLayer*>(project.FindElement("Layer"));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(child->GetFirstParent(), back);
    EXPECT_EQ(back->GetRedValue().GetKeyCount(), 2);
    EXPECT_EQ(back->GetRed(20), 200);
    ASSERT_TRUE(manager.Undo()) << "the second undo goes on with the action before";
    EXPECT_NE(project.FindElement("Parent"), nullptr);
    ASSERT_TRUE(manager.Redo());
    EXPECT_EQ(project.FindElement("Parent"), nullptr);
}

TEST_F(ElementActionTest, AddingCanBeTakenBackAndMadeAgain) {
    qvrCActionManager& manager = project.GetActionManager();
    ASSERT_TRUE(manager.Do(new Action_iElement_AddNew(project, "Fresh", "Test", "Node")));
    iElement* fresh = project.FindElement("Fresh");
    ASSERT_NE(fresh, nullptr);
    fresh->SetPanePosition({40, 50}, false);
    ASSERT_TRUE(manager.Undo());
    EXPECT_EQ(project.FindElement("Fresh"), nullptr);
    ASSERT_TRUE(manager.Redo());
    ASSERT_NE(project.FindElement("Fresh"), nullptr);
    EXPECT_EQ(project.FindElement("Fresh")->GetPanePosition(), (CPoint{40, 50}));
    auto* unknown = new Action_iElement_AddNew(project, "Other", "No", "Such");
    EXPECT_FALSE(manager.Do(unknown)) << "the factory knows no such class";
    delete unknown;
}

TEST_F(ElementActionTest, UndoingARenameFailsAndEmptiesTheChain) {
    add("A");
    qvrCActionManager& manager = project.GetActionManager();
    ASSERT_TRUE(manager.Do(new Action_iElement_AddNew(project, "Extra", "Test", "Node")));
    ASSERT_TRUE(manager.Do(new Action_iElement_Rename(project, "A", "B")));
    EXPECT_NE(project.FindElement("B"), nullptr);
    EXPECT_FALSE(manager.Undo());
    EXPECT_FALSE(manager.CanUndo());
    EXPECT_NE(project.FindElement("B"), nullptr);
}

TEST_F(ElementActionTest, DeletingSeveralLinkedElementsComesBackWhole) {
    TestNode* a = add("A");
    TestNode* b = add("B");
    TestNode* c = add("C");
    ASSERT_EQ(b->LinkParent(a), link_done);
    ASSERT_EQ(c->LinkParent(b), link_done);
    qvrCActionManager& manager = project.GetActionManager();
    ASSERT_TRUE(manager.Do(new Action_iElementDeleteMulti(project, {"C", "A", "B"})));
    EXPECT_EQ(project.GetElementCount(), 0u);
    ASSERT_TRUE(manager.Undo());
    ASSERT_EQ(project.GetElementCount(), 3u);
    EXPECT_EQ(project.FindElement("C")->GetFirstParent(), project.FindElement("B"));
    EXPECT_EQ(project.FindElement("B")->GetFirstParent(), project.FindElement("A"));
    auto* withGhost = new Action_iElementDeleteMulti(project, {"A", "Ghost"});
    EXPECT_FALSE(manager.Do(withGhost));
    delete withGhost;
    EXPECT_EQ(project.GetElementCount(), 3u) << "nothing is deleted when one of them is gone";
}
