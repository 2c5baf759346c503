#pragma once
// An edit of the keys of one or more animated values as one step of undo:
// each value's keys before and after the edit are kept as copies, and the
// values are found again by their element's name and their own name, since
// an element may be gone and back between the steps. The edit itself is made
// by the editor before the action is done; doing it again sets the keys
// after. User-interface thread only.

#include "model/qvrCActionManager.h"

#include <memory>
#include <string>
#include <vector>

class iActiveValue;
class iProject;

class Action_iActiveValueKeys : public qvrCAction {
public:
    Action_iActiveValueKeys(iProject& project, std::string title);
    ~Action_iActiveValueKeys() override;

    // Keeps the value's keys as they are before the edit; once per value.
    void AddValue(iActiveValue& value);
    bool HasValue(const iActiveValue& value) const;
    // Takes the keys after the edit; false when no value changed.
    bool Finish();

    std::string GetTitle() const override { return Title; }
    bool Do() override { return apply(&Edit::After); }
    bool Undo() override { return apply(&Edit::Before); }
    bool Redo() override { return apply(&Edit::After); }

private:
    struct Edit {
        std::string Element;
        std::string Value;
        std::unique_ptr<iActiveValue> Before;
        std::unique_ptr<iActiveValue> After;
    };

    iActiveValue* find(const Edit& edit) const;
    bool apply(std::unique_ptr<iActiveValue> Edit::*keys);
    static std::unique_ptr<iActiveValue> copyKeys(const iActiveValue& value);
    static bool sameKeys(const iActiveValue& one, const iActiveValue& other);

    iProject& Project;
    std::string Title;
    std::vector<Edit> Edits;
};
