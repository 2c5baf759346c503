#pragma once
// What an element needs of the project that holds it: the name index, the
// selection list, the project's change flag and its notices. iProject derives
// from this class; a test can give a small double. The element keeps the
// selection list itself (the links lie in the elements), the container only
// holds its ends. Main thread only, like every change of project structure.

#include "model/iBase.h"

#include <string>

class iElement;
// An entry of the project's name index; only the project looks inside.
class iProjectEntry;

class iElementContainer : public iBase {
public:
    using iBase::iBase;

    // The element of that name, compared without regard to case, or null.
    virtual iElement* FindElement(const std::string& name) const = 0;
    // Enters the element under its present name; null when the name is taken.
    virtual iProjectEntry* AddElement(iElement& element) = 0;
    // Takes an entry out of the index; the element itself stays.
    virtual void RemoveElement(iProjectEntry* entry) = 0;
    // Marks the project's document modified (or not).
    virtual void SetChanged(bool changed) = 0;
    // An element's name changed: marks the project changed and fires project event 10.
    virtual void OnNameChanged(iElement& element) = 0;
    // An element moved on the pane: marks the project changed and fires project event 10.
    virtual void OnPositionChanged(iElement& element) = 0;
    // Takes the element out of its group's member list.
    virtual void LeaveGroup(iElement& element) = 0;
    // The frame the user works at.
    virtual long GetCurrentFrame() const = 0;

    iElement* GetFirstSelected() const { return FirstSelected; }
    iElement* GetLastSelected() const { return LastSelected; }
    long GetSelectedCount() const { return SelectedCount; }

protected:
    // Forgets the selection without touching the elements (when they all go at once).
    void ForgetSelection() {
        FirstSelected = LastSelected = nullptr;
        SelectedCount = 0;
    }

private:
    friend class iElement;

    iElement* FirstSelected = nullptr;
    iElement* LastSelected = nullptr;
    long SelectedCount = 0;
};
