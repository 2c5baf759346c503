#pragma once
// The scrolling and zooming surface under the spline views, apart from
// drawing: its zoom, its position, the world rectangle it can show and the
// commands that change them. World x is the frame, world y the negated value,
// so that larger values lie higher. A zoom is screen pixels per world unit;
// the position is the world point at the top left of the window. Commands
// are queued and handled one by one; each tells whether the window must be
// fitted anew. Main thread only, like every window.

#include "foundation/qvrGeometry.h"
#include "model/iActiveValue.h"

#include <deque>
#include <string>

struct CActiveValueEditViewCmd {
    long Command = 0;
    bool affectX = true;
    bool affectY = true;
    // The zoom of command 5.
    double zoomX = 1.0;
    double zoomY = 1.0;
};

class CActiveValueEditView {
public:
    enum Command : long {
        cmd_zoom_in = 0,
        cmd_zoom_out = 1,
        cmd_zoom_normal = 2,
        cmd_fit_active = 3,
        cmd_fit_world = 4,
        cmd_set_zoom = 5,
        cmd_next_key = 200,
        cmd_previous_key = 201,
        cmd_reserved_first = 202,
        cmd_reserved_last = 203
    };
    static constexpr double ZoomStep = 1.5;
    static constexpr double MinZoomOut = 0.005;

    CActiveValueEditView() = default;
    virtual ~CActiveValueEditView() = default;
    CActiveValueEditView(const CActiveValueEditView&) = delete;
    CActiveValueEditView& operator=(const CActiveValueEditView&) = delete;

    // Carries out a command; true when the window must be fitted anew.
    bool Handle(const CActiveValueEditViewCmd& command);
    void Post(const CActiveValueEditViewCmd& command) { Queue.push_back(command); }
    // Handles every queued command; true when one of them asks for a refit.
    bool HandlePending();

    // The curve that the fit and the key jumps work on (null for none).
    void SetActiveValue(iActiveValue* value) { Active.Set(value); }
    iActiveValue* GetActiveValue() const { return Active.Get(); }

    // The window's size in pixels, as the front end last told it.
    void SetClientSize(CSize size) { ClientSize = size; }
    CSize GetClientSize() const { return ClientSize; }
    // The visible part of the world, in world units.
    double GetVisibleWidth() const { return static_cast<double>(ClientSize.cx) / zoomX; }
    double GetVisibleHeight() const { return static_cast<double>(ClientSize.cy) / zoomY; }

    // What the surface shows without a value.
    static std::string GetEmptyText();
    // The tip at the cursor: frame and value.
    static std::string GetTipText(long frame, double value);

    double zoomX = 4.0;
    double zoomY = 4.0;
    CPoint Position;
    CRect World;

private:
    // Tells the status line that a key jump found nothing.
    static bool noFurtherKey();
    bool zoomIn(const CActiveValueEditViewCmd& command);
    bool zoomOut(const CActiveValueEditViewCmd& command);
    bool setZoom(const CActiveValueEditViewCmd& command, double newX, double newY);
    // Fits the affected axes to the rectangle: its width an eighth of the window, its height a half.
    bool fit(const CActiveValueEditViewCmd& command, double left, double top, double right, double bottom);
    static void fitAxis(double& zoom, long& position, double start, double end, long pixels, double share);
    bool nextKey();
    bool previousKey();
    // Scrolls so that the frame lies in the middle of the window.
    void centreFrame(long frame);

    iReference<iActiveValue> Active;
    CSize ClientSize;
    std::deque<CActiveValueEditViewCmd> Queue;
};
