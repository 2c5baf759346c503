#include "model/hPropertySession.h"

#include "foundation/hReport.h"
#include "model/Action.h"
#include "model/iElement.h"
#include "model/iElementData.h"
#include "model/iProject.h"

namespace {

std::unique_ptr<qvrCTreeData> settingsOf(iElement& element) {
    auto block = std::make_unique<qvrCTreeData>("Settings");
    hReportRoot report("Properties");
    iElementData::SaveSettings(element, *block, report);
    return block;
}

} // namespace

hPropertySession::hPropertySession(iElement& element)
    : Element(element), OldName(element.GetName()), Before(settingsOf(element)) {}

bool hPropertySession::Commit() {
    auto* owner = dynamic_cast<iProject*>(Element.GetProject());
    iProject& project = owner ? *owner : iProject::GetStandard();
    auto action = std::make_unique<Action_iElement_Settings>(project, OldName, Before->Clone(), Element);
    if (!action->HasChanges() || !project.GetActionManager().Do(action.get())) return false;
    action.release();
    return true;
}

void hPropertySession::Cancel() {
    if (Element.GetName() != OldName) Element.SetName(OldName, true);
    hReportRoot report("Properties");
    iElementData::LoadSettings(Element, *Before, report);
    Element.NotifyModified(nullptr, true);
}
