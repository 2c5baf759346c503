#pragma once
// What the project view draws, in the window's coordinates: the icons of the
// elements that are shown, the group icons with their labels, the lines of
// parent links and grid links (each ends in an arrow at the child), and the
// pane's grid. An element of a collapsed group isn't shown; its lines end at
// the group's icon, and lines inside one collapsed group aren't drawn. The
// windowing layer paints it; the core keeps no pixels. Built on the main thread.

#include "foundation/qvrGeometry.h"
#include "views/CPaneMapping.h"

#include <string>
#include <vector>

class iElement;
class iElementGroup;
class iProject;

struct CProjectViewIcon {
    const iElement* Element = nullptr;
    std::string Name;
    CPoint Center;
    int Icon = 0;
    bool Selected = false;
};

struct CProjectViewGroupIcon {
    const iElementGroup* Group = nullptr;
    // "name (members)".
    std::string Label;
    CPoint Center;
    bool Selected = false;
    bool Collapsed = false;
};

struct CProjectViewLine {
    CPoint From; // the parent's or the grid's end
    CPoint To;   // the child's end, where the arrow is
    int ArrowSize = 0;
    bool IsGridLink = false;
};

struct CProjectViewScene {
    // Arrow sizes of the two kinds of line, in pane units.
    static constexpr int ParentArrowSize = 15;
    static constexpr int GridArrowSize = 11;
    // Grid lines closer than this on the screen are left out.
    static constexpr double SmallestGridStep = 4.0;

    // `gridSize` is the drawn grid's cell; the grid is drawn when the project enables it.
    static CProjectViewScene Build(const iProject& project, const CPaneMapping& mapping, CSize gridSize);

    std::vector<CProjectViewIcon> Icons;
    std::vector<CProjectViewGroupIcon> Groups;
    std::vector<CProjectViewLine> Lines;
    // Window x of each vertical grid line and window y of each horizontal one.
    std::vector<long> GridColumns;
    std::vector<long> GridRows;
    // The pane's extent in the window.
    CRect Pane;
};
