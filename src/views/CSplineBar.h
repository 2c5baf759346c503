#pragma once
// The spline bar, apart from its windows: the tree of collections on the
// left, the curve view on the right, the place of the divider between them,
// and the bar's answers to the project's events. Its settings are the block
// "SplineBar" of the interface settings (CSplineBarSettings), which the front
// end attaches the bar to. Main thread only, like every window.

#include "model/iBase.h"
#include "views/CSplineBarTree.h"
#include "views/CSplineBarView.h"

class hReport;
class iProject;
class qvrCTreeData;

class CSplineBar : private iNotifier {
public:
    static constexpr long DefaultLeftSize = 200;

    explicit CSplineBar(iProject& project);
    // Leaves the settings if they hold this bar.
    ~CSplineBar() override;

    CSplineBarTree& GetTree() { return Tree; }
    CSplineBarView& GetView() { return View; }

    // Answers an event of the project; an unknown one is only traced.
    void HandleOnEvent(long code);

    // The bar's block: "LeftSize", "Coords" for the curve view, "Groups" for the tree.
    void Load(const qvrCTreeData& block, hReport& report);
    void Save(qvrCTreeData& block) const;
    // No user collections; for a new project.
    void Reset();

    // The place of the divider, in pixels from the left.
    long LeftSize = DefaultLeftSize;

private:
    iNotifyAnswer OnEvent(long code, const iEventArgument& argument) override;

    CSplineBarTree Tree;
    CSplineBarView View;
};
