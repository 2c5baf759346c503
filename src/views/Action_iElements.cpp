#include "views/Action_iElements.h"

#include "foundation/hReport.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"

namespace {

constexpr const char* LinkSection = "Action_Link";

bool loadedCleanly(const hReportRoot& report) {
    return report.GetWorstLevel() < hReportError;
}

} // namespace

// ---------------------------------------------------------------- move

Action_iElementsMove::Action_iElementsMove(iProject& owner, std::vector<Placement> movedObjects)
    : project(owner), placements(std::move(movedObjects)) {}

bool Action_iElementsMove::place(CPoint Placement::*point) {
    for (const Placement& placement : placements) {
        const bool present = placement.IsGroup ? project.FindGroup(placement.Name) != nullptr
                                               : project.FindElement(placement.Name) != nullptr;
        if (!present) {
            qvrTrace("*** ERROR[Action_iElementsMove::place()]: Object \"%s\" is gone.\n",
                     placement.Name.c_str());
            return false;
        }
    }
    for (const Placement& placement : placements) {
        if (!placement.IsGroup) {
            project.FindElement(placement.Name)->SetPanePosition(placement.*point, true);
            continue;
        }
        iElementGroup* group = project.FindGroup(placement.Name);
        group->SetPanePos(placement.*point);
        project.SetChanged(true);
        project.Notify(iElementGroup::event_group_changed, {.Object = group});
    }
    return true;
}

// ---------------------------------------------------------------- link and unlink

Action_iElementLink::Action_iElementLink(iProject& owner, std::string child, std::string parent,
                                         Kind linkKind)
    : Action_iElement(owner, std::move(child)), parentName(std::move(parent)), kind(linkKind) {}

bool Action_iElementLink::doSetupAction(qvrCTreeData& tree) {
    iElement* child = findObject();
    iElement* parent = project.FindElement(parentName);
    if (!child || !parent) {
        qvrTrace("*** ERROR[Action_iElementLink::doSetupAction()]: \"%s\" or \"%s\" is gone.\n",
                 objectName.c_str(), parentName.c_str());
        return false;
    }
    if (kind == Kind::Unlink) {
        if (!child->HasParent(parent)) return false;
    } else {
        const int check = child->CheckLinkParent(parent);
        if (check != link_replaced && check != link_done) return false;
        if (check == link_replaced) formerParent = child->GetFirstParent()->GetName();
    }
    return saveInto(*child, *tree.CreateChild(LinkSection));
}

bool Action_iElementLink::doMakeAction(qvrCTreeData&) {
    iElement* child = findObject();
    iElement* parent = project.FindElement(parentName);
    if (!child || !parent) return false;
    if (kind == Kind::Unlink) return child->UnlinkParent(parent);
    const int code = child->LinkParent(parent);
    return code == link_replaced || code == link_done;
}

bool Action_iElementLink::doUndoAction(qvrCTreeData& tree) {
    iElement* child = findObject();
    iElement* parent = project.FindElement(parentName);
    const qvrCTreeData* section = tree.Find(LinkSection);
    if (!child || !parent || !section) return false;
    if (kind == Kind::Unlink) {
        if (child->LinkParent(parent) != link_done) return false;
    } else {
        child->UnlinkParent(parent);
        if (!formerParent.empty()) {
            iElement* former = project.FindElement(formerParent);
            if (!former || child->LinkParent(former) != link_done) return false;
        }
    }
    // The block puts the parents back in their order and gives back what the links carried.
    hReportRoot report("Action");
    return iElementData::LoadByName(*child, *section, report) && loadedCleanly(report);
}

// ---------------------------------------------------------------- paste

Action_iElementsPaste::Action_iElementsPaste(iProject& owner, std::unique_ptr<qvrCTreeData> elements)
    : project(owner), blocks(std::move(elements)) {}

std::vector<std::string> Action_iElementsPaste::GetNames() const {
    std::vector<std::string> names;
    for (const auto& [key, block] : blocks->GetChildren())
        names.push_back(block->GetName());
    return names;
}

bool Action_iElementsPaste::doMakeAction(qvrCTreeData&) {
    for (const std::string& name : GetNames()) {
        if (project.FindElement(name)) {
            qvrTrace("*** ERROR[Action_iElementsPaste::doMakeAction()]: Object \"%s\" already exists !\n",
                     name.c_str());
            return false;
        }
    }
    hReportRoot report("Paste");
    for (const auto& [key, block] : blocks->GetChildren())
        iElementData::Create(*block, report, &project);
    if (!loadedCleanly(report)) {
        deletePasted();
        return false;
    }
    project.ClearSelection();
    for (const std::string& name : GetNames())
        if (iElement* element = project.FindElement(name)) element->SetSelected(true);
    return true;
}

bool Action_iElementsPaste::doUndoAction(qvrCTreeData&) {
    deletePasted();
    return true;
}

void Action_iElementsPaste::deletePasted() {
    project.BeginComplex();
    for (const std::string& name : GetNames())
        project.DeleteElement(project.FindElement(name));
    project.EndComplex();
}
