#include "views/CSplineBarTree.h"

#include "SplineTestSupport.h"
#include "foundation/TraceCapture.h"
#include "foundation/hMessageBox.h"
#include "model/hMenu.h"
#include "model/iElementGroup.h"

#include <gtest/gtest.h>

#include <deque>

namespace {

class RecordingFrontEnd : public CSplineBarTree::FrontEnd {
public:
    void Beep() override { ++Beeps; }
    // Offers the scripted names in turn until the dialog's check takes one.
    std::optional<std::string> AskName(const CSplineBarNameRequest& request) override {
        Requests.push_back(request);
        while (!Names.empty()) {
            std::string name = Names.front();
            Names.pop_front();
            if (request.Accept(name)) return name;
        }
        return std::nullopt;
    }

    int Beeps = 0;
    std::deque<std::string> Names;
    std::vector<CSplineBarNameRequest> Requests;
};

class SplineBarTree : public ::testing::Test {
protected:
    SplineBarTree() {
        SplineTestElement::Make(project, "Crop", "Crop");
        SplineTestElement::Make(project, "back", "Layer");
        SplineTestElement::Make(project, "Alpha", "Layer");
        tree.SetFrontEnd(&frontEnd);
    }

    iElement* element(const std::string& name) { return project.FindElement(name); }
    std::vector<std::string> labels() const {
        std::vector<std::string> result;
        for (const auto& entry : tree.GetEntries())
            result.push_back(entry->GetLabel());
        return result;
    }
    CSplineBarCollection& newCollection(const std::string& name) {
        frontEnd.Names.push_back(name);
        EXPECT_TRUE(tree.NewCollection());
        return tree.GetCurrent();
    }
    CSplineBarValue& valueEntry(const std::string& elementName, size_t index) {
        return *tree.FindEntry(element(elementName))->GetValues().at(index);
    }

    RecordingUserInterface ui;
    iProject project;
    CSplineBarTree tree{project};
    RecordingFrontEnd frontEnd;
};

std::vector<unsigned> commandIds(const hMenu& menu) {
    std::vector<unsigned> ids;
    for (const hMenuItem& item : menu.GetItems())
        if (!item.IsSeparator()) ids.push_back(item.Id);
    return ids;
}

} // namespace

TEST_F(SplineBarTree, DefaultCollectionHoldsEveryElementAndFollowsTheProject) {
    EXPECT_EQ(tree.GetCurrent().Name, "<All>");
    EXPECT_EQ(labels(), (std::vector<std::string>{"Crop (Crop)", "back (Layer)", "Alpha (Layer)"}));
    EXPECT_EQ(tree.GetEntries()[0]->GetValues()[0]->GetLabel(), "Alpha");
    // A tree made for a project that has elements lists them in name order.
    CSplineBarTree later(project);
    EXPECT_EQ(later.GetEntries()[0]->GetLabel(), "Alpha (Layer)");

    SplineTestElement::Make(project, "Zoom", "Scale");
    EXPECT_EQ(labels().back(), "Zoom (Scale)");
    project.DeleteElement(element("back"));
    EXPECT_EQ(labels(), (std::vector<std::string>{"Crop (Crop)", "Alpha (Layer)", "Zoom (Scale)"}));

    TraceCapture trace;
    project.Clear();
    EXPECT_TRUE(tree.GetEntries().empty());
    EXPECT_TRUE(
        trace.Contains("*** NOTE[CSplineBarCollectionAll::OnObjectEvent()]: Complex event started.\n"));
    EXPECT_TRUE(trace.Contains("*** NOTE[CSplineBarCollectionAll::OnObjectEvent()]: Complex event ended.\n"));
}

TEST_F(SplineBarTree, EntriesFollowTheirElementsValuesAndLoss) {
    auto& crop = static_cast<SplineTestElement&>(*element("Crop"));
    crop.AddValue("Gamma");
    ASSERT_EQ(tree.FindEntry(&crop)->GetValues().size(), 3u);
    crop.Values.erase(crop.Values.begin());
    ASSERT_EQ(tree.FindEntry(&crop)->GetValues().size(), 2u);
    EXPECT_EQ(tree.FindEntry(&crop)->GetValues()[0]->GetLabel(), "Beta");

    iElementGroup* group = project.AddGrp("Left", true);
    group->AddMember(&crop, true);
    EXPECT_EQ(tree.FindEntry(&crop)->GetLabel(), "Crop (Crop) [Group Left]");

    CSplineBarCollection& mine = newCollection("Mine");
    tree.OnDrop({true, {&crop}, {}});
    iProject elsewhere;
    crop.ProjectLink(&elsewhere, true);
    EXPECT_EQ(labels(), std::vector<std::string>{"<???}"});
    EXPECT_EQ(tree.GetNextActiveValue(nullptr), nullptr);
    tree.ShowCollection("<All>");
    EXPECT_EQ(tree.FindEntry(&crop), nullptr);
    EXPECT_EQ(mine.ElementInfos.size(), 1u);
}

TEST_F(SplineBarTree, DeletedElementStaysInUserCollectionAsLostEntry) {
    newCollection("Mine");
    tree.OnDrop({true, {element("Crop"), element("Alpha")}, {}});
    project.DeleteElement(element("Crop"));
    EXPECT_EQ(labels(), (std::vector<std::string>{"<???}", "Alpha (Layer)"}));

    // A lost entry sorts first, and last when reversed.
    tree.SetSortMode(CSplineBarTree::SortByName | CSplineBarTree::SortReversed);
    EXPECT_EQ(labels(), (std::vector<std::string>{"Alpha (Layer)", "<???}"}));
}

TEST_F(SplineBarTree, CheckedValuesAreServedEntryByEntry) {
    valueEntry("Crop", 1).SetCheck(true);
    valueEntry("Alpha", 0).SetCheck(true);
    valueEntry("Alpha", 1).SetCheck(true);
    auto& alpha = static_cast<SplineTestElement&>(*element("Alpha"));
    auto& crop = static_cast<SplineTestElement&>(*element("Crop"));

    EXPECT_EQ(tree.GetNextActiveValue(nullptr), &crop.Value(1));
    EXPECT_EQ(tree.GetNextActiveValue(&crop.Value(1)), &alpha.Value(0));
    EXPECT_EQ(tree.GetNextActiveValue(&alpha.Value(0)), &alpha.Value(1));
    EXPECT_EQ(tree.GetNextActiveValue(&alpha.Value(1)), nullptr);

    EXPECT_TRUE(tree.OnKey(CSplineBarTree::Key::Space, &valueEntry("Crop", 1)));
    EXPECT_EQ(tree.GetNextActiveValue(nullptr), &alpha.Value(0));
    EXPECT_FALSE(tree.OnKey(CSplineBarTree::Key::Space, tree.FindEntry(&alpha)));
    EXPECT_EQ(tree.FindEntry(&alpha)->GetCheck(), CSplineBarTreeEntry::Fixed);

    tree.RunMenuCommand(CSplineBarTree::command_uncheck_all);
    EXPECT_EQ(tree.GetNextActiveValue(nullptr), nullptr);
}

TEST_F(SplineBarTree, NewCollectionNamesAndTheirDialog) {
    newCollection("New.#1");
    newCollection("New.#3");
    EXPECT_EQ(tree.ProposeName(), "New.#2");

    frontEnd.Names = {"new.#1", "<all>", "", "Fresh"};
    ASSERT_TRUE(tree.NewCollection());
    const CSplineBarNameRequest& request = frontEnd.Requests.back();
    EXPECT_EQ(request.Title, "User collection:");
    EXPECT_EQ(request.Prompt, "&Name of new collection:");
    EXPECT_EQ(request.Name, "New.#2");
    EXPECT_EQ(frontEnd.Beeps, 3);
    EXPECT_EQ(ui.LastStatus(), "A collection with this name already exits !");
    EXPECT_EQ(tree.GetCurrent().Name, "Fresh");
    EXPECT_TRUE(tree.GetEntries().empty());
    EXPECT_EQ(tree.GetCollections().size(), 3u);

    // A cancelled dialog makes nothing.
    EXPECT_FALSE(tree.NewCollection());
    EXPECT_EQ(tree.GetCollections().size(), 3u);
}

TEST_F(SplineBarTree, RenameKeepsOwnNameAndRefusesOthers) {
    newCollection("One");
    newCollection("Two");
    frontEnd.Names = {"one", "TWO"};
    ASSERT_TRUE(tree.RenameCollection());
    EXPECT_EQ(frontEnd.Requests.back().Name, "Two");
    EXPECT_EQ(tree.GetCurrent().Name, "TWO");
    EXPECT_EQ(frontEnd.Beeps, 1);
}

TEST_F(SplineBarTree, DefaultCollectionRefusesChanges) {
    struct Case {
        std::function<bool()> Operation;
        std::string Text;
    };
    const std::vector<Case> cases = {
        {[&] { return tree.RenameCollection(); }, "You cannot rename the default collection !\n"},
        {[&] { return tree.DeleteCollection(); }, "You cannot delete the default collection."},
        {[&] { return tree.EmptyCollection(); }, "You cannot empty the default collection."},
        {[&] { return tree.OnKey(CSplineBarTree::Key::Delete, tree.GetEntries()[0].get()); },
         "You cannot remove objects from the default collection !"},
    };
    for (const Case& refusal : cases) {
        const int beeps = frontEnd.Beeps;
        EXPECT_FALSE(refusal.Operation());
        EXPECT_EQ(ui.LastStatus(), refusal.Text);
        EXPECT_EQ(frontEnd.Beeps, beeps + 1);
    }
    EXPECT_EQ(tree.GetEntries().size(), 3u);
    EXPECT_FALSE(tree.BeginEntryDrag(tree.GetEntries()[0].get()));
    EXPECT_FALSE(tree.DropOnTrash(tree.GetEntries()[0].get()));
    EXPECT_TRUE(ui.Messages.empty());
}

TEST_F(SplineBarTree, DeleteAsksThroughTheMessageMemory) {
    newCollection("Doomed");
    ui.Answer = IDNO;
    EXPECT_FALSE(tree.DeleteCollection());
    ASSERT_EQ(ui.Messages.size(), 1u);
    EXPECT_EQ(ui.Messages[0], "Are you sure you want to delete\nthe collection \"Doomed\" ?");
    EXPECT_EQ(tree.GetCurrent().Name, "Doomed");

    hMessageBox* memory = hMessageBox::FindById(CSplineBarTree::DeleteQuestionBoxId);
    ASSERT_NE(memory, nullptr);
    memory->Always = true;
    EXPECT_TRUE(tree.DeleteCollection());
    memory->Always = false;
    EXPECT_EQ(ui.Messages.size(), 1u);
    EXPECT_TRUE(tree.GetCollections().empty());
    EXPECT_EQ(tree.GetCurrent().Name, "<All>");
    EXPECT_EQ(tree.GetEntries().size(), 3u);
}

TEST_F(SplineBarTree, SwitchingAndCopyingKeepTheStateOfEntries) {
    valueEntry("Crop", 1).SetCheck(true);
    tree.FindEntry(element("Crop"))->Expanded = true;
    tree.TopVisible = "Crop";
    frontEnd.Names.push_back("Copy of all");
    ASSERT_TRUE(tree.RunMenuCommand(CSplineBarTree::command_copy));
    EXPECT_EQ(tree.GetCurrent().Name, "Copy of all");
    EXPECT_EQ(tree.GetEntries().size(), 3u);
    EXPECT_EQ(valueEntry("Crop", 1).GetCheck(), CSplineBarTreeEntry::Checked);
    EXPECT_EQ(valueEntry("Crop", 0).GetCheck(), CSplineBarTreeEntry::Unchecked);
    EXPECT_TRUE(tree.FindEntry(element("Crop"))->Expanded);
    EXPECT_EQ(tree.TopVisible, "Crop");

    ASSERT_TRUE(tree.OnKey(CSplineBarTree::Key::Delete, tree.FindEntry(element("Alpha"))));
    valueEntry("Crop", 1).SetCheck(false);
    tree.ShowCollection("<All>");
    EXPECT_EQ(valueEntry("Crop", 1).GetCheck(), CSplineBarTreeEntry::Checked);
    tree.ShowCollection("copy of ALL");
    EXPECT_EQ(labels(), (std::vector<std::string>{"Crop (Crop)", "back (Layer)"}));
    EXPECT_EQ(valueEntry("Crop", 1).GetCheck(), CSplineBarTreeEntry::Unchecked);
}

TEST_F(SplineBarTree, DropRulesAndTheirWords) {
    EXPECT_FALSE(tree.OnDragOver({false, {}, {}}));
    EXPECT_EQ(ui.LastStatus(),
              "YOU CANNOT DROP NEW OBJECTS HERE: To add an object, please move it onto the project view !");
    EXPECT_FALSE(tree.OnDragOver({true, {element("Crop")}, {}}));
    EXPECT_EQ(ui.LastStatus(), "These objects are already part of this collection.");
    EXPECT_FALSE(tree.OnDrop({true, {element("Crop")}, {}}));

    newCollection("Mine");
    iElementGroup* group = project.AddGrp("Layers", true);
    group->AddMember(element("back"), true);
    group->AddMember(element("Alpha"), true);
    EXPECT_TRUE(tree.OnDragOver({true, {element("Crop")}, {group}}));
    EXPECT_EQ(ui.LastStatus(), "Add to this selection...");
    EXPECT_TRUE(tree.OnDrop({true, {element("Crop")}, {}}));
    EXPECT_EQ(ui.LastStatus(), "Objects added to group ...");
    EXPECT_TRUE(tree.OnDragOver({true, {element("Crop")}, {group}}));
    EXPECT_EQ(ui.LastStatus(), "Add to this selection (some objects are already part of it) ...");
    EXPECT_TRUE(tree.OnDrop({true, {element("Crop"), element("Alpha")}, {group}}));
    EXPECT_EQ(labels(), (std::vector<std::string>{"Crop (Crop)", "Alpha (Layer) [Group Layers]",
                                                  "back (Layer) [Group Layers]"}));
}

TEST_F(SplineBarTree, TakingEntriesOut) {
    newCollection("Mine");
    tree.OnDrop({true, {element("Crop"), element("Alpha")}, {}});
    CSplineBarValue& value = valueEntry("Crop", 0);
    EXPECT_FALSE(tree.BeginEntryDrag(&value));
    EXPECT_FALSE(tree.OnKey(CSplineBarTree::Key::Delete, &value));
    EXPECT_EQ(ui.LastStatus(), "You can remove entire objects only, not a single value !");
    EXPECT_EQ(frontEnd.Beeps, 1);

    EXPECT_TRUE(tree.BeginEntryDrag(tree.FindEntry(element("Crop"))));
    EXPECT_EQ(ui.LastStatus(), "Drop object onto trashcan to remove it from this collection.");
    EXPECT_TRUE(tree.DropOnTrash(tree.FindEntry(element("Crop"))));
    EXPECT_TRUE(tree.OnKey(CSplineBarTree::Key::Delete, tree.FindEntry(element("Alpha"))));
    EXPECT_TRUE(tree.GetEntries().empty());
}

TEST_F(SplineBarTree, SortingModes) {
    SplineTestElement::Make(project, "Beam", "crop");
    tree.SetSortMode(CSplineBarTree::SortByType);
    EXPECT_EQ(labels(),
              (std::vector<std::string>{"Beam (crop)", "Crop (Crop)", "Alpha (Layer)", "back (Layer)"}));
    tree.RunMenuCommand(CSplineBarTree::command_sort_reversely);
    EXPECT_EQ(tree.GetSortMode(), 18u);
    EXPECT_EQ(labels(),
              (std::vector<std::string>{"back (Layer)", "Alpha (Layer)", "Crop (Crop)", "Beam (crop)"}));
    tree.RunMenuCommand(CSplineBarTree::command_sort_by_name);
    EXPECT_EQ(tree.GetSortMode(), 17u);
    EXPECT_EQ(labels(),
              (std::vector<std::string>{"Crop (Crop)", "Beam (crop)", "back (Layer)", "Alpha (Layer)"}));

    TraceCapture trace;
    tree.SetSortMode(0x21);
    EXPECT_EQ(labels().front(), "Crop (Crop)");
    EXPECT_TRUE(trace.Contains("*** NOTE[CSplineBarTree::Sort()]: Sortmode is 'none'.\n"));
}

TEST_F(SplineBarTree, ContextMenuOrderAndStates) {
    hMenu menu;
    tree.BuildContextMenu(menu);
    EXPECT_EQ(commandIds(menu), (std::vector<unsigned>{1, 9, 10, 11, 2, 3, 4, 5, 6, 7, 8}));
    const hMenuItem* sort = menu.FindItem(CSplineBarTree::command_sort);
    EXPECT_EQ(sort->Text, "Sort <All>\tF5");
    EXPECT_TRUE(sort->Default);
    EXPECT_FALSE(menu.FindItem(CSplineBarTree::command_rename)->Enabled);
    EXPECT_FALSE(menu.FindItem(CSplineBarTree::command_empty)->Enabled);
    EXPECT_FALSE(menu.FindItem(CSplineBarTree::command_delete)->Enabled);
    EXPECT_TRUE(menu.FindItem(CSplineBarTree::command_sort_by_name)->Checked);
    EXPECT_FALSE(menu.FindItem(CSplineBarTree::command_sort_reversely)->Checked);

    newCollection("Empty one");
    hMenu userMenu;
    tree.BuildContextMenu(userMenu);
    EXPECT_FALSE(userMenu.FindItem(CSplineBarTree::command_sort)->Enabled);
    EXPECT_FALSE(userMenu.FindItem(CSplineBarTree::command_sort)->Default);
    EXPECT_FALSE(userMenu.FindItem(CSplineBarTree::command_expand_all)->Enabled);
    EXPECT_FALSE(userMenu.FindItem(CSplineBarTree::command_empty)->Enabled);
    EXPECT_TRUE(userMenu.FindItem(CSplineBarTree::command_rename)->Enabled);
    EXPECT_TRUE(userMenu.FindItem(CSplineBarTree::command_copy)->Enabled);
    EXPECT_TRUE(userMenu.FindItem(CSplineBarTree::command_delete)->Enabled);
}
