#include "views/CSplineBarTree.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/hMenu.h"
#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"

#include <algorithm>

namespace {

enum : EStringId {
    textMenuSort = 46601,
    textMenuCollapseAll = 46602,
    textMenuExpandAll = 46603,
    textMenuUncheckAll = 46604,
    textMenuRename = 46605,
    textMenuCopy = 46606,
    textMenuEmpty = 46607,
    textMenuDelete = 46608,
    textMenuSortByName = 46609,
    textMenuSortByType = 46610,
    textMenuSortReversely = 46611,
    textNewName = 46612,
    textNameTitle = 46613,
    textNamePrompt = 46614,
    textNameExists = 46615,
    textCannotRename = 46616,
    textCannotDelete = 46617,
    textAskDelete = 46618,
    textCannotEmpty = 46619,
    textForeignData = 46623,
    textAddAll = 46624,
    textAddSome = 46625,
    textAllMembers = 46626,
    textObjectsAdded = 46627,
    textDropOnTrash = 46628,
    textCannotRemoveFromDefault = 46629,
    textEntireObjectsOnly = 46630,
    textCollectionContext = 46633,
    textUnknownCollection = 46634,
    textSecondCollection = 46635,
    textInvalidValue = 46636
};

// Remembers whether the user wants collections deleted without being asked.
hMessageBox deleteQuestion(CSplineBarTree::DeleteQuestionBoxId, 0);

CSplineBarTree::FrontEnd& silentFrontEnd() {
    static CSplineBarTree::FrontEnd frontEnd;
    return frontEnd;
}

void setStatus(EStringId text) {
    EUserInterface::Get().SetStatusText(EStringTable::Load(text));
}

// The order of two entries by their elements; an entry whose element has gone comes first.
int compareEntries(const CSplineBarElement& left, const CSplineBarElement& right, uint32_t kind) {
    const iElement* a = left.GetElement();
    const iElement* b = right.GetElement();
    if (!a) return -1;
    if (!b) return 1;
    if (kind == CSplineBarTree::SortByType) {
        int byType = qvrCompareNoCase(a->GetElementType(), b->GetElementType());
        if (byType != 0) return byType;
    }
    return qvrCompareNoCase(a->GetName(), b->GetName());
}

bool isSortingMode(uint32_t mode) {
    const uint32_t kind = mode & ~CSplineBarTree::SortReversed;
    return kind == CSplineBarTree::SortByName || kind == CSplineBarTree::SortByType;
}

} // namespace

CSplineBarTree::CSplineBarTree(iProject& project)
    : Project(project), Front(&silentFrontEnd()), Default(*this), Current(&Default) {
    Default.PopulateTree();
}

CSplineBarTree::~CSplineBarTree() = default;

void CSplineBarTree::SetFrontEnd(FrontEnd* frontEnd) {
    Front = frontEnd ? frontEnd : &silentFrontEnd();
}

// ---------------------------------------------------------------- collections

CSplineBarCollection& CSplineBarTree::GetDefault() {
    return Default;
}

CSplineBarCollection* CSplineBarTree::FindCollection(const std::string& name) {
    if (qvrEqualNoCase(name, Default.Name)) return &Default;
    for (const auto& collection : Collections)
        if (qvrEqualNoCase(name, collection->Name)) return collection.get();
    return nullptr;
}

bool CSplineBarTree::ShowCollection(const std::string& name) {
    CSplineBarCollection* collection = FindCollection(name);
    if (!collection) return false;
    show(*collection);
    return true;
}

void CSplineBarTree::display(CSplineBarCollection& collection) {
    ClearEntries();
    Current = &collection;
    collection.PopulateTree();
    Front->CollectionsChanged();
    EntriesChanged();
}

void CSplineBarTree::show(CSplineBarCollection& collection) {
    if (&collection == Current) return;
    Current->ElementInfos = Snapshot();
    Current->TopVisible = TopVisible;
    display(collection);
}

std::string CSplineBarTree::ProposeName() {
    for (long number = 1;; ++number) {
        std::string name = qvrFormat(EStringTable::Load(textNewName).c_str(), number);
        if (!FindCollection(name)) return name;
    }
}

std::optional<std::string> CSplineBarTree::askName(std::string proposal, const CSplineBarCollection* own) {
    auto accept = [this, own](const std::string& name) {
        if (name.empty()) {
            Front->Beep();
            return false;
        }
        const CSplineBarCollection* holder = FindCollection(name);
        if (holder && holder != own) {
            complain(textNameExists);
            return false;
        }
        return true;
    };
    CSplineBarNameRequest request{EStringTable::Load(textNameTitle), EStringTable::Load(textNamePrompt),
                                  std::move(proposal), accept};
    std::optional<std::string> name = Front->AskName(request);
    if (!name || !accept(*name)) return std::nullopt;
    return name;
}

CSplineBarCollection& CSplineBarTree::addCollection(std::string name) {
    Collections.push_back(std::make_unique<CSplineBarCollection>(*this, std::move(name)));
    return *Collections.back();
}

bool CSplineBarTree::NewCollection() {
    std::optional<std::string> name = askName(ProposeName(), nullptr);
    if (!name) return false;
    show(addCollection(*name));
    return true;
}

bool CSplineBarTree::CopyCollection() {
    std::optional<std::string> name = askName(ProposeName(), nullptr);
    if (!name) return false;
    CSplineBarCollection& copy = addCollection(*name);
    copy.ElementInfos = Snapshot();
    copy.TopVisible = TopVisible;
    show(copy);
    return true;
}

bool CSplineBarTree::RenameCollection() {
    if (refuseDefault(textCannotRename)) return false;
    std::optional<std::string> name = askName(Current->Name, Current);
    if (!name) return false;
    Current->Name = *name;
    Front->CollectionsChanged();
    return true;
}

bool CSplineBarTree::DeleteCollection() {
    if (refuseDefault(textCannotDelete)) return false;
    const std::string question = qvrFormat(EStringTable::Load(textAskDelete).c_str(), Current->Name.c_str());
    if (deleteQuestion.Message(question, hMessageBox::YesNo | hMessageBox::IconQuestion, "qvrTessarine") !=
        IDYES)
        return false;
    const CSplineBarCollection* doomed = Current;
    display(Default);
    std::erase_if(Collections, [doomed](const auto& collection) { return collection.get() == doomed; });
    Front->CollectionsChanged();
    return true;
}

bool CSplineBarTree::EmptyCollection() {
    if (refuseDefault(textCannotEmpty)) return false;
    ClearEntries();
    EntriesChanged();
    return true;
}

bool CSplineBarTree::refuseDefault(EStringId text) {
    if (!Current->IsDefault()) return false;
    complain(text);
    return true;
}

void CSplineBarTree::complain(EStringId text) {
    Front->Beep();
    setStatus(text);
}

void CSplineBarTree::deleteUserCollections() {
    if (!Current->IsDefault()) display(Default);
    Collections.clear();
}

// ---------------------------------------------------------------- entries

CSplineBarElement* CSplineBarTree::FindEntry(const iElement* element) const {
    if (!element) return nullptr;
    for (const auto& entry : Entries)
        if (entry->GetElement() == element) return entry.get();
    return nullptr;
}

CSplineBarElement* CSplineBarTree::AddEntry(iElement* element) {
    if (!element) return nullptr;
    if (CSplineBarElement* present = FindEntry(element)) return present;
    Entries.push_back(std::make_unique<CSplineBarElement>(*this, element));
    return Entries.back().get();
}

void CSplineBarTree::RemoveEntry(const CSplineBarTreeEntry* entry) {
    std::erase_if(Entries, [entry](const auto& present) { return present.get() == entry; });
}

void CSplineBarTree::ClearEntries() {
    Entries.clear();
}

std::vector<CSplineBarCollection::ElementInfo> CSplineBarTree::Snapshot() const {
    std::vector<CSplineBarCollection::ElementInfo> infos;
    for (const auto& entry : Entries) {
        const iElement* element = entry->GetElement();
        CSplineBarCollection::ElementInfo info;
        info.Name = element ? element->GetName() : std::string();
        info.Expanded = entry->Expanded;
        for (const auto& value : entry->GetValues())
            if (const iActiveValue* target = value->GetValue())
                info.Checks[target->GetName()] = value->GetCheck() == CSplineBarTreeEntry::Checked ? 1 : 0;
        infos.push_back(std::move(info));
    }
    return infos;
}

void CSplineBarTree::EntriesChanged() {
    Front->EntriesChanged();
}

iActiveValue* CSplineBarTree::GetNextActiveValue(const iActiveValue* after) const {
    bool passed = after == nullptr;
    for (const auto& entry : Entries) {
        if (!entry->GetElement()) continue;
        for (const auto& value : entry->GetValues()) {
            iActiveValue* target = value->GetValue();
            if (!target || value->GetCheck() != CSplineBarTreeEntry::Checked) continue;
            if (passed) return target;
            passed = target == after;
        }
    }
    return nullptr;
}

// ---------------------------------------------------------------- sorting

void CSplineBarTree::SetSortMode(uint32_t mode) {
    SortMode = mode;
    Sort();
}

void CSplineBarTree::Sort() {
    if (Entries.empty()) return;
    if (!isSortingMode(SortMode)) {
        qvrTrace("*** NOTE[CSplineBarTree::Sort()]: Sortmode is 'none'.\n");
        return;
    }
    const uint32_t kind = SortMode & SortKindMask;
    const int sign = (SortMode & SortReversed) ? -1 : 1;
    // An insertion sort: it needs nothing of the compare function but an answer.
    for (size_t i = 1; i < Entries.size(); ++i)
        for (size_t j = i; j > 0 && sign * compareEntries(*Entries[j], *Entries[j - 1], kind) < 0; --j)
            std::swap(Entries[j], Entries[j - 1]);
    EntriesChanged();
}

// ---------------------------------------------------------------- menu and keys

void CSplineBarTree::BuildContextMenu(hMenu& menu) const {
    const bool empty = Entries.empty();
    const bool isDefault = Current->IsDefault();
    hMenuItem& sort =
        menu.AppendItem(command_sort, qvrFormatMessage(EStringTable::Get(textMenuSort), {Current->Name}));
    sort.Default = !empty;
    sort.Enabled = !empty;
    menu.AppendSeparator();
    menu.AppendItem(command_collapse_all, EStringTable::Load(textMenuCollapseAll)).Enabled = !empty;
    menu.AppendItem(command_expand_all, EStringTable::Load(textMenuExpandAll)).Enabled = !empty;
    menu.AppendItem(command_uncheck_all, EStringTable::Load(textMenuUncheckAll)).Enabled = !empty;
    menu.AppendSeparator();
    menu.AppendItem(command_rename, EStringTable::Load(textMenuRename)).Enabled = !isDefault;
    menu.AppendItem(command_copy, EStringTable::Load(textMenuCopy));
    menu.AppendItem(command_empty, EStringTable::Load(textMenuEmpty)).Enabled = !isDefault && !empty;
    menu.AppendItem(command_delete, EStringTable::Load(textMenuDelete)).Enabled = !isDefault;
    menu.AppendSeparator();
    const uint32_t kind = SortMode & SortKindMask;
    menu.AppendItem(command_sort_by_name, EStringTable::Load(textMenuSortByName)).Checked =
        kind == SortByName;
    menu.AppendItem(command_sort_by_type, EStringTable::Load(textMenuSortByType)).Checked =
        kind == SortByType;
    menu.AppendItem(command_sort_reversely, EStringTable::Load(textMenuSortReversely)).Checked =
        (SortMode & SortReversed) != 0;
}

bool CSplineBarTree::RunMenuCommand(unsigned command) {
    switch (command) {
    case command_sort:
        Sort();
        return true;
    case command_collapse_all:
    case command_expand_all:
        for (const auto& entry : Entries)
            entry->Expanded = command == command_expand_all;
        EntriesChanged();
        return true;
    case command_uncheck_all:
        for (const auto& entry : Entries)
            for (const auto& value : entry->GetValues())
                value->SetCheck(false);
        EntriesChanged();
        return true;
    case command_rename:
        return RenameCollection();
    case command_copy:
        return CopyCollection();
    case command_empty:
        return EmptyCollection();
    case command_delete:
        return DeleteCollection();
    case command_sort_by_name:
    case command_sort_by_type:
        SetSortMode((SortMode & ~SortKindMask) | (command == command_sort_by_name ? SortByName : SortByType));
        return true;
    case command_sort_reversely:
        SetSortMode(SortMode ^ SortReversed);
        return true;
    default:
        return false;
    }
}

bool CSplineBarTree::OnKey(Key key, CSplineBarTreeEntry* selected) {
    if (key == Key::F5) {
        Sort();
        return true;
    }
    if (!selected) return false;
    if (key == Key::Space) {
        if (!selected->ToggleCheck()) return false;
        EntriesChanged();
        return true;
    }
    if (refuseDefault(textCannotRemoveFromDefault)) return false;
    if (!selected->IsElementEntry()) {
        complain(textEntireObjectsOnly);
        return false;
    }
    RemoveEntry(selected);
    EntriesChanged();
    return true;
}

// ---------------------------------------------------------------- drag and drop

std::vector<iElement*> CSplineBarTree::draggedElements(const CSplineBarDragData& data) const {
    std::vector<iElement*> elements;
    auto take = [&](iElement* element) {
        if (element && element->GetProject() == &Project &&
            std::find(elements.begin(), elements.end(), element) == elements.end())
            elements.push_back(element);
    };
    for (iElement* element : data.Elements)
        take(element);
    for (const iElementGroup* group : data.Groups)
        for (iElement* member = group ? group->GetFirstMember() : nullptr; member;
             member = member->GetGroupNext())
            take(member);
    return elements;
}

bool CSplineBarTree::OnDragOver(const CSplineBarDragData& data) {
    if (!data.IsProjectData) {
        setStatus(textForeignData);
        return false;
    }
    const std::vector<iElement*> elements = draggedElements(data);
    const auto members = std::count_if(elements.begin(), elements.end(), [this](const iElement* element) {
        return FindEntry(element) != nullptr;
    });
    if (members == static_cast<std::ptrdiff_t>(elements.size())) {
        setStatus(textAllMembers);
        return false;
    }
    setStatus(members == 0 ? textAddAll : textAddSome);
    return true;
}

bool CSplineBarTree::OnDrop(const CSplineBarDragData& data) {
    if (!data.IsProjectData) return false;
    bool added = false;
    for (iElement* element : draggedElements(data)) {
        if (FindEntry(element)) continue;
        AddEntry(element);
        added = true;
    }
    if (!added) return false;
    setStatus(textObjectsAdded);
    EntriesChanged();
    return true;
}

bool CSplineBarTree::canTakeOut(const CSplineBarTreeEntry* entry) const {
    return entry && entry->IsElementEntry() && !Current->IsDefault();
}

bool CSplineBarTree::BeginEntryDrag(const CSplineBarTreeEntry* entry) {
    if (!canTakeOut(entry)) return false;
    setStatus(textDropOnTrash);
    return true;
}

bool CSplineBarTree::DropOnTrash(const CSplineBarTreeEntry* entry) {
    if (!canTakeOut(entry)) return false;
    RemoveEntry(entry);
    EntriesChanged();
    return true;
}

// ---------------------------------------------------------------- the saved block

void CSplineBarTree::Load(const qvrCTreeData& block, hReport& report) {
    deleteUserCollections();
    long mode = 0;
    qvrCTreeData* bad = nullptr;
    if (block.GetLong("SortMode", mode, &bad))
        SortMode = static_cast<uint32_t>(mode);
    else if (bad)
        report.Report(qvrFormat(EStringTable::Load(textInvalidValue).c_str(), bad->Value.c_str(), "SortMode"),
                      hReportWarning);
    if (const qvrCTreeData* list = block.Find("Collections")) loadCollections(*list, report);
    const std::string* selected = block.GetText("SelGrp");
    if (selected && !selected->empty() && !ShowCollection(*selected))
        report.Report(qvrFormat(EStringTable::Load(textUnknownCollection).c_str(), selected->c_str()),
                      hReportWarning);
    Front->CollectionsChanged();
    EntriesChanged();
}

void CSplineBarTree::loadCollections(const qvrCTreeData& block, hReport& report) {
    for (const auto& [key, child] : block.GetChildren()) {
        const std::string& name = child->Value;
        if (name.empty()) continue;
        if (FindCollection(name)) {
            report.Report(qvrFormat(EStringTable::Load(textSecondCollection).c_str(), name.c_str()),
                          hReportWarning);
            continue;
        }
        hReport context(&report, qvrFormat(EStringTable::Load(textCollectionContext).c_str(), name.c_str()));
        addCollection(name).Load(*child, context);
    }
}

void CSplineBarTree::Save(qvrCTreeData& block) const {
    block.SetLong("SortMode", static_cast<long>(SortMode));
    qvrCTreeData* list = block.CreateChild("Collections");
    long number = 1;
    for (const auto& collection : Collections) {
        qvrCTreeData* child = list->CreateChild(qvrFormat("Co#%03ld", number++));
        child->Value = collection->Name;
        collection->Save(*child);
    }
    block.SetText("SelGrp", Current->Name);
}

void CSplineBarTree::Reset() {
    deleteUserCollections();
    SortMode = SortByName;
    Front->CollectionsChanged();
    EntriesChanged();
}
