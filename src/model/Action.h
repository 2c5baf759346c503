#pragma once
// Actions on the elements of a project: add, rename, delete one, delete
// several, and the changes of a property dialog. An action keeps what it needs in a small tree, so that a
// deleted element can be made again through the factory with its whole state, links and keys included.
// Elements are held by name, never by pointer, since an element may be gone and back again. User-interface
// thread only.

#include "foundation/qvrCTreeData.h"
#include "model/qvrCActionManager.h"

#include <memory>
#include <string>
#include <vector>

class hReportRoot;
class iElement;
class iProject;

// An action with its tree: set up, made, undone and made again from the tree.
class Action : public qvrCAction {
public:
    Action();

    bool Do() override;
    bool Undo() override;
    bool Redo() override;

    bool IsDone() const { return done; }
    const qvrCTreeData& GetData() const { return data; }

protected:
    virtual bool doSetupAction(qvrCTreeData&) { return true; }
    virtual bool doUndoAction(qvrCTreeData& tree) = 0;
    virtual bool doMakeAction(qvrCTreeData& tree) = 0;

private:
    qvrCTreeData data;
    bool done = false;
};

// An action on one element of a project, held by its name.
class Action_iElement : public Action {
public:
    Action_iElement(iProject& owner, std::string name) : project(owner), objectName(std::move(name)) {}

protected:
    iElement* findObject() const;
    // Saves the element's whole block into the section of the tree.
    static bool saveInto(iElement& element, qvrCTreeData& section);
    // Makes the element again by class and type, enters it in the project and loads its block.
    iElement* remake(const std::string& name, const std::string& className, const std::string& subclassName,
                     const qvrCTreeData& section, const char* method);

    iProject& project;
    std::string objectName;
};

// Adds a new element made by the factory; undone, it is saved and deleted.
class Action_iElement_AddNew : public Action_iElement {
public:
    Action_iElement_AddNew(iProject& owner, std::string name, std::string classText, std::string typeText);
    std::string GetTitle() const override { return "Add object"; }

protected:
    bool doUndoAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;

private:
    std::string className;
    std::string subclassName;
};

class Action_iElement_Rename : public Action_iElement {
public:
    Action_iElement_Rename(iProject& owner, std::string from, std::string to);
    std::string GetTitle() const override { return "Rename object"; }

protected:
    bool doUndoAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;

private:
    std::string newName;
    std::string oldName;
};

class Action_iElementDelete : public Action_iElement {
public:
    using Action_iElement::Action_iElement;
    std::string GetTitle() const override { return "Delete object"; }

protected:
    bool doSetupAction(qvrCTreeData& tree) override;
    bool doUndoAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;

private:
    std::string className;
    std::string subclassName;
};

// Deletes several elements as one step.
class Action_iElementDeleteMulti : public Action_iElement {
public:
    Action_iElementDeleteMulti(iProject& owner, const std::vector<std::string>& names);
    std::string GetTitle() const override { return "Delete objects"; }

protected:
    bool doSetupAction(qvrCTreeData& tree) override;
    bool doUndoAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;

private:
    struct Record {
        std::string Name;
        std::string ClassName;
        std::string SubclassName;
    };
    bool restore(const Record& record, const qvrCTreeData& section);

    std::vector<Record> records;
};

// What a property dialog changed in one element: its name, values and own
// data before and after, taken when the dialog opened and when it was
// confirmed. Done, it only records: the dialog has already made the change.
class Action_iElement_Settings : public Action_iElement {
public:
    // `before` holds what iElementData::SaveSettings wrote when the dialog opened.
    Action_iElement_Settings(iProject& owner, std::string oldName, std::unique_ptr<qvrCTreeData> before,
                             iElement& element);
    std::string GetTitle() const override { return "Change properties"; }
    // Whether the element differs from what it was when the dialog opened.
    bool HasChanges() const;

protected:
    bool doUndoAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;

private:
    // Finds the element under `from`, names it `to` and loads `settings`.
    bool restore(const std::string& from, const std::string& to, const qvrCTreeData& settings);

    std::string oldName;
    std::unique_ptr<qvrCTreeData> before;
    qvrCTreeData after;
};
