#pragma once
// The project view's persistent state, the section "ProjectView" below
// "UserInterface": the display factors, the centre of the view on the pane,
// the frame's rectangle and the drawn grid's cell size. The view takes it
// when it opens and writes it back when it closes. Main thread only, as are
// the views and the database files.

#include "foundation/iDataBaseSection.h"
#include "foundation/qvrGeometry.h"

class CProjectViewSettings : public iDataBaseSection {
public:
    static constexpr double InitialZoom = 1.0;
    static constexpr long InitialGridSize = 16;

    CProjectViewSettings();
    // The section that the database files know.
    static CProjectViewSettings& Get();

    void Load(qvrCTreeData& block, hReport& report) override;
    void Save(qvrCTreeData& block, hReport& report) override;
    void Reset() override;

    double DispZoomX = InitialZoom;
    double DispZoomY = InitialZoom;
    CPoint CenterPoint;
    CRect Window;
    CSize GridSize{InitialGridSize, InitialGridSize};

private:
    void loadZoom(const qvrCTreeData& block, const char* key, double& zoom, hReport& report);
};
