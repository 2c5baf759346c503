#pragma once
// A group of elements under one icon on the project pane, which can collapse
// them. A member belongs to at most one group; group names are unique in a
// project without regard to case. The project owns its groups and keeps them
// in order of creation. Main thread only.

#include "foundation/qvrGeometry.h"
#include "model/iObjectBase.h"

#include <string>

class hMenu;
class hReport;
class iElement;
class iProject;
class qvrCTreeData;

class iElementGroup : public iObjectBase {
public:
    static constexpr unsigned command_collapse = 1;
    static constexpr unsigned command_rename = 2;
    // The project's event after a collapse, expand or rename.
    static constexpr long event_group_changed = 6;

    iElementGroup(std::string name, iProject& project);
    // Empties the group first.
    ~iElementGroup() override;

    // A member of another group moves here with `force` and is refused without;
    // a member of this group gives true at once.
    bool AddMember(iElement* element, bool force);
    void RemoveMember(iElement* element);
    void RemoveAll();
    iElement* GetFirstMember() const { return FirstMember; }
    long GetMemberCount() const { return MemberCount; }

    void SetSelected(bool selected) { Selected = selected; }
    bool IsSelected() const { return Selected; }
    // True within the icon: the squared distance from the position is below 1090.
    bool HitTest(CPoint point) const;
    CPoint GetPanePos() const { return PanePos; }
    void SetPanePos(CPoint point) { PanePos = point; }
    const CRect& GetPaneRect() const { return PaneRect; }
    void SetPaneRect(const CRect& rect) { PaneRect = rect; }
    bool IsCollapsed() const { return Collapsed; }
    void SetCollapsed(bool collapsed);
    // "name (members)", as the pane shows it.
    std::string GetLabel() const;

    // Whether `name` may be given to this group: free in the project, or its own.
    bool IsNameFree(const std::string& name) const;
    bool Rename(const std::string& name);
    void BuildContextMenu(hMenu& menu) const;
    // Collapses or expands for command_collapse; command_rename is the front end's dialog.
    bool RunMenuCommand(unsigned command);

    void Load(const qvrCTreeData& block, hReport& report);
    void Save(qvrCTreeData& block, hReport& report) const;

    iProject& GetProject() const { return Project; }

private:
    iElement* FirstMember = nullptr;
    iElement* LastMember = nullptr;
    long MemberCount = 0;
    iProject& Project;
    CPoint PanePos;
    bool Collapsed = false;
    CRect PaneRect;
    bool Selected = false;
};
