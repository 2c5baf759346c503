#include "views/CProjectView.h"

#include "foundation/EPrefsDiskIO.h"
#include "foundation/EUserInterface.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrGeometry.h"
#include "foundation/qvrTrace.h"
#include "model/Action.h"
#include "model/hMenu.h"
#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"
#include "views/Action_iElements.h"
#include "views/CProjectCutBuffer.h"
#include "views/CProjectVDDA_AddElement.h"
#include "views/CProjectVDDA_Standard.h"
#include "views/CProjectViewSettings.h"
#include "views/CViewHost.h"
#include "views/CViewText.h"
#include "views/ioleConnector.h"

#include <algorithm>

namespace {

constexpr long MinutesToMilliseconds = 60000;

// A click on an object: CTRL toggles it, a plain click makes it the only selected one.
template <class Object, class Clear> void selectByClick(Object& object, bool adding, Clear clearSelection) {
    if (adding) {
        object.SetSelected(!object.IsSelected());
    } else if (!object.IsSelected()) {
        clearSelection();
        object.SetSelected(true);
    }
}

std::vector<std::string> namesOf(const std::vector<iElement*>& elements) {
    std::vector<std::string> names;
    for (const iElement* element : elements)
        names.push_back(element->GetName());
    return names;
}

} // namespace

// ---------------------------------------------------------------- life

CProjectView::ProjectListener::ProjectListener(iProject& project, CProjectView& view)
    : iNotifier(&project), View(view) {}

iNotifyAnswer CProjectView::ProjectListener::OnEvent(long code, const iEventArgument&) {
    View.OnProjectEvent(code);
    return iNotifyAnswer::Keep;
}

CProjectView::CProjectView(iProject& project, CProjectViewSettings& settings, CViewHost& host)
    : Project(project), Settings(settings), Host(host), Listener(project, *this) {
    Mapping.ZoomX = settings.DispZoomX;
    Mapping.ZoomY = settings.DispZoomY;
    Mapping.Center = settings.CenterPoint;
}

CProjectView::~CProjectView() {
    DragAction.reset();
    SaveSettings();
}

void CProjectView::SaveSettings() const {
    Settings.DispZoomX = Mapping.ZoomX;
    Settings.DispZoomY = Mapping.ZoomY;
    Settings.CenterPoint = Mapping.Center;
}

void CProjectView::SetWindowRect(const CRect& rect) {
    Settings.Window = rect;
}

CRect CProjectView::GetWindowRect() const {
    return Settings.Window;
}

void CProjectView::SetStatusText(std::string text) {
    StatusText = std::move(text);
    EUserInterface::Get().SetStatusText(StatusText);
}

void CProjectView::redraw() {
    if (ComplexCounter == 0) Host.Invalidate();
}

// ---------------------------------------------------------------- zoom

void CProjectView::SetCenterPoint(CPoint point) {
    Mapping.Center = point;
    redraw();
}

void CProjectView::zoomTo(double x, double y, unsigned text) {
    Mapping.ZoomX = x;
    Mapping.ZoomY = y;
    SetStatusText(qvrFormat(EStringTable::Load(text).c_str(), x, y));
    redraw();
}

void CProjectView::ZoomIn() {
    zoomTo(Mapping.ZoomX * ZoomStep, Mapping.ZoomY * ZoomStep, text_zoomed_in);
}

void CProjectView::ZoomOut() {
    zoomTo(Mapping.ZoomX / ZoomStep, Mapping.ZoomY / ZoomStep, text_zoomed_out);
}

void CProjectView::ResetZoom() {
    zoomTo(1.0, 1.0, text_zoom_reset);
}

void CProjectView::SetDragMode(CDragMode mode) {
    DragMode = mode;
}

// ---------------------------------------------------------------- selection

bool CProjectView::IsShown(const iElement& element) const {
    const iElementGroup* group = element.GetGroup();
    return !group || !group->IsCollapsed();
}

iElementGroup* CProjectView::groupAt(CPoint pane) const {
    for (const auto& group : Project.GetGroups())
        if (group->HitTest(pane)) return group.get();
    return nullptr;
}

iElement* CProjectView::elementAt(CPoint pane) const {
    for (iElement* element : Project.GetElements())
        if (IsShown(*element) && element->HitTest(pane, hit_icon, nullptr)) return element;
    return nullptr;
}

void CProjectView::clearSelection() {
    Project.ClearSelection();
    Project.ClearGroupSelection();
}

std::vector<iElement*> CProjectView::selectedElements() const {
    std::vector<iElement*> selected;
    for (iElement* element = Project.GetFirstSelected(); element; element = element->GetNextSelected())
        selected.push_back(element);
    return selected;
}

bool CProjectView::SelectAt(CPoint client, unsigned keys) {
    const CPoint pane = ClientToPane(client);
    const bool adding = (keys & key_control) != 0;
    auto clear = [this] { clearSelection(); };
    bool hit = true;
    if (iElement* element = elementAt(pane))
        selectByClick(*element, adding, clear);
    else if (iElementGroup* group = groupAt(pane))
        selectByClick(*group, adding, clear);
    else {
        hit = false;
        if (!adding) clearSelection();
    }
    redraw();
    return hit;
}

void CProjectView::SelectInRect(const CRect& client, unsigned keys) {
    const CRect shown = NormalizeRect(client);
    const CPoint topLeft = ClientToPane({shown.left, shown.top});
    const CPoint bottomRight = ClientToPane({shown.right, shown.bottom});
    const CRect pane{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y};
    if (!(keys & key_control)) clearSelection();
    for (iElement* element : Project.GetElements())
        if (IsShown(*element) && PtInRect(pane, element->GetPanePosition())) element->SetSelected(true);
    for (const auto& group : Project.GetGroups())
        if (PtInRect(pane, group->GetPanePos())) group->SetSelected(true);
    redraw();
}

// ---------------------------------------------------------------- dragging

ioleConnector CProjectView::selectionConnector() const {
    ioleConnector connector;
    connector.Marker = EStringTable::Load(text_own_data_marker);
    connector.Elements = namesOf(selectedElements());
    for (iElementGroup* group = Project.GetFirstSelectedGroup(); group;
         group = Project.GetNextSelectedGroup(group))
        connector.Groups.push_back(group->GetName());
    return connector;
}

std::string CProjectView::BeginDrag(CPoint client) {
    const ioleConnector connector = selectionConnector();
    if (!connector.HasObjects()) return {};
    Dragging = true;
    DragStart = ClientToPane(client);
    return connector.Serialize();
}

bool CProjectView::DeleteSelection() {
    const ioleConnector connector = selectionConnector();
    if (!connector.HasObjects()) {
        SetStatusText(EStringTable::Load(text_select_for_cut));
        return false;
    }
    return DropOnTrash(ioleConnector::Format, connector.Serialize());
}

void CProjectView::EndDrag() {
    Dragging = false;
}

CDropEffect CProjectView::DragEnter(std::string_view format, const std::string& data, CPoint client,
                                    unsigned keys) {
    DragLeave();
    const std::optional<ioleConnector> connector = ioleConnector::Parse(format, data);
    if (!connector) {
        qvrTraceVerbose("*** WARNING[CProjectView::OnDragEnter()]: Unknown OLE type (no connector).\n");
        return CDropEffect::None;
    }
    if (connector->HasNewObject()) {
        DragAction =
            std::make_unique<CProjectVDDA_AddElement>(*this, connector->NewClass, connector->NewType);
    } else if (Dragging && connector->Marker == EStringTable::Get(text_own_data_marker)) {
        auto standard = std::make_unique<CProjectVDDA_Standard>(*this, *connector, DragStart);
        OwnDrag = standard.get();
        DragAction = std::move(standard);
    } else {
        return CDropEffect::None;
    }
    return DragOver(client, keys);
}

CDropEffect CProjectView::effectOf(int action) const {
    if (action == CProjectViewDragDropAction::action_none) return CDropEffect::None;
    if (action == CProjectViewDragDropAction::action_link) return CDropEffect::Link;
    if (!OwnDrag) return CDropEffect::Copy; // a new object
    return Gesture == CDragGesture::Copy ? CDropEffect::Copy : CDropEffect::Move;
}

CDropEffect CProjectView::DragOver(CPoint client, unsigned keys) {
    if (!DragAction) return CDropEffect::None;
    Gesture = GetGesture(keys);
    if (OwnDrag) OwnDrag->SetGesture(Gesture);
    LastAction = DragAction->OnDragOver(ClientToPane(client));
    redraw();
    return effectOf(LastAction);
}

bool CProjectView::Drop(CPoint client, unsigned keys) {
    if (!DragAction) return false;
    DragOver(client, keys);
    const bool copies = OwnDrag && Gesture == CDragGesture::Copy;
    const bool changed = copies ? dropCopies(ClientToPane(client)) : DragAction->OnDrop(LastAction);
    DragAction.reset();
    OwnDrag = nullptr;
    redraw();
    return changed;
}

bool CProjectView::dropCopies(CPoint pane) {
    const CPoint offset = OwnDrag->GetOffset();
    const std::vector<iElement*> elements = OwnDrag->GetElements();
    OwnDrag->PutBack();
    hReportRoot report("Copy");
    if (pane == DragStart || elements.empty() ||
        !pasteAt(CProjectCutBuffer::Write(elements), offset, report)) {
        SetStatusText(EStringTable::Load(text_cancelled));
        return false;
    }
    SetStatusText(EStringTable::Load(text_objects_copied));
    return true;
}

void CProjectView::DragLeave() {
    if (DragAction) DragAction->OnDragLeave();
    DragAction.reset();
    OwnDrag = nullptr;
    redraw();
}

bool CProjectView::DropOnTrash(std::string_view format, const std::string& data) {
    const std::optional<ioleConnector> connector = ioleConnector::Parse(format, data);
    if (!connector || !connector->HasObjects()) return false;
    DragLeave();
    bool changed = false;
    for (const std::string& name : connector->Groups)
        if (iElementGroup* group = Project.FindGroup(name)) {
            Project.DeleteGroup(group);
            changed = true;
        }
    std::vector<std::string> names;
    for (const std::string& name : connector->Elements)
        if (Project.FindElement(name)) names.push_back(name);
    if (!names.empty()) changed = deleteElements(names) || changed;
    redraw();
    return changed;
}

std::string CProjectView::GetTrashTip() {
    return EStringTable::Load(text_trash_tip);
}

bool CProjectView::deleteElements(const std::vector<std::string>& names) {
    qvrCAction* action = names.size() == 1
                             ? static_cast<qvrCAction*>(new Action_iElementDelete(Project, names.front()))
                             : new Action_iElementDeleteMulti(Project, names);
    if (Project.GetActionManager().Do(action)) return true;
    delete action;
    return false;
}

// ---------------------------------------------------------------- groups

iElementGroup* CProjectView::CreateGroup() {
    const std::vector<iElement*> members = selectedElements();
    if (members.empty()) {
        SetStatusText(EStringTable::Load(text_select_for_group));
        return nullptr;
    }
    std::string name;
    do {
        name = qvrFormat(EStringTable::Load(text_group_name).c_str(), ++GroupCounter);
    } while (Project.FindGroup(name));
    iElementGroup* group = Project.AddGrp(name, true);
    long sumX = 0;
    long sumY = 0;
    for (iElement* member : members) {
        group->AddMember(member, true);
        sumX += member->GetPanePosition().x;
        sumY += member->GetPanePosition().y;
    }
    const long count = static_cast<long>(members.size());
    group->SetPanePos({sumX / count, sumY / count});
    Project.ClearGroupSelection();
    group->SetSelected(true);
    Project.Notify(iElementGroup::event_group_changed, {.Object = group});
    redraw();
    return group;
}

void CProjectView::setGroupsCollapsed(bool collapsed) {
    for (iElementGroup* group = Project.GetFirstSelectedGroup(); group;
         group = Project.GetNextSelectedGroup(group))
        group->SetCollapsed(collapsed);
    redraw();
}

std::string CProjectView::GetRenameGroupTitle() {
    return EStringTable::Load(text_rename_group_title);
}

std::string CProjectView::GetRenameGroupPrompt(const iElementGroup& group, bool isNew) {
    if (isNew) return EStringTable::Load(text_new_group_prompt);
    return qvrFormat(EStringTable::Load(text_rename_group_prompt).c_str(), group.GetName().c_str());
}

bool CProjectView::RenameGroup(const std::string& groupName, const std::string& name,
                               std::string& complaint) {
    complaint.clear();
    iElementGroup* group = Project.FindGroup(groupName);
    if (!group || name.empty()) return false;
    if (!group->IsNameFree(name)) {
        complaint = EStringTable::Load(text_group_name_taken);
        return false;
    }
    const bool renamed = group->Rename(name);
    redraw();
    return renamed;
}

// ---------------------------------------------------------------- commands

bool CProjectView::CenterObjects() {
    std::vector<CPoint> places;
    for (const iElement* element : selectedElements())
        places.push_back(element->GetPanePosition());
    for (iElementGroup* group = Project.GetFirstSelectedGroup(); group;
         group = Project.GetNextSelectedGroup(group))
        places.push_back(group->GetPanePos());
    if (places.empty()) {
        SetStatusText(EStringTable::Load(text_select_for_group));
        return false;
    }
    centerOn(places);
    return true;
}

void CProjectView::CenterAllObjects() {
    std::vector<CPoint> places;
    for (const iElement* element : Project.GetElements())
        if (IsShown(*element)) places.push_back(element->GetPanePosition());
    for (const auto& group : Project.GetGroups())
        places.push_back(group->GetPanePos());
    if (!places.empty()) centerOn(places);
}

void CProjectView::centerOn(const std::vector<CPoint>& places) {
    auto [left, right] =
        std::minmax_element(places.begin(), places.end(), [](CPoint a, CPoint b) { return a.x < b.x; });
    auto [top, bottom] =
        std::minmax_element(places.begin(), places.end(), [](CPoint a, CPoint b) { return a.y < b.y; });
    SetCenterPoint({(left->x + right->x) / 2, (top->y + bottom->y) / 2});
}

bool CProjectView::FindLinkAt(CPoint client, std::string& child, std::string& parent) const {
    const CPoint pane = ClientToPane(client);
    for (iElement* element : Project.GetElements()) {
        iElement* hit = nullptr;
        if (IsShown(*element) && element->HitTest(pane, hit_parent_link, &hit) != hit_none && hit) {
            child = element->GetName();
            parent = hit->GetName();
            return true;
        }
    }
    return false;
}

void CProjectView::BuildLinkMenu(hMenu& menu) {
    menu.AppendItem(command_delete_link, EStringTable::Load(text_delete_link));
}

bool CProjectView::DeleteLink(const std::string& child, const std::string& parent) {
    auto* unlink = new Action_iElementLink(Project, child, parent, Action_iElementLink::Kind::Unlink);
    if (!Project.GetActionManager().Do(unlink)) {
        delete unlink;
        return false;
    }
    redraw();
    return true;
}

std::vector<iElement*> CProjectView::selectionToCopy() {
    std::vector<iElement*> selected = selectedElements();
    if (selected.empty()) SetStatusText(EStringTable::Load(text_select_for_cut));
    return selected;
}

bool CProjectView::Copy(std::string& buffer) {
    const std::vector<iElement*> selected = selectionToCopy();
    if (selected.empty()) return false;
    buffer = CProjectCutBuffer::Write(selected);
    SetStatusText(EStringTable::Load(text_objects_copied));
    return true;
}

bool CProjectView::Cut(std::string& buffer) {
    const std::vector<iElement*> selected = selectionToCopy();
    if (selected.empty()) return false;
    std::string text = CProjectCutBuffer::Write(selected);
    if (!deleteElements(namesOf(selected))) return false;
    buffer = std::move(text);
    redraw();
    return true;
}

bool CProjectView::Paste(const std::string& buffer, hReportRoot& report) {
    return pasteAt(buffer, Project.GetPaneGrid(), report);
}

bool CProjectView::pasteAt(const std::string& buffer, CPoint offset, hReportRoot& report) {
    std::unique_ptr<qvrCTreeData> blocks = CProjectCutBuffer::Read(buffer, Project, offset, report);
    if (!blocks) return false;
    auto* paste = new Action_iElementsPaste(Project, std::move(blocks));
    if (!Project.GetActionManager().Do(paste)) {
        delete paste;
        return false;
    }
    Project.ClearGroupSelection();
    redraw();
    return true;
}

// ---------------------------------------------------------------- autosave

void CProjectView::RestartAutoSave(bool saveNow) {
    Host.KillTimer(AutoSaveTimer);
    std::string file;
    long interval = 0;
    if (!EPrefsDiskIO::GetAutoSave(file, interval, AutoSaveLockTimeoutMs)) return;
    if (saveNow)
        if (iProjectDocument* document = Project.GetDocument()) document->AutoSave(file);
    if (interval == 0) return;
    qvrTraceVerbose("*** NOTE[CProjectView::RestartAutoSave()]: Setting autosave timer to %ld mins !\n",
                    interval);
    Host.SetTimer(AutoSaveTimer, interval * MinutesToMilliseconds);
}

void CProjectView::OnTimer(unsigned id) {
    if (id == AutoSaveTimer) RestartAutoSave(true);
}

// ---------------------------------------------------------------- project events

void CProjectView::OnProjectEvent(long code) {
    if (code == iProject::event_complex_begin) {
        ++ComplexCounter;
        qvrTraceVerbose(
            "*** NOTE[CProjectView::OnProjectEvent()]: Complex project operation initiated: Counter = "
            "%ld.\n",
            ComplexCounter);
        return;
    }
    if (code == iProject::event_complex_end) {
        if (ComplexCounter > 0) --ComplexCounter;
        qvrTraceVerbose(
            "*** NOTE[CProjectView::OnProjectEvent()]: Complex project operation finished: Counter = %ld\n",
            ComplexCounter);
    }
    redraw();
}

// ---------------------------------------------------------------- drawing

CProjectViewScene CProjectView::GetScene() const {
    return CProjectViewScene::Build(Project, Mapping, Settings.GridSize);
}
