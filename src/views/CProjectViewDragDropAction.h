#pragma once
// A drag gesture on the project view, from the moment it enters the pane
// until the drop or the leaving of the window. The view hands it each
// pointer position in pane coordinates; it answers with the action that a
// drop would take and puts its words in the view's status line. Main thread only.

#include "foundation/qvrGeometry.h"

class CProjectView;

class CProjectViewDragDropAction {
public:
    // What a drop would do.
    enum Action : int {
        action_none = 0, // forbidden, or cancelled
        action_add_to_group = 1,
        action_move = 2,
        action_link = 4,
    };

    explicit CProjectViewDragDropAction(CProjectView& view) : View(view) {}
    virtual ~CProjectViewDragDropAction() = default;
    CProjectViewDragDropAction(const CProjectViewDragDropAction&) = delete;
    CProjectViewDragDropAction& operator=(const CProjectViewDragDropAction&) = delete;

    // The pointer is at `point` on the pane; returns the action a drop would take.
    virtual int OnDragOver(CPoint point) = 0;
    // Carries out `action` at the last point; true when the project changed.
    virtual bool OnDrop(int action) = 0;
    // The pointer left the window: whatever the drag moved goes back.
    virtual void OnDragLeave() {}

protected:
    CProjectView& View;
};
