#pragma once
// The entries of the spline bar's tree: an element entry for each object of
// the shown collection, with a value entry below it for each of the object's
// animated values. Each entry watches its object through a notifier: an
// element entry follows its element's values as they come and go, and lets
// the element go when it dies or moves to another project (it then shows the
// label of a lost object). A value entry has a check state of 0 or 1 that
// decides whether the curve view shows the value; an element entry has the
// state that can't be toggled. Main thread only, like every window.

#include "model/iBase.h"

#include <memory>
#include <string>
#include <vector>

class CSplineBarTree;
class iActiveValue;
class iElement;

class CSplineBarTreeEntry {
public:
    enum CheckState : int { Unchecked = 0, Checked = 1, Fixed = 3 };

    explicit CSplineBarTreeEntry(int check) : Check(check) {}
    virtual ~CSplineBarTreeEntry() = default;
    CSplineBarTreeEntry(const CSplineBarTreeEntry&) = delete;
    CSplineBarTreeEntry& operator=(const CSplineBarTreeEntry&) = delete;

    virtual std::string GetLabel() const = 0;
    virtual bool IsElementEntry() const = 0;

    int GetCheck() const { return Check; }
    // Sets 0 or 1; an entry of state 3 keeps it.
    void SetCheck(bool checked);
    // Turns 0 into 1 and back; false for an entry of state 3.
    bool ToggleCheck();

private:
    int Check;
};

class CSplineBarValue : public CSplineBarTreeEntry, private iNotifier {
public:
    explicit CSplineBarValue(iActiveValue* value);

    std::string GetLabel() const override;
    bool IsElementEntry() const override { return false; }
    // The value, or null once it has gone.
    iActiveValue* GetValue() const;
};

class CSplineBarElement : public CSplineBarTreeEntry, private iNotifier {
public:
    // An entry of `tree` for the element, with an unchecked entry for each of its values.
    CSplineBarElement(CSplineBarTree& tree, iElement* element);

    // "name (type)", with " [Group name]" for a member of a group; "<???}" once the element has gone.
    std::string GetLabel() const override;
    bool IsElementEntry() const override { return true; }
    // The element, or null once it has gone or left the tree's project.
    iElement* GetElement() const;

    // The value entries, in the order in which the element made its values.
    const std::vector<std::unique_ptr<CSplineBarValue>>& GetValues() const { return Values; }
    CSplineBarValue* FindValue(const iActiveValue* value) const;

    bool Expanded = false;

private:
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override;
    iTargetGoneAnswer OnTargetDestroyed() override;
    void addValue(iActiveValue* value);
    void removeValue(const iActiveValue* value);
    // Lets the element go: the entry stays as the label of a lost object.
    void releaseElement();

    CSplineBarTree& Tree;
    std::vector<std::unique_ptr<CSplineBarValue>> Values;
};
