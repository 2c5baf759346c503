#include "views/CProjectViewScene.h"

#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"

namespace {

const iElementGroup* collapsedGroupOf(const iElement& element) {
    const iElementGroup* group = element.GetGroup();
    return group && group->IsCollapsed() ? group : nullptr;
}

// Where lines to the element end: its icon, or the icon of its collapsed group.
CPoint lineEnd(const iElement& element) {
    const iElementGroup* group = collapsedGroupOf(element);
    return group ? group->GetPanePos() : element.GetPanePosition();
}

void addLine(CProjectViewScene& scene, const CPaneMapping& mapping, const iElement& from, const iElement& to,
             int arrowSize, bool isGridLink) {
    const iElementGroup* fromGroup = collapsedGroupOf(from);
    if (fromGroup && fromGroup == collapsedGroupOf(to)) return;
    scene.Lines.push_back(
        {mapping.ToClient(lineEnd(from)), mapping.ToClient(lineEnd(to)), arrowSize, isGridLink});
}

// The window positions of the grid lines along one axis that fall inside the window.
std::vector<long> gridLines(long paneExtent, long step, double zoom, long windowExtent,
                            long (*toWindow)(const CPaneMapping&, long), const CPaneMapping& mapping) {
    std::vector<long> lines;
    if (step <= 0 || static_cast<double>(step) * zoom < CProjectViewScene::SmallestGridStep) return lines;
    for (long position = 0; position <= paneExtent; position += step) {
        const long shown = toWindow(mapping, position);
        if (shown >= 0 && shown <= windowExtent) lines.push_back(shown);
    }
    return lines;
}

long columnOf(const CPaneMapping& mapping, long x) {
    return mapping.ToClient(CPoint{x, 0}).x;
}

long rowOf(const CPaneMapping& mapping, long y) {
    return mapping.ToClient(CPoint{0, y}).y;
}

} // namespace

CProjectViewScene CProjectViewScene::Build(const iProject& project, const CPaneMapping& mapping,
                                           CSize gridSize) {
    CProjectViewScene scene;
    const EImageSize pane = project.GetPaneSize();
    scene.Pane = mapping.ToClient(CRect{0, 0, pane.Width, pane.Height});
    for (const auto& group : project.GetGroups())
        scene.Groups.push_back({group.get(), group->GetLabel(), mapping.ToClient(group->GetPanePos()),
                                group->IsSelected(), group->IsCollapsed()});
    for (const iElement* element : project.GetElements()) {
        for (iElementLink* link = element->GetFirstParentLink(); link; link = link->GetNextOfChild())
            addLine(scene, mapping, *link->GetParent(), *element, ParentArrowSize, false);
        if (const iElement* grid = element->GetGridReference().Get())
            addLine(scene, mapping, *grid, *element, GridArrowSize, true);
        if (collapsedGroupOf(*element)) continue;
        scene.Icons.push_back({element, element->GetName(), mapping.ToClient(element->GetPanePosition()),
                               element->GetIcon(), element->IsSelected()});
    }
    if (project.IsPaneGridEnabled()) {
        scene.GridColumns =
            gridLines(pane.Width, gridSize.cx, mapping.ZoomX, mapping.Client.cx, columnOf, mapping);
        scene.GridRows =
            gridLines(pane.Height, gridSize.cy, mapping.ZoomY, mapping.Client.cy, rowOf, mapping);
    }
    return scene;
}
