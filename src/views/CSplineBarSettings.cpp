#include "views/CSplineBarSettings.h"

#include "foundation/EPrefs.h"
#include "views/CSplineBar.h"

CSplineBarSettings::CSplineBarSettings()
    : iDataBaseSection("SplineBar", DBMaskProject | DBMaskUserPrefs, &ESettingsGUI::Get()) {}

CSplineBarSettings& CSplineBarSettings::Get() {
    static CSplineBarSettings instance;
    return instance;
}

namespace {
[[maybe_unused]] CSplineBarSettings& splineBarSection = CSplineBarSettings::Get();
} // namespace

void CSplineBarSettings::Attach(CSplineBar* bar) {
    Bar = bar;
    if (!Bar || !Pending) return;
    hReport unseen(nullptr, {});
    Bar->Load(*Pending, unseen);
    Pending.reset();
}

void CSplineBarSettings::Load(qvrCTreeData& block, hReport& report) {
    if (Bar)
        Bar->Load(block, report);
    else
        Pending = block.Clone();
}

void CSplineBarSettings::Save(qvrCTreeData& block, hReport&) {
    if (Bar) {
        Bar->Save(block);
    } else if (Pending) {
        for (const auto& [name, child] : Pending->GetChildren())
            block.AddChild(child->Clone());
    } else {
        CSplineBarView::SaveDefaultSettings(*block.CreateChild("Coords"));
    }
}

void CSplineBarSettings::Reset() {
    Pending.reset();
    if (Bar) Bar->Reset();
}
