#include "views/CProjectViewSettings.h"

#include "foundation/EPrefs.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <cmath>

namespace {

void reportBadValue(hReport& report, const std::string& text, const char* key) {
    report.Report(qvrFormat("Invalid value \"%s\" for \"%s\" (the default stays)", text.c_str(), key),
                  hReportWarning);
}

// The section exists from static construction on, so that the database files find it.
[[maybe_unused]] CProjectViewSettings& projectViewSettings = CProjectViewSettings::Get();

} // namespace

CProjectViewSettings::CProjectViewSettings()
    : iDataBaseSection("ProjectView", DBMaskProject | DBMaskUserPrefs, &ESettingsGUI::Get()) {}

CProjectViewSettings& CProjectViewSettings::Get() {
    static CProjectViewSettings instance;
    return instance;
}

void CProjectViewSettings::loadZoom(const qvrCTreeData& block, const char* key, double& zoom,
                                    hReport& report) {
    const std::string* text = block.GetText(key);
    if (!text) return;
    double value = 0.0;
    if (qvrParseDouble(*text, value) && std::isfinite(value) && value > 0.0)
        zoom = value;
    else
        reportBadValue(report, *text, key);
}

void CProjectViewSettings::Load(qvrCTreeData& block, hReport& report) {
    loadZoom(block, "DispZoomX", DispZoomX, report);
    loadZoom(block, "DispZoomY", DispZoomY, report);
    qvrCTreeData* bad = nullptr;
    if (!block.GetPoint("CenterPoint", CenterPoint, &bad) && bad)
        reportBadValue(report, bad->Value, "CenterPoint");
    if (!block.GetRect("Window", Window, &bad) && bad) reportBadValue(report, bad->Value, "Window");
    if (!block.GetSize("GridSize", GridSize, &bad) && bad) reportBadValue(report, bad->Value, "GridSize");
}

void CProjectViewSettings::Save(qvrCTreeData& block, hReport&) {
    block.SetText("DispZoomX", qvrFormat("%.17g", DispZoomX));
    block.SetText("DispZoomY", qvrFormat("%.17g", DispZoomY));
    block.SetPoint("CenterPoint", CenterPoint);
    block.SetRect("Window", Window);
    block.SetSize("GridSize", GridSize);
}

void CProjectViewSettings::Reset() {
    DispZoomX = DispZoomY = InitialZoom;
    CenterPoint = {};
    Window = {};
    GridSize = {InitialGridSize, InitialGridSize};
}
