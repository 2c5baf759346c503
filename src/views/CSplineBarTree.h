#pragma once
// The left side of the spline bar: the tree of objects and their values of
// the collection shown, the list of user collections beside the default one,
// and the rules of the tree: its context menu and keys, sorting, making,
// copying, renaming, emptying and deleting collections, objects dropped on it
// or taken out of it, and the "Groups" block of the bar's settings. Drawing is
// the front end's: it reads the entries and hears of changes through its hook.
// Complaints come with a beep and go to the status line; the delete question
// goes through a message box with memory. Main thread only, like every window.

#include "foundation/EStringTable.h"
#include "views/CSplineBarCollection.h"
#include "views/CSplineBarTreeEntry.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class hMenu;
class hReport;
class iActiveValue;
class iElement;
class iElementGroup;
class iProject;
class qvrCTreeData;

// What a drag over the tree carries: project objects, or data of another kind.
struct CSplineBarDragData {
    bool IsProjectData = true;
    std::vector<iElement*> Elements;
    std::vector<iElementGroup*> Groups;
};

// The name dialog of a new or renamed collection.
struct CSplineBarNameRequest {
    std::string Title;
    std::string Prompt;
    std::string Name;
    // The dialog's check on OK; false keeps it open (the refusal has been told).
    std::function<bool(const std::string&)> Accept;
};

class CSplineBarTree {
public:
    // Commands of the context menu.
    enum Command : unsigned {
        command_sort = 1,
        command_rename = 2,
        command_copy = 3,
        command_empty = 4,
        command_delete = 5,
        command_sort_by_name = 6,
        command_sort_by_type = 7,
        command_sort_reversely = 8,
        command_collapse_all = 9,
        command_expand_all = 10,
        command_uncheck_all = 11
    };
    // SortMode: the low four bits choose the order, bit 0x10 reverses it.
    enum SortBits : uint32_t {
        SortNone = 0,
        SortByName = 1,
        SortByType = 2,
        SortKindMask = 0x0F,
        SortReversed = 0x10
    };
    enum class Key { Space, F5, Delete };
    // The memory of the question before a collection is deleted.
    static constexpr long DeleteQuestionBoxId = 65064;

    // What the window does for the tree; the defaults do nothing.
    class FrontEnd {
    public:
        virtual ~FrontEnd() = default;
        virtual void Beep() {}
        // The entries or their labels changed.
        virtual void EntriesChanged() {}
        // A collection was made, renamed, deleted or shown: the bar's selector follows.
        virtual void CollectionsChanged() {}
        // Shows the name dialog until its check agrees; the name, or nothing when cancelled.
        virtual std::optional<std::string> AskName(const CSplineBarNameRequest&) { return std::nullopt; }
    };

    explicit CSplineBarTree(iProject& project);
    ~CSplineBarTree();
    CSplineBarTree(const CSplineBarTree&) = delete;
    CSplineBarTree& operator=(const CSplineBarTree&) = delete;

    // Null restores the hook that does nothing; the caller keeps ownership.
    void SetFrontEnd(FrontEnd* frontEnd);
    iProject& GetProject() const { return Project; }

    // --- Collections.
    CSplineBarCollection& GetDefault();
    CSplineBarCollection& GetCurrent() const { return *Current; }
    // The user collections, in order; the default collection isn't one of them.
    const std::vector<std::unique_ptr<CSplineBarCollection>>& GetCollections() const { return Collections; }
    // The default collection or a user collection, by name without regard to case; null for none.
    CSplineBarCollection* FindCollection(const std::string& name);
    // Stores the shown collection and shows the one of that name; false for an unknown name.
    bool ShowCollection(const std::string& name);
    // The name dialog, then a new empty collection that is shown.
    bool NewCollection();
    // The name dialog, then a copy of the shown collection that is shown.
    bool CopyCollection();
    bool RenameCollection();
    bool DeleteCollection();
    bool EmptyCollection();
    // The smallest "New.#n" that no collection bears.
    std::string ProposeName();

    // --- The entries of the shown collection, top to bottom.
    const std::vector<std::unique_ptr<CSplineBarElement>>& GetEntries() const { return Entries; }
    CSplineBarElement* FindEntry(const iElement* element) const;
    // Appends an entry for the element, unless it has one.
    CSplineBarElement* AddEntry(iElement* element);
    void RemoveEntry(const CSplineBarTreeEntry* entry);
    void ClearEntries();
    // The state of every entry, as a collection that isn't shown keeps it.
    std::vector<CSplineBarCollection::ElementInfo> Snapshot() const;
    // The entries or their labels changed: tells the front end.
    void EntriesChanged();
    // The checked values of the shown collection, entry by entry: the first after
    // `after` (null: the first of all), or null at the end.
    iActiveValue* GetNextActiveValue(const iActiveValue* after) const;
    // The name of the object at the top of the window.
    std::string TopVisible;

    // --- Sorting.
    uint32_t GetSortMode() const { return SortMode; }
    // Stores the mode and sorts.
    void SetSortMode(uint32_t mode);
    // Sorts the top level by the mode; nothing for an empty tree or a mode that isn't one of the four.
    void Sort();

    // --- Menu, keys, drag and drop.
    void BuildContextMenu(hMenu& menu) const;
    bool RunMenuCommand(unsigned command);
    // A key on the tree with the entry that is selected (null for none).
    bool OnKey(Key key, CSplineBarTreeEntry* selected);
    // Whether the objects may be dropped; the status line tells why.
    bool OnDragOver(const CSplineBarDragData& data);
    // Appends an entry for each dropped object that isn't in the collection yet.
    bool OnDrop(const CSplineBarDragData& data);
    // Whether the entry may be dragged out of the collection (onto the trash can).
    bool BeginEntryDrag(const CSplineBarTreeEntry* entry);
    // The trash can takes an entry dragged out of the collection.
    bool DropOnTrash(const CSplineBarTreeEntry* entry);

    // --- The "Groups" block of the bar's settings.
    void Load(const qvrCTreeData& block, hReport& report);
    void Save(qvrCTreeData& block) const;
    // No user collections; the default collection is shown.
    void Reset();

private:
    // Shows `collection` without storing the one shown before.
    void display(CSplineBarCollection& collection);
    void show(CSplineBarCollection& collection);
    void deleteUserCollections();
    // Asks for a name that no other collection bears; `own` may keep its name.
    std::optional<std::string> askName(std::string proposal, const CSplineBarCollection* own);
    CSplineBarCollection& addCollection(std::string name);
    // Refuses an operation on the default collection with a beep and the text.
    bool refuseDefault(EStringId text);
    void complain(EStringId text);
    // The dragged elements of the project and the members of the dragged groups, each once.
    std::vector<iElement*> draggedElements(const CSplineBarDragData& data) const;
    // Only element entries leave a user collection.
    bool canTakeOut(const CSplineBarTreeEntry* entry) const;
    void loadCollections(const qvrCTreeData& block, hReport& report);

    iProject& Project;
    FrontEnd* Front;
    CSplineBarCollectionAll Default;
    std::vector<std::unique_ptr<CSplineBarCollection>> Collections;
    CSplineBarCollection* Current;
    uint32_t SortMode = SortByName;
    std::vector<std::unique_ptr<CSplineBarElement>> Entries;
};
