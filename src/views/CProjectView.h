#pragma once
// The project view's logic, apart from drawing: a front end feeds it the
// pointer in window coordinates with the modifier keys, and it answers with
// drop effects, status texts and the scene to draw. It keeps the zoom and
// the centre of the view, the drag mode, the drag in progress, the counter
// of complex project operations (no redraw until it is back at 0) and the
// autosave timer. Edits of elements go through the project's undo manager;
// group edits are immediate. Objects are looked up by name when a command
// runs, so a command on an object that has gone ends without a change.
// Main thread only.

#include "foundation/qvrGeometry.h"
#include "model/iBase.h"
#include "views/CDragMode.h"
#include "views/CPaneMapping.h"
#include "views/CProjectViewScene.h"
#include "views/ioleConnector.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class CProjectViewDragDropAction;
class CProjectViewSettings;
class CProjectVDDA_Standard;
class CViewHost;
class hMenu;
class hReportRoot;
class iElement;
class iElementGroup;
class iProject;

class CProjectView {
public:
    static constexpr unsigned AutoSaveTimer = 19;
    static constexpr int AutoSaveLockTimeoutMs = 2000;
    static constexpr double ZoomStep = 1.25;
    // The command of the link menu.
    static constexpr unsigned command_delete_link = 1;

    // Takes zoom and centre from the settings.
    CProjectView(iProject& project, CProjectViewSettings& settings, CViewHost& host);
    // Writes the view's state into the settings.
    ~CProjectView();
    CProjectView(const CProjectView&) = delete;
    CProjectView& operator=(const CProjectView&) = delete;

    iProject& GetProject() const { return Project; }

    // --- The status line: kept here and shown through the user-interface hook.
    const std::string& GetStatusText() const { return StatusText; }
    void SetStatusText(std::string text);

    // --- Geometry and zoom.
    void SetClientSize(CSize size) { Mapping.Client = size; }
    const CPaneMapping& GetMapping() const { return Mapping; }
    CPoint ClientToPane(CPoint point) const { return Mapping.ToPane(point); }
    CPoint PaneToClient(CPoint point) const { return Mapping.ToClient(point); }
    void SetCenterPoint(CPoint point);
    void ZoomIn();
    void ZoomOut();
    void ResetZoom();
    // The frame's rectangle, kept with the settings.
    void SetWindowRect(const CRect& rect);
    CRect GetWindowRect() const;
    // Writes zoom, centre and frame into the settings.
    void SaveSettings() const;

    // --- Drag modes.
    void SetDragMode(CDragMode mode);
    CDragMode GetDragMode() const { return DragMode; }
    CDragGesture GetGesture(unsigned keys) const { return CDragModes::GestureFor(DragMode, keys); }

    // --- Selection.
    // Selects what lies under the point; CTRL adds it or takes it away. True when something lies there.
    bool SelectAt(CPoint client, unsigned keys);
    // Selects the shown elements and the groups whose icons' centres lie in the rectangle; CTRL adds them.
    void SelectInRect(const CRect& client, unsigned keys);
    // False for an element hidden in a collapsed group.
    bool IsShown(const iElement& element) const;

    // --- Dragging. A drag starts here with the selection; the data goes to
    // the platform and comes back to DragEnter of whichever view it reaches.
    // Empty data: nothing is selected, nothing to drag.
    std::string BeginDrag(CPoint client);
    // The drag this view started has ended, wherever it was dropped.
    void EndDrag();
    CDropEffect DragEnter(std::string_view format, const std::string& data, CPoint client, unsigned keys);
    CDropEffect DragOver(CPoint client, unsigned keys);
    // True when the project changed.
    bool Drop(CPoint client, unsigned keys);
    void DragLeave();
    // Objects dropped on the trash can: elements are deleted, groups dissolved.
    bool DropOnTrash(std::string_view format, const std::string& data);
    static std::string GetTrashTip();
    // The selection goes as if dropped on the trash can; with nothing selected the status line asks for a
    // selection.
    bool DeleteSelection();

    // --- Groups.
    // A new group of the selected elements, or null (with a status text) when nothing is selected.
    iElementGroup* CreateGroup();
    void CollapseGroups() { setGroupsCollapsed(true); }
    void ExpandGroups() { setGroupsCollapsed(false); }
    // The rename dialog's title and prompt; `isNew` for a group just made.
    static std::string GetRenameGroupTitle();
    static std::string GetRenameGroupPrompt(const iElementGroup& group, bool isNew);
    // False when the name is refused; `complaint` then says why, if anything is to be said.
    bool RenameGroup(const std::string& group, const std::string& name, std::string& complaint);

    // --- Commands.
    // Puts the middle of the selected objects in the middle of the view.
    bool CenterObjects();
    // Puts the middle of every shown object in the middle of the view, as after opening a project.
    void CenterAllObjects();
    // The parent link under the point, by the names of its two ends.
    bool FindLinkAt(CPoint client, std::string& child, std::string& parent) const;
    static void BuildLinkMenu(hMenu& menu);
    bool DeleteLink(const std::string& child, const std::string& parent);
    // Each gives the cut buffer's text; false (with a status text) when nothing is selected.
    bool Copy(std::string& buffer);
    bool Cut(std::string& buffer);
    // Pastes the buffer's elements one grid step away from where they were;
    // false when the buffer is damaged (the reasons are in `report`) or the paste fails.
    bool Paste(const std::string& buffer, hReportRoot& report);

    // --- Autosave: kills the timer, reads the preferences (nothing more when
    // they are locked), saves now if asked and a document exists, and sets the
    // timer again unless the interval is 0.
    void RestartAutoSave(bool saveNow);
    void OnTimer(unsigned id);

    // --- Project events.
    long GetComplexCounter() const { return ComplexCounter; }

    // --- Drawing.
    CProjectViewScene GetScene() const;

private:
    class ProjectListener : public iNotifier {
    public:
        ProjectListener(iProject& project, CProjectView& view);
        iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override;

    private:
        CProjectView& View;
    };

    void OnProjectEvent(long code);
    void redraw();
    void zoomTo(double x, double y, unsigned text);
    void clearSelection();
    void setGroupsCollapsed(bool collapsed);
    std::vector<iElement*> selectedElements() const;
    ioleConnector selectionConnector() const;
    void centerOn(const std::vector<CPoint>& places);
    // The selected elements; with none the status line asks for a selection.
    std::vector<iElement*> selectionToCopy();
    iElementGroup* groupAt(CPoint pane) const;
    iElement* elementAt(CPoint pane) const;
    bool deleteElements(const std::vector<std::string>& names);
    bool pasteAt(const std::string& buffer, CPoint offset, hReportRoot& report);
    bool dropCopies(CPoint pane);
    CDropEffect effectOf(int action) const;

    iProject& Project;
    CProjectViewSettings& Settings;
    CViewHost& Host;
    ProjectListener Listener;
    CPaneMapping Mapping;
    CDragMode DragMode = CDragMode::Move;
    CDragGesture Gesture = CDragGesture::Move;
    // What the drag in progress would do at its last position.
    int LastAction = 0;
    std::unique_ptr<CProjectViewDragDropAction> DragAction;
    // Set while DragAction is the standard drag of this view's own objects.
    CProjectVDDA_Standard* OwnDrag = nullptr;
    bool Dragging = false;
    CPoint DragStart;
    long ComplexCounter = 0;
    long GroupCounter = 0;
    std::string StatusText;
};
