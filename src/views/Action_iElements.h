#pragma once
// The project view's edits that can be taken back: moving icons, linking and
// unlinking two elements, pasting copied elements. Like every action they
// hold elements and groups by name, since an object may be gone and back
// again between the steps. User-interface thread only.

#include "foundation/qvrGeometry.h"
#include "model/Action.h"

#include <memory>
#include <string>
#include <vector>

// Moves elements and groups on the pane.
class Action_iElementsMove : public Action {
public:
    struct Placement {
        std::string Name;
        bool IsGroup = false;
        CPoint From;
        CPoint To;
    };

    Action_iElementsMove(iProject& owner, std::vector<Placement> placements);
    std::string GetTitle() const override { return "Move objects"; }

protected:
    bool doMakeAction(qvrCTreeData&) override { return place(&Placement::To); }
    bool doUndoAction(qvrCTreeData&) override { return place(&Placement::From); }

private:
    // Every object must be there; then each goes to its point.
    bool place(CPoint Placement::*point);

    iProject& project;
    std::vector<Placement> placements;
};

// Makes or breaks the link from a parent to a child. The child's block is
// kept before the change, so that taking it back restores the order of the
// parents and the values that a link carries.
class Action_iElementLink : public Action_iElement {
public:
    enum class Kind { Link, Unlink };

    Action_iElementLink(iProject& owner, std::string child, std::string parent, Kind kind);
    std::string GetTitle() const override { return kind == Kind::Link ? "Link objects" : "Delete link"; }

protected:
    bool doSetupAction(qvrCTreeData& tree) override;
    bool doMakeAction(qvrCTreeData& tree) override;
    bool doUndoAction(qvrCTreeData& tree) override;

private:
    std::string parentName;
    Kind kind;
    // The parent that the link replaces, for a child with room for one parent only.
    std::string formerParent;
};

// Enters copied elements, whose blocks bear names that are free in the
// project and whose links lead only among themselves; taken back, they are deleted.
class Action_iElementsPaste : public Action {
public:
    Action_iElementsPaste(iProject& owner, std::unique_ptr<qvrCTreeData> elements);
    std::string GetTitle() const override { return "Paste objects"; }

    // The names of the pasted elements.
    std::vector<std::string> GetNames() const;

protected:
    bool doMakeAction(qvrCTreeData& tree) override;
    bool doUndoAction(qvrCTreeData& tree) override;

private:
    void deletePasted();

    iProject& project;
    std::unique_ptr<qvrCTreeData> blocks;
};
