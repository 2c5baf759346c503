#pragma once
// The section "SplineBar" of the interface settings, kept in project files and
// in the per-user preferences. It reads into and writes from the bar that the
// front end attached; before there is a bar it keeps what it read and hands
// that to the bar that attaches, and it writes what it kept, or the curve
// view's defaults. Main thread only, like every load and save of settings.

#include "foundation/iDataBaseSection.h"

#include <memory>

class CSplineBar;

class CSplineBarSettings : public iDataBaseSection {
public:
    CSplineBarSettings();
    static CSplineBarSettings& Get();

    // The bar that the settings belong to from now on (null: none); it gets what was read before.
    void Attach(CSplineBar* bar);
    CSplineBar* GetBar() const { return Bar; }

    void Load(qvrCTreeData& block, hReport& report) override;
    void Save(qvrCTreeData& block, hReport& report) override;
    void Reset() override;

private:
    CSplineBar* Bar = nullptr;
    // What was read while no bar was attached.
    std::unique_ptr<qvrCTreeData> Pending;
};
