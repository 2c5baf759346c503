#include "model/iElement.h"

#include "foundation/qvrString.h"
#include "foundation/qvrTrace.h"
#include "imaging/EImage.h"
#include "model/hMenu.h"
#include "model/iElementContainer.h"
#include "model/iFactory.h"
#include "model/iObjectFrontEnd.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>

namespace {

constexpr long iconHitRadiusSquared = 256;
constexpr int parentArrowSize = 15;
constexpr int gridArrowSize = 11;
constexpr double linkEndCut = 18.0;
constexpr double linkWidth = 3.0;

long tickCount() {
    using namespace std::chrono;
    return static_cast<long>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

// True when the text is a non-empty run of decimal digits.
bool isDecimalNumber(std::string_view text) {
    if (text.empty()) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    return true;
}

} // namespace

iElement::iElement(std::string name) : iObjectBase(std::move(name)) {}

iElement::~iElement() {
    ProjectUnlink();
    ClearNotifiers();
    Grid.SetTarget(nullptr);
    while (iActiveValue* value = GetFirstValue())
        value->Unlink();
}

// ---------------------------------------------------------------- naming

bool iElement::SetName(const std::string& name, bool notify) {
    const std::string formerName = GetName();
    if (!iObjectBase::SetName(name, notify)) return false;
    if (notify && GetName() != formerName) {
        NotifyModified(nullptr, true);
        if (Project) Project->OnNameChanged(*this);
    }
    return true;
}

bool iElement::SetName(const std::string& name) {
    if (!Project) return true;
    if (Project->FindElement(name)) {
        qvrTrace("*** NOTE[iElement::SetName()]: Can't rename \"%s\" (%s) into \"%s\": Object with that name "
                 "already exists.\n",
                 GetName().c_str(), GetElementType().c_str(), name.c_str());
        return false;
    }
    qvrTrace("*** NOTE[iElement::SetName()]: Will rename \"%s\" into \"%s\"...\n", GetName().c_str(),
             name.c_str());
    Project->RemoveElement(ProjectEntry);
    ProjectEntry = nullptr;
    return true;
}

void iElement::FixName() {
    if (!Project) return;
    if (ProjectEntry) Project->RemoveElement(ProjectEntry);
    ProjectEntry = Project->AddElement(*this);
    if (ProjectEntry) return;
    StoreName(qvrFormat("%s naming error #%ld", GetName().c_str(), tickCount()));
    ProjectEntry = Project->AddElement(*this);
}

// ---------------------------------------------------------------- user interface

bool iElement::OnContextMenu(CPoint point, CWnd* window) {
    hMenu menu;
    BuildContextMenu(menu);
    const unsigned command = iObjectFrontEnd::Get().TrackPopupMenu(menu, point, window);
    return command != 0 && RunMenuCommand(command);
}

void iElement::BuildContextMenu(hMenu& menu) {
    if (PropertyDialog) {
        menu.AppendItem(command_properties, "Properties to front").Default = true;
        menu.AppendItem(command_close_properties, "Close Properties");
    } else {
        menu.AppendItem(command_properties, "Properties").Default = true;
    }
    menu.AppendItem(command_new_view, "New view");
    hMenu& values = menu.AppendSubMenu("Value types");
    unsigned command = command_first_value;
    for (iActiveValue* value = GetFirstValue(); value; value = value->GetNextValue())
        values.AppendItem(command++, value->GetName()).Checked = value->IsDisplayed();
    if (HasMenuAdditions()) {
        menu.AppendSeparator();
        AddMenuItems(menu, command_first_addition);
    }
}

bool iElement::RunMenuCommand(unsigned command) {
    switch (command) {
    case command_properties:
        OnProperties();
        return true;
    case command_close_properties:
        iObjectFrontEnd::Get().CloseProperties(*this);
        return true;
    case command_new_view:
        OnNewView();
        return true;
    default:
        break;
    }
    if (command >= command_first_addition) return OnMenuCommand(command);
    unsigned index = command_first_value;
    for (iActiveValue* value = GetFirstValue(); value; value = value->GetNextValue(), ++index) {
        if (index != command) continue;
        value->SetDisplayed(!value->IsDisplayed());
        value->DisplayChanged();
        return true;
    }
    return false;
}

void iElement::AddMenuItems(hMenu&, unsigned) {}

bool iElement::OnMenuCommand(unsigned) {
    return false;
}

// ---------------------------------------------------------------- grids

bool iElement::SetGrid(iElement* element) {
    if (element && !element->IsGrid()) return false;
    if (element == Grid.Get()) return true;
    Grid.Set(element);
    OnGridChanged();
    return true;
}

iElement* iElement::GetGrid() {
    iElement* grid = Grid.Get();
    if (grid && !grid->IsGrid()) {
        Grid.Set(nullptr);
        return nullptr;
    }
    return grid;
}

void iElement::OnGridChanged() {
    NotifyChanged(nullptr, false);
}

// ---------------------------------------------------------------- class information

iFactoryProducerType* iElement::GetProducerType() const {
    iFactoryProducer* producer = GetProducer();
    return producer ? &producer->GetType() : nullptr;
}

std::string iElement::GetElementClass() const {
    iFactoryProducerType* type = GetProducerType();
    return type ? type->GetName() : std::string();
}

std::string iElement::GetElementType() const {
    iFactoryProducer* producer = GetProducer();
    return producer ? producer->GetName() : std::string();
}

void iElement::doSaveData(qvrCTreeData&, hReport&) {}

void iElement::doLoadData(const qvrCTreeData&, hReport&) {}

// ---------------------------------------------------------------- graph callbacks

iElementLink* iElement::CreateLink(iElement* parent) {
    return new iElementLink(parent, this);
}

void iElement::OnChildLinked(iElement* child) {
    Notify(event_child_linked, {.Object = child});
}

void iElement::OnChildUnlinked(iElement* child) {
    Notify(event_child_unlinked, {.Object = child});
}

void iElement::OnParentLinked(iElement* parent) {
    Notify(event_parent_linked, {.Object = parent});
    if (Project) Project->SetChanged(true);
    NotifyChanged(nullptr, true);
}

void iElement::OnParentUnlinked(iElement* parent) {
    Notify(event_parent_unlinked, {.Object = parent});
    if (Project) Project->SetChanged(true);
    NotifyChanged(nullptr, true);
}

void iElement::OnParentRedraw(iElement*, const EFrameRange* stamp) {
    NotifyChanged(stamp, true);
}

void iElement::OnParentModified(iElement*, const EFrameRange* stamp) {
    NotifyModified(stamp, true);
}

void iElement::OnValueChanged(iActiveValue*, const EFrameRange* range) {
    NotifyChanged(range, true);
}

void iElement::OnValueRenamed(iActiveValue*) {
    NotifyModified(nullptr, true);
}

void iElement::OnValueAdded(iActiveValue* value) {
    Notify(event_value_added, {.Object = value});
}

void iElement::OnValueRemoved(iActiveValue* value) {
    Notify(event_value_removed, {.Object = value});
}

long iElement::GetCurrentFrame() const {
    return Project ? Project->GetCurrentFrame() : 0;
}

// ---------------------------------------------------------------- render contract

bool iElement::checkConfigured(iRenderStatus& result) {
    if (IsConfigured()) return true;
    const std::string text =
        qvrFormatMessage(EStringTable::Get(text_not_configured), {GetName(), GetElementType()});
    result.SetError(render_not_configured, this, text);
    return false;
}

void iElement::setAborted(iRenderResult& result) {
    result.SetError(render_aborted, this, text_aborted);
}

bool iElement::Render(EImage& image, iRenderResult& result, iRenderRequest& request) {
    {
        qvrCSingleLock lock(Lock);
        lock.Lock();
        bool ready = true;
        if (!checkConfigured(result)) {
            result.Rect = {};
            ready = false;
        } else if (request.IsAborted()) {
            setAborted(result);
            ready = false;
        }
        if (!ready) {
            image.Clear();
            return false;
        }
    }
    if (!doRender(image, result, request)) {
        image.Clear();
        return false;
    }
    if (request.IsAborted()) {
        setAborted(result);
        image.Clear();
        return false;
    }
    return true;
}

bool iElement::QueryImageSize(iImageSizeResult& result, long frame) {
    qvrCSingleLock lock(Lock);
    lock.Lock();
    if (!checkConfigured(result)) return false;
    lock.Unlock();
    const bool done = doQueryImageSize(result, frame);
    lock.Lock();
    if (!done) return false;
    if (!(LastImageSize == result.Size)) LastImageSize = result.Size;
    return true;
}

EImageSize iElement::GetLastImageSize() {
    qvrCSingleLock lock(Lock);
    lock.Lock();
    return LastImageSize;
}

bool iElement::doQueryImageSize(iImageSizeResult&, long) {
    return true;
}

bool iElement::doRender(EImage&, iRenderResult&, iRenderRequest&) {
    return true;
}

// ---------------------------------------------------------------- links

int iElement::LinkParent(iElement* parent) {
    if (!parent) return link_refused;
    const int max = GetMaxParents();
    if (parent == this) {
        qvrTrace("*** WARNING[iElement::LinkParent()]: Tried to link myself !\n");
        return link_refused;
    }
    if (parent->Project != Project) {
        qvrTrace("*** WARNING[iElement::LinkParent()]: Tried to link to object from other project !\n");
        return link_refused;
    }
    if (max == 0) return link_refused;
    if (HasParent(parent)) {
        qvrTrace("*** WARNING[iElement::LinkParent()]: Tried to link a parent twice !\n");
        return link_already_parent;
    }
    if (IsParentOf(parent)) {
        qvrTrace("*** ERROR[iElement::LinkParent()]: Tried to link a parent that is any child !\n");
        return link_would_loop;
    }
    int result = link_done;
    if (max == 1 && FirstParentLink) {
        delete FirstParentLink;
        result = link_replaced;
    }
    CreateLink(parent)->Link(true, nullptr);
    return result;
}

int iElement::CheckLinkParent(iElement* parent) const {
    if (!parent) return link_refused;
    if (parent == this) {
        qvrTrace(
            "*** WARNING[iElement::CheckLinkParent()]: Check whether object might be parent of itself !\n");
        return link_refused;
    }
    if (HasParent(parent)) return link_already_parent;
    if (IsParentOf(parent)) return link_would_loop;
    switch (GetMaxParents()) {
    case 0:
        return link_refused;
    case 1:
        return FirstParentLink ? link_replaced : link_done;
    default:
        return link_done;
    }
}

bool iElement::UnlinkParent(iElement* parent) {
    iElementLink* link = GetParentLink(parent);
    if (!link) {
        qvrTrace("*** ERROR[iElement::UnlinkParent()]: The requested object wasn't a parent of mine !\n");
        return false;
    }
    delete link;
    return true;
}

void iElement::UnlinkAllParents() {
    while (FirstParentLink)
        delete FirstParentLink;
}

void iElement::UnlinkAllChildren() {
    while (FirstChildLink)
        delete FirstChildLink;
}

bool iElement::IsParentOf(const iElement* element) const {
    if (element == this) return true;
    for (iElementLink* link = FirstChildLink; link; link = link->GetNextOfParent())
        if (link->GetChild()->IsParentOf(element)) return true;
    return false;
}

bool iElement::IsChildOf(const iElement* element) const {
    if (element == this) return true;
    for (iElementLink* link = FirstParentLink; link; link = link->GetNextOfChild())
        if (link->GetParent()->IsChildOf(element)) return true;
    return false;
}

iElementLink* iElement::GetParentLink(const iElement* parent) const {
    for (iElementLink* link = FirstParentLink; link; link = link->GetNextOfChild())
        if (link->GetParent() == parent) return link;
    return nullptr;
}

iElementLink* iElement::GetChildLink(const iElement* child) const {
    for (iElementLink* link = FirstChildLink; link; link = link->GetNextOfParent())
        if (link->GetChild() == child) return link;
    return nullptr;
}

// ---------------------------------------------------------------- project

bool iElement::ProjectLink(iElementContainer* project, bool keepName) {
    if (project == Project) return true;
    if (!keepName && project && project->FindElement(GetName())) {
        qvrTrace(
            "*** NOTE[iElement::ProjectLink()]: Can't add element \"%s\" to new project: Object with this "
            "name already exists.\n",
            GetName().c_str());
        return false;
    }
    ProjectUnlink();
    return enterProject(project);
}

void iElement::ProjectUnlink() {
    Notify(event_close_windows);
    SetGrid(nullptr);
    if (Group && Project) Project->LeaveGroup(*this);
    Group = nullptr;
    SetSelected(false);
    UnlinkAllChildren();
    UnlinkAllParents();
    leaveProject();
}

void iElement::leaveProject() {
    if (!Project) return;
    iElementContainer* former = Project;
    former->RemoveElement(ProjectEntry);
    ProjectEntry = nullptr;
    Project = nullptr;
    former->Notify(event_child_unlinked, {.Object = this});
    former->SetChanged(true);
}

bool iElement::enterProject(iElementContainer* project) {
    bool renamed = false;
    if (project) {
        ProjectEntry = project->AddElement(*this);
        if (!ProjectEntry) {
            ProjectEntry = enterUnderNumberedName(project);
            renamed = true;
        }
        Project = project;
        project->Notify(event_child_linked, {.Object = this});
        project->SetChanged(true);
    }
    Notify(event_project_changed);
    if (renamed) NotifyModified(nullptr, true);
    return true;
}

iProjectEntry* iElement::enterUnderNumberedName(iElementContainer* project) {
    std::string base = GetName();
    long number = 1;
    size_t dot = base.rfind('.');
    if (dot != std::string::npos && dot + 1 == base.size()) {
        base.erase(dot);
        dot = std::string::npos;
    }
    if (dot != std::string::npos && isDecimalNumber(std::string_view(base).substr(dot + 1))) {
        number = std::strtol(base.c_str() + dot + 1, nullptr, 10) + 1;
        base.erase(dot);
    }
    for (;; ++number) {
        StoreName(qvrFormat("%s.%ld", base.c_str(), number));
        if (iProjectEntry* entry = project->AddElement(*this)) return entry;
    }
}

// ---------------------------------------------------------------- changes

void iElement::NotifyChanged(const EFrameRange* stamp, bool propagate) {
    Notify(event_changed, {.Range = stamp});
    if (!propagate) return;
    for (iElementLink* link = FirstChildLink; link; link = link->GetNextOfParent())
        link->GetChild()->OnParentRedraw(this, stamp);
}

void iElement::NotifyModified(const EFrameRange* stamp, bool propagate) {
    Notify(event_modified, {.Range = stamp});
    if (!propagate) return;
    for (iElementLink* link = FirstChildLink; link; link = link->GetNextOfParent())
        link->GetChild()->OnParentModified(this, stamp);
}

// ---------------------------------------------------------------- pane

void iElement::SetPanePosition(CPoint point, bool notify) {
    if (point == PanePosition) return;
    if (!PaneRect.IsRectEmpty()) {
        const long dx = point.x - PanePosition.x;
        const long dy = point.y - PanePosition.y;
        PaneRect = {PaneRect.left + dx, PaneRect.top + dy, PaneRect.right + dx, PaneRect.bottom + dy};
    }
    PanePosition = point;
    if (!notify) return;
    Notify(event_position_changed);
    if (Project) Project->OnPositionChanged(*this);
}

unsigned iElement::HitTest(CPoint point, unsigned flags, iElement** hit) const {
    if (flags & hit_icon) {
        const long dx = point.x - PanePosition.x;
        const long dy = point.y - PanePosition.y;
        if (dx * dx + dy * dy <= iconHitRadiusSquared) return hit_icon;
    }
    if (flags & hit_parent_link) {
        for (iElementLink* link = FirstParentLink; link; link = link->GetNextOfChild()) {
            const LinkHit where = hitTestLink(point, link->GetParent(), parentArrowSize);
            if (where != LinkHit::None) {
                if (hit) *hit = link->GetParent();
                return linkHitCode(where, hit_parent_link);
            }
        }
    }
    if (flags & hit_grid_link) {
        if (iElement* grid = Grid.Get()) {
            const LinkHit where = hitTestLink(point, grid, gridArrowSize);
            if (where != LinkHit::None) {
                if (hit) *hit = grid;
                return linkHitCode(where, hit_grid_link);
            }
        }
    }
    return hit_none;
}

// The line runs from `from`'s centre to this element's, cut by 18 pixels at
// the start and by 18 plus the arrow at the far end, where the arrow head
// widens from the line's width to the arrow size at its base.
iElement::LinkHit iElement::hitTestLink(CPoint point, const iElement* from, int arrowSize) const {
    const double ax = static_cast<double>(from->PanePosition.x);
    const double ay = static_cast<double>(from->PanePosition.y);
    const double dx = static_cast<double>(PanePosition.x) - ax;
    const double dy = static_cast<double>(PanePosition.y) - ay;
    const double length = std::hypot(dx, dy);
    if (length <= 0.0) return LinkHit::None;
    const double px = static_cast<double>(point.x) - ax;
    const double py = static_cast<double>(point.y) - ay;
    const double along = (px * dx + py * dy) / length;
    const double across = std::fabs(px * dy - py * dx) / length;
    const double tip = length - linkEndCut;
    const double headBase = tip - arrowSize;
    if (along < linkEndCut || along > tip) return LinkHit::None;
    if (along <= headBase) return across <= linkWidth / 2 ? LinkHit::Line : LinkHit::None;
    const double halfWidth = std::max(linkWidth / 2, (tip - along) / 2);
    return across <= halfWidth ? LinkHit::Head : LinkHit::None;
}

// Turns the answer of a link test into the answer of HitTest.
unsigned iElement::linkHitCode(LinkHit where, unsigned linkFlag) {
    switch (where) {
    case LinkHit::Line:
        return linkFlag;
    case LinkHit::Head:
        return linkFlag | hit_arrow_head;
    default:
        return hit_none;
    }
}

// ---------------------------------------------------------------- selection

void iElement::SetSelected(bool selected) {
    if (selected == Selected || !Project) return;
    iElementContainer& project = *Project;
    if (selected) {
        SelectedPrev = project.LastSelected;
        SelectedNext = nullptr;
        (SelectedPrev ? SelectedPrev->SelectedNext : project.FirstSelected) = this;
        project.LastSelected = this;
        ++project.SelectedCount;
    } else {
        (SelectedPrev ? SelectedPrev->SelectedNext : project.FirstSelected) = SelectedNext;
        (SelectedNext ? SelectedNext->SelectedPrev : project.LastSelected) = SelectedPrev;
        SelectedPrev = SelectedNext = nullptr;
        --project.SelectedCount;
    }
    Selected = selected;
    project.Notify(event_project_changed, {.Object = this});
}
