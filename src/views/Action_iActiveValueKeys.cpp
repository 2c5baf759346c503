#include "views/Action_iActiveValueKeys.h"

#include "model/iActiveValue.h"
#include "model/iElement.h"
#include "model/iProject.h"

#include <algorithm>

Action_iActiveValueKeys::Action_iActiveValueKeys(iProject& project, std::string title)
    : Project(project), Title(std::move(title)) {}

Action_iActiveValueKeys::~Action_iActiveValueKeys() = default;

void Action_iActiveValueKeys::AddValue(iActiveValue& value) {
    if (HasValue(value)) return;
    auto* element = dynamic_cast<iElement*>(value.GetOwner());
    if (!element) return;
    Edits.push_back({element->GetName(), value.GetName(), copyKeys(value), nullptr});
}

bool Action_iActiveValueKeys::HasValue(const iActiveValue& value) const {
    return std::any_of(Edits.begin(), Edits.end(),
                       [this, &value](const Edit& edit) { return find(edit) == &value; });
}

bool Action_iActiveValueKeys::Finish() {
    bool changed = false;
    for (Edit& edit : Edits) {
        const iActiveValue* value = find(edit);
        if (!value) continue;
        edit.After = copyKeys(*value);
        changed = changed || !sameKeys(*edit.Before, *edit.After);
    }
    return changed;
}

iActiveValue* Action_iActiveValueKeys::find(const Edit& edit) const {
    const iElement* element = Project.FindElement(edit.Element);
    if (!element) return nullptr;
    for (iActiveValue* value = element->GetFirstValue(); value; value = value->GetNextValue())
        if (value->GetName() == edit.Value) return value;
    return nullptr;
}

bool Action_iActiveValueKeys::apply(std::unique_ptr<iActiveValue> Edit::*keys) {
    bool applied = false;
    for (const Edit& edit : Edits) {
        iActiveValue* value = find(edit);
        if (!value || !(edit.*keys)) continue;
        value->AssignKeys(*(edit.*keys));
        applied = true;
    }
    return applied;
}

std::unique_ptr<iActiveValue> Action_iActiveValueKeys::copyKeys(const iActiveValue& value) {
    auto copy = std::make_unique<iActiveValue>(value.GetName(), 0.0, false);
    copy->AssignKeys(value);
    return copy;
}

bool Action_iActiveValueKeys::sameKeys(const iActiveValue& one, const iActiveValue& other) {
    if (one.GetKeyCount() != other.GetKeyCount() || one.IsConstantWanted() != other.IsConstantWanted())
        return false;
    for (long index = 0; index < one.GetKeyCount(); ++index)
        if (one.GetKey(index)->frame != other.GetKey(index)->frame ||
            one.GetKey(index)->value != other.GetKey(index)->value)
            return false;
    return true;
}
