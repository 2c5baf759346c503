#include "model/iElementGroup.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/hMenu.h"
#include "model/iElement.h"
#include "model/iProject.h"

iElementGroup::iElementGroup(std::string name, iProject& project)
    : iObjectBase(std::move(name)), Project(project) {}

iElementGroup::~iElementGroup() {
    RemoveAll();
}

bool iElementGroup::AddMember(iElement* element, bool force) {
    if (!element) return false;
    if (element->Group == this) return true;
    if (element->Group) {
        if (!force) return false;
        element->Group->RemoveMember(element);
    }
    element->Group = this;
    element->GroupPrev = LastMember;
    element->GroupNext = nullptr;
    (LastMember ? LastMember->GroupNext : FirstMember) = element;
    LastMember = element;
    ++MemberCount;
    return true;
}

void iElementGroup::RemoveMember(iElement* element) {
    if (!element || element->Group != this) return;
    (element->GroupPrev ? element->GroupPrev->GroupNext : FirstMember) = element->GroupNext;
    (element->GroupNext ? element->GroupNext->GroupPrev : LastMember) = element->GroupPrev;
    element->Group = nullptr;
    element->GroupPrev = element->GroupNext = nullptr;
    --MemberCount;
}

void iElementGroup::RemoveAll() {
    while (FirstMember)
        RemoveMember(FirstMember);
}

bool iElementGroup::HitTest(CPoint point) const {
    long dx = point.x - PanePos.x;
    long dy = point.y - PanePos.y;
    return dx * dx + dy * dy < 1090;
}

void iElementGroup::SetCollapsed(bool collapsed) {
    if (collapsed == Collapsed) return;
    Collapsed = collapsed;
    Project.SetChanged(true);
    Project.Notify(event_group_changed, {.Object = this});
}

std::string iElementGroup::GetLabel() const {
    return qvrFormat("%s (%ld)", GetName().c_str(), MemberCount);
}

bool iElementGroup::IsNameFree(const std::string& name) const {
    iElementGroup* holder = Project.FindGroup(name);
    return !holder || holder == this;
}

bool iElementGroup::Rename(const std::string& name) {
    if (name.empty() || !IsNameFree(name)) return false;
    SetName(name, false);
    Project.SetChanged(true);
    Project.Notify(event_group_changed, {.Object = this});
    return true;
}

void iElementGroup::BuildContextMenu(hMenu& menu) const {
    menu.AppendItem(command_collapse, Collapsed ? "&Expand\tE" : "&Collapse\tC");
    menu.AppendItem(command_rename, "&Rename\tR");
}

bool iElementGroup::RunMenuCommand(unsigned command) {
    if (command != command_collapse) return false;
    SetCollapsed(!Collapsed);
    return true;
}

void iElementGroup::Load(const qvrCTreeData& block, hReport& report) {
    block.GetPoint("PanePos", PanePos);
    block.GetBool("Collapsed", Collapsed);
    const qvrCTreeData* members = block.Find("Members");
    if (!members) return;
    for (const auto& [key, entry] : members->GetChildren()) {
        const std::string& name = entry->GetName();
        if (name.empty()) continue;
        iElement* element = Project.FindElement(name);
        if (!element) {
            report.Report(
                qvrFormat("There is no object called \"%s\" (the object is been removed from the group)",
                          name.c_str()),
                hReportWarning);
        } else if (!AddMember(element, true)) {
            report.Report(qvrFormat("The object \"%s\" is already member of another group.", name.c_str()),
                          hReportWarning);
        }
    }
}

void iElementGroup::Save(qvrCTreeData& block, hReport&) const {
    block.SetPoint("PanePos", PanePos);
    block.SetBool("Collapsed", Collapsed);
    if (!FirstMember) return;
    qvrCTreeData* members = block.CreateChild("Members");
    for (iElement* element = FirstMember; element; element = element->GroupNext)
        members->SetText(element->GetName(), element->GetElementClass());
}
