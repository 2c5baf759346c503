#include "model/iProject.h"

#include "foundation/hReport.h"
#include "foundation/iDataBaseSection.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iElementGroup.h"

#include <algorithm>

// One entry of the name index: the element under the name it was entered with.
class iProjectEntry {
public:
    std::string Key;
    iElement* Element;
};

namespace {

constexpr const char* DefaultsKey = "Project\\Defaults";

// The project's block in a project file, given to the standard project.
class iProjectDBSection : public iDataBaseSection {
public:
    iProjectDBSection() : iDataBaseSection("Project", DBMaskProject) {}
    void Load(qvrCTreeData& block, hReport& report) override {
        iProject& project = iProject::GetStandard();
        project.Clear();
        project.Load(block, report);
    }
    void Save(qvrCTreeData& block, hReport& report) override { iProject::GetStandard().Save(block, report); }
};

iProjectDBSection projectSection;

} // namespace

iProject::iProject() {
    loadDefaults();
}

iProject::~iProject() {
    Clear();
}

iProject& iProject::GetStandard() {
    static iProject standard;
    return standard;
}

// ---------------------------------------------------------------- name index

iElement* iProject::FindElement(const std::string& name) const {
    auto it = Entries.find(name);
    return it == Entries.end() ? nullptr : it->second->Element;
}

iProjectEntry* iProject::AddElement(iElement& element) {
    if (Busy || Entries.count(element.GetName())) return nullptr;
    Busy = true;
    auto entry = std::make_unique<iProjectEntry>(iProjectEntry{element.GetName(), &element});
    iProjectEntry* added = entry.get();
    Entries.emplace(added->Key, std::move(entry));
    Busy = false;
    return added;
}

void iProject::RemoveElement(iProjectEntry* entry) {
    if (!entry || Busy) return;
    auto it = Entries.find(entry->Key);
    if (it == Entries.end() || it->second.get() != entry) return;
    Busy = true;
    Entries.erase(it);
    Busy = false;
}

std::vector<iElement*> iProject::GetElements() const {
    std::vector<iElement*> elements;
    elements.reserve(Entries.size());
    for (const auto& [key, entry] : Entries)
        elements.push_back(entry->Element);
    return elements;
}

iElement* iProject::Adopt(std::unique_ptr<iElement> element) {
    if (!element || !element->ProjectLink(this, true)) return nullptr;
    return element.release();
}

void iProject::DeleteElement(iElement* element) {
    if (!element || element->GetProject() != this) return;
    element->ProjectUnlink();
    delete element;
}

// ---------------------------------------------------------------- changes

void iProject::SetChanged(bool changed) {
    if (!IsStandard()) {
        qvrTrace("*** NOTE[iProject::SetChanged()]: Called for non-standard project; will have no effect.\n");
        return;
    }
    if (Document) Document->SetModifiedFlag(changed);
}

void iProject::OnNameChanged(iElement& element) {
    SetChanged(true);
    Notify(event_element_changed, {.Object = &element});
}

void iProject::OnPositionChanged(iElement& element) {
    SetChanged(true);
    Notify(event_element_changed, {.Object = &element});
}

void iProject::LeaveGroup(iElement& element) {
    if (iElementGroup* group = element.GetGroup()) group->RemoveMember(&element);
}

void iProject::BeginComplex() {
    Notify(event_complex_begin);
}
void iProject::EndComplex() {
    Notify(event_complex_end);
}

void iProject::Clear() {
    Notify(event_complex_begin);
    ActionManager.ClearUndo();
    ActionManager.ClearRedo();
    while (!Entries.empty())
        DeleteElement(Entries.begin()->second->Element);
    ForgetSelection();
    Groups.clear();
    SetChanged(false);
    loadDefaults();
    Notify(event_complex_end);
}

void iProject::SetDocument(iProjectDocument* document) {
    if (document == Document) return;
    Document = document;
    Notify(event_document_changed);
}

// ---------------------------------------------------------------- settings

void iProject::loadDefaults() {
    qvrCRegKey key;
    key.Open(qvrCRegKey::Root(), DefaultsKey, qvrCRegKey::Access::OpenExisting);
    EImageSize pane{std::max(key.GetLong("PaneWid", DefaultPaneSize), MinPaneSize),
                    std::max(key.GetLong("PaneHi", DefaultPaneSize), MinPaneSize)};
    CPoint grid{std::max(key.GetLong("PaneGridX", DefaultPaneGrid), 1L),
                std::max(key.GetLong("PaneGridY", DefaultPaneGrid), 1L)};
    PaneSize = pane;
    PaneGrid = grid;
    PaneGridEnabled = key.GetLong("GridEnabled", 1) != 0;
    FrameLength = std::max(key.GetLong("Length", DefaultFrameLength), MinFrameLength);
    Notify(event_pane_changed);
    Notify(event_length_changed);
}

void iProject::SaveDefaults() const {
    qvrCRegKey key;
    if (!key.Open(qvrCRegKey::Root(), DefaultsKey)) return;
    key.SetLong("PaneWid", PaneSize.Width);
    key.SetLong("PaneHi", PaneSize.Height);
    key.SetLong("PaneGridX", PaneGrid.x);
    key.SetLong("PaneGridY", PaneGrid.y);
    key.SetLong("GridEnabled", PaneGridEnabled ? 1 : 0);
    key.SetLong("Length", FrameLength);
}

void iProject::SetPaneSize(EImageSize size, bool notify) {
    if (size == PaneSize) return;
    SetChanged(true);
    PaneSize = size;
    if (notify) Notify(event_pane_changed);
}

void iProject::SetPaneGrid(CPoint grid, bool enabled, bool notify) {
    grid = {std::max(grid.x, 1L), std::max(grid.y, 1L)};
    if (grid == PaneGrid && enabled == PaneGridEnabled) return;
    SetChanged(true);
    PaneGrid = grid;
    PaneGridEnabled = enabled;
    if (notify) Notify(event_pane_changed);
}

void iProject::SetFrameLength(long length, bool notify) {
    if (length == FrameLength) return;
    SetChanged(true);
    FrameLength = length;
    if (notify) Notify(event_length_changed);
}

// ---------------------------------------------------------------- groups

iElementGroup* iProject::FindGroup(const std::string& name) const {
    for (const auto& group : Groups)
        if (qvrEqualNoCase(group->GetName(), name)) return group.get();
    return nullptr;
}

iElementGroup* iProject::AddGrp(const std::string& name, bool checkName) {
    if (checkName && FindGroup(name)) return nullptr;
    Groups.push_back(std::make_unique<iElementGroup>(name, *this));
    SetChanged(true);
    return Groups.back().get();
}

void iProject::DeleteGroup(iElementGroup* group) {
    auto it = std::find_if(Groups.begin(), Groups.end(), [&](const auto& g) { return g.get() == group; });
    if (it == Groups.end()) return;
    Groups.erase(it);
    SetChanged(true);
}

iElementGroup* iProject::GetFirstSelectedGroup() const {
    return GetNextSelectedGroup(nullptr);
}

iElementGroup* iProject::GetNextSelectedGroup(iElementGroup* group) const {
    auto it = Groups.begin();
    if (group) {
        it = std::find_if(Groups.begin(), Groups.end(), [&](const auto& g) { return g.get() == group; });
        if (it != Groups.end()) ++it;
    }
    for (; it != Groups.end(); ++it)
        if ((*it)->IsSelected()) return it->get();
    return nullptr;
}

void iProject::ClearGroupSelection() {
    for (const auto& group : Groups)
        group->SetSelected(false);
}

void iProject::ClearSelection() {
    while (iElement* element = GetFirstSelected())
        element->SetSelected(false);
}

// ---------------------------------------------------------------- file block

void iProject::loadSettings(const qvrCTreeData& block, hReport& report) {
    CSize pane;
    qvrCTreeData* bad = nullptr;
    if (block.GetSize("PaneSize", pane, &bad))
        SetPaneSize({pane.cx, pane.cy}, true);
    else if (bad)
        report.Report("Pane size is invalid", hReportNote);
    long length = 0;
    if (block.GetLong("FrameLength", length, &bad) && length != 0)
        SetFrameLength(length, true);
    else if (bad || block.Find("FrameLength"))
        report.Report("Length of project (in frames) is invalid", hReportNote);
    CPoint grid = PaneGrid;
    bool enabled = PaneGridEnabled;
    block.GetPoint("PaneGrid", grid);
    block.GetBool("PaneGridEnabled", enabled);
    SetPaneGrid(grid, enabled, true);
}

void iProject::loadElements(qvrCTreeData& block, hReport& report) {
    qvrCTreeData* elements = block.Find("Elements");
    if (!elements) return;
    for (const auto& [key, child] : elements->GetChildren())
        iElementData::Create(*child, report, this);
}

void iProject::loadGroups(qvrCTreeData& block, hReport& report) {
    qvrCTreeData* groups = block.Find("Groups");
    if (!groups) return;
    for (const auto& [key, child] : groups->GetChildren()) {
        if (child->GetName().empty()) continue;
        iElementGroup* group = FindGroup(child->GetName());
        if (!group) group = AddGrp(child->GetName(), false);
        hReport context(&report, qvrFormat("Object group \"%s\"", child->GetName().c_str()));
        group->Load(*child, context);
    }
}

void iProject::Load(qvrCTreeData& block, hReport& report) {
    Notify(event_complex_begin);
    loadSettings(block, report);
    if (!block.Value.empty()) SetName(block.Value, true);
    loadElements(block, report);
    loadGroups(block, report);
    SetChanged(false);
    Notify(event_complex_end);
}

void iProject::Save(qvrCTreeData& block, hReport& report) {
    block.Value = GetName();
    block.SetSize("PaneSize", PaneSize.ToSize());
    block.SetPoint("PaneGrid", PaneGrid);
    block.SetBool("PaneGridEnabled", PaneGridEnabled);
    block.SetLong("FrameLength", FrameLength);
    if (!Entries.empty()) {
        qvrCTreeData* elements = block.CreateChild("Elements");
        for (iElement* element : GetElements())
            iElementData::SaveData(*element, *elements->CreateChild(element->GetName()), report);
    }
    if (!Groups.empty()) {
        qvrCTreeData* groups = block.CreateChild("Groups");
        for (const auto& group : Groups) {
            hReport context(&report, qvrFormat("Object group \"%s\"", group->GetName().c_str()));
            group->Save(*groups->CreateChild(group->GetName()), context);
        }
    }
    SetChanged(false);
}
