#include "views/CProjectVDDA_Standard.h"

#include "foundation/qvrGeometry.h"
#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"
#include "views/Action_iElements.h"
#include "views/CProjectView.h"
#include "views/CViewText.h"
#include "views/ioleConnector.h"

namespace {

// Action and status text for each answer of CheckLinkParent.
struct LinkOutcome {
    int Action;
    CViewText Text;
};

LinkOutcome linkOutcome(int code) {
    switch (code) {
    case link_replaced:
        return {CProjectViewDragDropAction::action_link, text_link_replaces};
    case link_done:
        return {CProjectViewDragDropAction::action_link, text_link_adds};
    case link_already_parent:
        return {CProjectViewDragDropAction::action_none, text_link_exists};
    case link_would_loop:
        return {CProjectViewDragDropAction::action_none, text_link_loops};
    default:
        return {CProjectViewDragDropAction::action_none, text_link_refused};
    }
}

std::string linkText(CViewText text, const iElement& dragged, const iElement& target) {
    return qvrFormatMessage(EStringTable::Get(text), {dragged.GetName(), target.GetName()});
}

std::string groupText(CViewText text, const iElementGroup& group) {
    return qvrFormat(EStringTable::Load(text).c_str(), group.GetName().c_str());
}

} // namespace

CProjectVDDA_Standard::CProjectVDDA_Standard(CProjectView& view, const ioleConnector& source, CPoint start)
    : CProjectViewDragDropAction(view), StartPoint(start) {
    iProject& project = View.GetProject();
    Elements.reserve(source.Elements.size());
    for (const std::string& name : source.Elements)
        if (iElement* element = project.FindElement(name)) Elements.emplace_back(element);
    Groups.reserve(source.Groups.size());
    for (const std::string& name : source.Groups)
        if (iElementGroup* group = project.FindGroup(name)) Groups.emplace_back(group);
    OriginalPos = start;
    if (Elements.size() == 1 && Groups.empty()) {
        qvrTraceVerbose("*** NOTE[CProjectVDDA_Standard::CProjectVDDA_Standard()]: Only one element is about "
                        "being dragged and dropped :)\n");
        OriginalPos = Elements.front().Get()->GetPanePosition();
    } else if (Groups.size() == 1 && Elements.empty()) {
        OriginalPos = Groups.front().Get()->GetPanePos();
    }
    CurrentPos = OriginalPos;
}

void CProjectVDDA_Standard::SetGesture(CDragGesture gesture) {
    if (gesture == Gesture) return;
    Gesture = gesture;
    LastPoint.reset();
}

bool CProjectVDDA_Standard::isDragged(const iBase* object) const {
    for (const auto& element : Elements)
        if (element.Get() == object) return true;
    for (const auto& group : Groups)
        if (group.Get() == object) return true;
    return false;
}

iElement* CProjectVDDA_Standard::draggedElement() const {
    for (const auto& element : Elements)
        if (element.Get()) return element.Get();
    return nullptr;
}

std::vector<iElement*> CProjectVDDA_Standard::GetElements() const {
    std::vector<iElement*> elements;
    for (const auto& element : Elements)
        if (element.Get()) elements.push_back(element.Get());
    return elements;
}

CPoint CProjectVDDA_Standard::GetOffset() const {
    return CurrentPos - OriginalPos;
}

CProjectVDDA_Standard::Target CProjectVDDA_Standard::findTarget(CPoint point) const {
    Target target;
    const iProject& project = View.GetProject();
    for (const auto& group : project.GetGroups())
        if (!isDragged(group.get()) && group->HitTest(point)) {
            target.Group = group.get();
            return target;
        }
    if (Gesture != CDragGesture::Link) return target;
    for (iElement* element : project.GetElements())
        if (!isDragged(element) && View.IsShown(*element) && element->HitTest(point, hit_icon, nullptr)) {
            target.Element = element;
            return target;
        }
    return target;
}

int CProjectVDDA_Standard::decideLink(iElement& dragged, iElement& target) {
    const LinkOutcome outcome = linkOutcome(target.CheckLinkParent(&dragged));
    View.SetStatusText(linkText(outcome.Text, dragged, target));
    return outcome.Action;
}

void CProjectVDDA_Standard::moveBy(CPoint delta) {
    if (delta == CPoint{}) return;
    for (const auto& element : Elements)
        if (iElement* dragged = element.Get())
            dragged->SetPanePosition(dragged->GetPanePosition() + delta, false);
    for (const auto& group : Groups)
        if (iElementGroup* dragged = group.Get()) dragged->SetPanePos(dragged->GetPanePos() + delta);
}

void CProjectVDDA_Standard::PutBack() {
    moveBy(OriginalPos - CurrentPos);
    CurrentPos = OriginalPos;
}

int CProjectVDDA_Standard::OnDragOver(CPoint point) {
    if (LastPoint && *LastPoint == point) return CurrentAction;
    LastPoint = point;
    TargetElement.Set(nullptr);
    TargetGroup.Set(nullptr);
    bool follow = true;
    bool targetFound = false;
    iElement* dragged = draggedElement();
    if (dragged && Gesture != CDragGesture::Copy) {
        const Target target = findTarget(point);
        if (target.Group) {
            targetFound = true;
            TargetGroup.Set(target.Group);
            CurrentAction = action_add_to_group;
            View.SetStatusText(groupText(text_add_to_group_over, *target.Group));
        } else if (target.Element) {
            targetFound = true;
            TargetElement.Set(target.Element);
            CurrentAction = decideLink(*dragged, *target.Element);
            if (CurrentAction == action_link) {
                PutBack();
                follow = false;
            }
        }
    }
    if (!targetFound) {
        CurrentAction = action_move;
        View.SetStatusText(EStringTable::Load(text_reposition_over));
    }
    if (follow) {
        moveBy(point - CurrentPos);
        CurrentPos = point;
    }
    return CurrentAction;
}

bool CProjectVDDA_Standard::cancel() {
    PutBack();
    View.SetStatusText(EStringTable::Load(text_cancelled));
    return false;
}

bool CProjectVDDA_Standard::OnDrop(int action) {
    if (action == action_move && (!LastPoint || *LastPoint == StartPoint)) action = action_none;
    switch (action) {
    case action_add_to_group:
        return dropIntoGroup();
    case action_move:
        return dropMove();
    case action_link:
        return dropLink();
    default:
        return cancel();
    }
}

bool CProjectVDDA_Standard::dropIntoGroup() {
    iElementGroup* group = TargetGroup.Get();
    const std::vector<iElement*> elements = GetElements();
    if (!group || elements.empty()) return cancel();
    PutBack();
    for (iElement* element : elements)
        group->AddMember(element, true);
    iProject& project = View.GetProject();
    project.SetChanged(true);
    project.Notify(iElementGroup::event_group_changed, {.Object = group});
    View.SetStatusText(groupText(text_added_to_group, *group));
    return true;
}

bool CProjectVDDA_Standard::dropMove() {
    const CPoint offset = GetOffset();
    if (offset == CPoint{}) return cancel();
    std::vector<Action_iElementsMove::Placement> placements;
    for (iElement* element : GetElements()) {
        const CPoint to = element->GetPanePosition();
        placements.push_back({element->GetName(), false, (to - offset), to});
    }
    for (const auto& group : Groups)
        if (iElementGroup* moved = group.Get()) {
            const CPoint to = moved->GetPanePos();
            placements.push_back({moved->GetName(), true, (to - offset), to});
        }
    if (placements.empty()) return cancel();
    PutBack();
    auto* move = new Action_iElementsMove(View.GetProject(), std::move(placements));
    if (!View.GetProject().GetActionManager().Do(move)) {
        delete move;
        return cancel();
    }
    View.SetStatusText(EStringTable::Load(text_objects_moved));
    return true;
}

bool CProjectVDDA_Standard::dropLink() {
    iElement* dragged = draggedElement();
    iElement* target = TargetElement.Get();
    if (!dragged || !target) return cancel();
    PutBack();
    auto* link = new Action_iElementLink(View.GetProject(), target->GetName(), dragged->GetName(),
                                         Action_iElementLink::Kind::Link);
    if (!View.GetProject().GetActionManager().Do(link)) {
        delete link;
        return cancel();
    }
    View.SetStatusText(linkText(text_link_done, *dragged, *target));
    return true;
}
