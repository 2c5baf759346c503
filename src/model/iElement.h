#pragma once
// An object of a project: a named node of the directed graph of parents and
// children, with its animated values, an event channel, a place on the
// project pane, and a picture for any frame. Pictures are pulled: a requester
// asks the last element of a chain with QueryImageSize and Render, and each
// element asks its parents for what it needs. Errors come back in the result
// records, never as exceptions.
//
// Threads: Render and QueryImageSize may run on any number of threads at once;
// the element's Lock only orders their configuration test against edits and
// is not held during doRender. Everything else (links, names, values, the
// pane, the selection) belongs to the main thread.

#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrGeometry.h"
#include "model/iActiveValue.h"
#include "model/iElementLink.h"
#include "model/iObjectBase.h"
#include "model/iRenderRequest.h"

#include <string>
#include <string_view>

class EImage;
class hMenu;
class hReport;
class iElementContainer;
class iElementGroup;
class iFactoryProducer;
class iFactoryProducerType;
class iProjectEntry;
class qvrCTreeData;

// Answers of LinkParent and CheckLinkParent.
enum iLinkCode : int {
    link_refused = 0,
    link_replaced = 1, // linked, and the former parent was let go
    link_done = 2,     // linked (CheckLinkParent: may be linked)
    link_already_parent = 3,
    link_would_loop = 4,
};

// Flags and answers of HitTest.
enum iHitTest : unsigned {
    hit_none = 0,
    hit_icon = 1,
    hit_parent_link = 2,
    hit_grid_link = 4,
    hit_arrow_head = 0x8000, // added to a link's answer
};

class iElement : public iObjectBase, public iActiveValueOwner {
public:
    // Events of an element (event_modified, 1, comes from iBase).
    static constexpr long event_child_linked = 2;
    static constexpr long event_child_unlinked = 3;
    static constexpr long event_parent_linked = 4;
    static constexpr long event_parent_unlinked = 5;
    static constexpr long event_project_changed = 6;
    static constexpr long event_changed = 7; // needs to be redrawn
    static constexpr long event_close_windows = 8;
    static constexpr long event_position_changed = 9;
    static constexpr long event_value_added = 10;
    static constexpr long event_value_removed = 11;
    static constexpr long event_redraw = 12; // without time stamp test
    static constexpr long event_collect_windows = 13;

    // Commands of the element's popup menu; a class's additions start at command_first_addition.
    static constexpr unsigned command_properties = 1;
    static constexpr unsigned command_close_properties = 2;
    static constexpr unsigned command_new_view = 3;
    static constexpr unsigned command_first_value = 100;
    static constexpr unsigned command_first_addition = 1000;

    explicit iElement(std::string name);
    // Leaves the project, lets every notifier go and drops the grid.
    ~iElement() override;

    // --- Naming. Names are unique within a project, without regard to case.
    using iBase::SetName;
    // As iBase::SetName; after a change with `notify`, NotifyModified and the project's notice.
    bool SetName(const std::string& name, bool notify) override;
    // Takes the entry out of the project's index, unless another element has the name.
    bool SetName(const std::string& name) override;
    // Enters the element in the project's index; a failure gives it a "naming error" name.
    void FixName() override;

    // --- User interface.
    // The element menu: "Properties" (or "Properties to front" and "Close
    // Properties"), "New view", "Value types", then the class's additions.
    bool OnContextMenu(CPoint point, CWnd* window) override;
    void BuildContextMenu(hMenu& menu);
    // Carries out a command of the element menu; true when something was done.
    bool RunMenuCommand(unsigned command);
    virtual bool HasMenuAdditions() const { return false; }
    virtual void AddMenuItems(hMenu& menu, unsigned firstId);
    virtual bool OnMenuCommand(unsigned id);
    // The front end tells the element of its open property dialog (null when closed).
    void SetPropertyDialog(CWnd* dialog) { PropertyDialog = dialog; }
    CWnd* GetPropertyDialog() const { return PropertyDialog; }

    // --- Grids.
    virtual bool AcceptsGrid() const { return false; }
    // Refuses an element that doesn't serve as a grid; null clears the grid.
    virtual bool SetGrid(iElement* element);
    // The grid, or null; a target that no longer serves as a grid is dropped.
    virtual iElement* GetGrid();
    virtual const iReference<iElement>& GetGridReference() const { return Grid; }
    virtual void OnGridChanged();
    virtual bool IsGrid() const { return false; }

    // --- What each class tells about itself.
    virtual bool IsConfigured() const { return true; }
    // Index of the element's icon in the shared image list.
    virtual int GetIcon() const { return 0; }
    virtual iFactoryProducer* GetProducer() const = 0;
    virtual iFactoryProducerType* GetProducerType() const;
    // The class text, such as "Modifier", and the type text, such as "Composer".
    virtual std::string GetElementClass() const;
    virtual std::string GetElementType() const;
    // 0 no parent, 1 one parent, 2 any number.
    virtual int GetMaxParents() const { return 1; }
    virtual bool HasObjectBlock() const { return false; }
    virtual std::string GetStateText() const { return {}; }

    // --- The class's own data in a project file.
    virtual void doSaveData(qvrCTreeData& block, hReport& report);
    virtual void doLoadData(const qvrCTreeData& block, hReport& report);

    // --- Graph callbacks, fired by links and values.
    // Makes the link to a new parent; not yet linked.
    virtual iElementLink* CreateLink(iElement* parent);
    virtual void OnChildLinked(iElement* child);
    virtual void OnChildUnlinked(iElement* child);
    virtual void OnParentLinked(iElement* parent);
    virtual void OnParentUnlinked(iElement* parent);
    virtual void OnParentRedraw(iElement* sender, const EFrameRange* stamp);
    virtual void OnParentModified(iElement* sender, const EFrameRange* stamp);
    void OnValueChanged(iActiveValue* value, const EFrameRange* range) override;
    virtual void OnValueRenamed(iActiveValue* value);
    void OnValueAdded(iActiveValue* value) override;
    void OnValueRemoved(iActiveValue* value) override;
    // Key selection and the like: nothing to redraw in the element's picture.
    void OnValueDisplayChanged(iActiveValue*) override {}
    long GetCurrentFrame() const override;

    // --- The render contract.
    // Delivers the picture for the request into `image`. Every render passes
    // here: configuration and abort tests before, abort test after.
    bool Render(EImage& image, iRenderResult& result, iRenderRequest& request);
    // The full-resolution size at the frame, remembered as the last size.
    bool QueryImageSize(iImageSizeResult& result, long frame);
    EImageSize GetLastImageSize();

    // --- Links.
    int LinkParent(iElement* parent);
    // What LinkParent would answer, without changing anything.
    int CheckLinkParent(iElement* parent) const;
    bool UnlinkParent(iElement* parent);
    void UnlinkAllParents();
    void UnlinkAllChildren();
    // Recursive, and true for the element itself.
    bool IsParentOf(const iElement* element) const;
    bool IsChildOf(const iElement* element) const;
    iElementLink* GetParentLink(const iElement* parent) const;
    iElementLink* GetChildLink(const iElement* child) const;
    bool HasParent(const iElement* element) const { return GetParentLink(element) != nullptr; }
    // The primary parent, or null.
    iElement* GetFirstParent() const { return FirstParentLink ? FirstParentLink->GetParent() : nullptr; }
    iElement* GetFirstChild() const { return FirstChildLink ? FirstChildLink->GetChild() : nullptr; }
    iElementLink* GetFirstParentLink() const { return FirstParentLink; }
    iElementLink* GetLastParentLink() const { return LastParentLink; }
    iElementLink* GetFirstChildLink() const { return FirstChildLink; }
    iElementLink* GetLastChildLink() const { return LastChildLink; }
    long GetParentCount() const { return ParentCount; }
    long GetChildCount() const { return ChildCount; }

    // --- The project.
    // Moves the element into `project` (null: out of any). Without `keepName` a
    // name taken there refuses the move; with it, a taken name gets a number.
    bool ProjectLink(iElementContainer* project, bool keepName);
    void ProjectUnlink();
    iElementContainer* GetProject() const { return Project; }
    iProjectEntry* GetProjectEntry() const { return ProjectEntry; }

    // --- Changes.
    // Event 7 (redraw); with `propagate` every child hears OnParentRedraw.
    void NotifyChanged(const EFrameRange* stamp, bool propagate);
    // Event 1 (modified); with `propagate` every child hears OnParentModified.
    void NotifyModified(const EFrameRange* stamp, bool propagate);

    // --- The project pane.
    void SetPanePosition(CPoint point, bool notify);
    CPoint GetPanePosition() const { return PanePosition; }
    CPoint GetCenter() const { return PanePosition; }
    const CRect& GetPaneRect() const { return PaneRect; }
    void SetPaneRect(const CRect& rect) { PaneRect = rect; }
    // Tests the icon (flag hit_icon), the parent links (hit_parent_link) and
    // the grid link (hit_grid_link); a link's far element goes to `hit`.
    unsigned HitTest(CPoint point, unsigned flags, iElement** hit) const;

    // --- Selection and groups.
    void SetSelected(bool selected);
    bool IsSelected() const { return Selected; }
    iElement* GetNextSelected() const { return SelectedNext; }
    iElement* GetPrevSelected() const { return SelectedPrev; }
    // Records the group; the group keeps its member list through the group links.
    void SetGroup(iElementGroup* group) { Group = group; }
    iElementGroup* GetGroup() const { return Group; }
    iElement* GetGroupNext() const { return GroupNext; }
    iElement* GetGroupPrev() const { return GroupPrev; }

    // --- The element's panel and property dialog, kept in the project file.
    const CRect& GetPropertiesPos() const { return PropertiesPos; }
    void SetPropertiesPos(const CRect& rect) { PropertiesPos = rect; }
    bool IsSetupShown() const { return SetupShown; }
    void SetSetupShown(bool shown) { SetupShown = shown; }

protected:
    // The class's size query; the base leaves the size untouched.
    virtual bool doQueryImageSize(iImageSizeResult& result, long frame);
    // The class's render; the base draws nothing.
    virtual bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request);

private:
    friend class iElementLink;
    friend class iElementGroup;

    // Steps 2 and 3 of a render or a size query, under Lock.
    bool checkConfigured(iRenderStatus& result);
    void setAborted(iRenderResult& result);
    void leaveProject();
    bool enterProject(iElementContainer* project);
    // Finds a free name "<base>.<n>" for a name taken in the project.
    iProjectEntry* enterUnderNumberedName(iElementContainer* project);
    enum class LinkHit { None, Line, Head };
    LinkHit hitTestLink(CPoint point, const iElement* from, int arrowSize) const;
    static unsigned linkHitCode(LinkHit where, unsigned linkFlag);

    iElementLink* FirstChildLink = nullptr;
    iElementLink* LastChildLink = nullptr;
    long ChildCount = 0;
    iElementLink* FirstParentLink = nullptr;
    iElementLink* LastParentLink = nullptr;
    long ParentCount = 0;
    iElementGroup* Group = nullptr;
    iElement* GroupPrev = nullptr;
    iElement* GroupNext = nullptr;
    bool Selected = false;
    iElement* SelectedPrev = nullptr;
    iElement* SelectedNext = nullptr;
    iReference<iElement> Grid;
    CWnd* PropertyDialog = nullptr;
    CRect PropertiesPos;
    CPoint PanePosition{-16, -16};
    CRect PaneRect;
    iElementContainer* Project = nullptr;
    iProjectEntry* ProjectEntry = nullptr;
    qvrCCriticalSection Lock;
    EImageSize LastImageSize;
    bool SetupShown = true;
};
