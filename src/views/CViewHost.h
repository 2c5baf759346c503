#pragma once
// What a view's logic asks of the window that shows it: a redraw, a timer,
// closing. The desktop program gives each view a host of its own; the
// defaults do nothing, which is what a test or a window-less run needs.
// Main thread only, like every window.

class CViewHost {
public:
    virtual ~CViewHost() = default;

    // The window is to be painted again.
    virtual void Invalidate() {}
    // Starts (or restarts) the timer `id`; its events come back through the view's OnTimer.
    virtual void SetTimer(unsigned /*id*/, long /*milliseconds*/) {}
    virtual void KillTimer(unsigned /*id*/) {}
    // The window is to close.
    virtual void CloseWindow() {}
};
