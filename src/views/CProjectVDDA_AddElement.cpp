#include "views/CProjectVDDA_AddElement.h"

#include "model/Action.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "views/CProjectView.h"
#include "views/CViewText.h"
#include "views/hFreeName.h"

CProjectVDDA_AddElement::CProjectVDDA_AddElement(CProjectView& view, std::string className,
                                                 std::string typeName)
    : CProjectViewDragDropAction(view), ClassName(std::move(className)), TypeName(std::move(typeName)) {}

int CProjectVDDA_AddElement::OnDragOver(CPoint point) {
    LastPoint = point;
    View.SetStatusText(EStringTable::Load(text_add_object_over));
    return action_move;
}

bool CProjectVDDA_AddElement::OnDrop(int action) {
    iProject& project = View.GetProject();
    const std::string name =
        hFreeName(EStringTable::Load(text_new_object_name),
                  [&](const std::string& candidate) { return project.FindElement(candidate) != nullptr; });
    auto* add = new Action_iElement_AddNew(project, name, ClassName, TypeName);
    if (action == action_none || !project.GetActionManager().Do(add)) {
        delete add;
        View.SetStatusText(EStringTable::Load(text_cancelled));
        return false;
    }
    iElement* element = project.FindElement(name);
    element->SetPanePosition(LastPoint, true);
    project.ClearSelection();
    project.ClearGroupSelection();
    element->SetSelected(true);
    View.SetStatusText(EStringTable::Load(text_object_added));
    return true;
}
