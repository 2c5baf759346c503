#pragma once
// The rules of the metric quick setup dialog, apart from the window. It opens
// with the numbers of the user's profile and stores them again however it is
// left. Accepting checks the numbers first: a fault is shown with the offer
// to mend it, and the dialog stays open on the offending field either way.
// Main thread only.

#include "projector/LMetricsQuickSetup.h"

class hMetricsQuickSetupDialog {
public:
    // The fields of the dialog.
    enum class Field { dx, dy, hx, hy, vx, vy, w, h };

    hMetricsQuickSetupDialog() : Values(LMetricsQuickSetup::Load()) {}

    // True when the dialog may close with the layout in GetWindows; false
    // when it stays open, with Values as the fields show them and the focus
    // on GetFocus.
    bool Accept();
    // Leaves the dialog without a layout.
    void Cancel() { Values.Save(); }

    const std::array<CRect, LVitrea::ProjectorCount>& GetWindows() const { return Windows; }
    Field GetFocus() const { return Focus; }

    LMetricsQuickSetup Values;

private:
    std::array<CRect, LVitrea::ProjectorCount> Windows{};
    Field Focus = Field::dx;
};
