#include "views/CSplineBarTreeEntry.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"
#include "views/CSplineBarTree.h"

#include <algorithm>

namespace {

enum : EStringId { textLabel = 46620, textLabelInGroup = 46621, textLostElement = 46622 };

} // namespace

void CSplineBarTreeEntry::SetCheck(bool checked) {
    if (Check != Fixed) Check = checked ? Checked : Unchecked;
}

bool CSplineBarTreeEntry::ToggleCheck() {
    if (Check == Fixed) return false;
    Check = Check == Checked ? Unchecked : Checked;
    return true;
}

// ---------------------------------------------------------------- values

CSplineBarValue::CSplineBarValue(iActiveValue* value) : CSplineBarTreeEntry(Unchecked), iNotifier(value) {}

iActiveValue* CSplineBarValue::GetValue() const {
    return static_cast<iActiveValue*>(GetTarget());
}

std::string CSplineBarValue::GetLabel() const {
    const iActiveValue* value = GetValue();
    return value ? value->GetName() : EStringTable::Load(textLostElement);
}

// ---------------------------------------------------------------- elements

CSplineBarElement::CSplineBarElement(CSplineBarTree& tree, iElement* element)
    : CSplineBarTreeEntry(Fixed), iNotifier(element), Tree(tree) {
    // The owner's list holds the newest value first.
    for (iActiveValue* value = element->GetLastValue(); value; value = value->GetPreviousValue())
        addValue(value);
}

iElement* CSplineBarElement::GetElement() const {
    return static_cast<iElement*>(GetTarget());
}

std::string CSplineBarElement::GetLabel() const {
    const iElement* element = GetElement();
    if (!element) return EStringTable::Load(textLostElement);
    const std::string type = element->GetElementType();
    if (const iElementGroup* group = element->GetGroup())
        return qvrFormat(EStringTable::Load(textLabelInGroup).c_str(), element->GetName().c_str(),
                         type.c_str(), group->GetName().c_str());
    return qvrFormat(EStringTable::Load(textLabel).c_str(), element->GetName().c_str(), type.c_str());
}

CSplineBarValue* CSplineBarElement::FindValue(const iActiveValue* value) const {
    for (const auto& entry : Values)
        if (entry->GetValue() == value) return entry.get();
    return nullptr;
}

void CSplineBarElement::addValue(iActiveValue* value) {
    if (value && !FindValue(value)) Values.push_back(std::make_unique<CSplineBarValue>(value));
}

void CSplineBarElement::removeValue(const iActiveValue* value) {
    std::erase_if(Values, [value](const auto& entry) { return entry->GetValue() == value; });
}

void CSplineBarElement::releaseElement() {
    SetTarget(nullptr);
    Values.clear();
}

iNotifyAnswer CSplineBarElement::OnEvent(long code, const iEventArgument& argument) {
    switch (code) {
    case iElement::event_value_added:
        addValue(static_cast<iActiveValue*>(argument.Object));
        break;
    case iElement::event_value_removed:
        removeValue(static_cast<iActiveValue*>(argument.Object));
        break;
    case iElement::event_project_changed:
        if (GetElement()->GetProject() != &Tree.GetProject()) releaseElement();
        break;
    case iBase::event_modified:
        break;
    default:
        return iNotifyAnswer::Keep;
    }
    Tree.EntriesChanged();
    return iNotifyAnswer::Keep;
}

iTargetGoneAnswer CSplineBarElement::OnTargetDestroyed() {
    Values.clear();
    Tree.EntriesChanged();
    return iTargetGoneAnswer::Detach;
}
