#pragma once
// Dragging the selected elements and groups on the project pane. Over a group
// a drop adds the elements to it; over another element it links the first
// dragged element as a source of it, as far as that element takes one; over
// empty pane it moves the icons, which follow the pointer meanwhile. A drop
// back at the start point is a cancel. Objects are held by references that
// clear themselves, so an object that goes away during the drag is left out.
// Main thread only.

#include "model/iBase.h"
#include "views/CDragMode.h"
#include "views/CProjectViewDragDropAction.h"

#include <optional>
#include <string>
#include <vector>

class iElement;
class iElementGroup;
class ioleConnector;

class CProjectVDDA_Standard : public CProjectViewDragDropAction {
public:
    // Takes over the objects the source names. With one single element its
    // position is where the dragged icon starts, with one single group the
    // group's; otherwise `start`.
    CProjectVDDA_Standard(CProjectView& view, const ioleConnector& source, CPoint start);

    int OnDragOver(CPoint point) override;
    bool OnDrop(int action) override;
    void OnDragLeave() override { PutBack(); }

    // A move looks for groups only, a link for groups and elements, a copy for
    // nothing. A change of gesture makes the next position count as new.
    void SetGesture(CDragGesture gesture);
    // Puts the icons back where the drag found them.
    void PutBack();
    // How far the icons have been moved so far.
    CPoint GetOffset() const;
    std::vector<iElement*> GetElements() const;
    int GetAction() const { return CurrentAction; }

private:
    struct Target {
        iElement* Element = nullptr;
        iElementGroup* Group = nullptr;
    };

    Target findTarget(CPoint point) const;
    bool isDragged(const iBase* object) const;
    iElement* draggedElement() const;
    int decideLink(iElement& dragged, iElement& target);
    void moveBy(CPoint delta);
    bool cancel();
    bool dropIntoGroup();
    bool dropMove();
    bool dropLink();

    std::vector<iReference<iElement>> Elements;
    std::vector<iReference<iElementGroup>> Groups;
    iReference<iElement> TargetElement;
    iReference<iElementGroup> TargetGroup;
    CPoint StartPoint;
    std::optional<CPoint> LastPoint;
    CPoint CurrentPos;
    CPoint OriginalPos;
    int CurrentAction = action_none;
    CDragGesture Gesture = CDragGesture::Link;
};
