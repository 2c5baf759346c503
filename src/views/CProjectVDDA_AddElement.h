#pragma once
// Dragging a new object from the add bar onto the project pane. It holds the
// factory's class and type; a drop makes the element through the undo
// manager under the default name (numbered when the name is taken) at the
// drop point, and selects it. Main thread only.

#include "views/CProjectViewDragDropAction.h"

#include <string>

class CProjectVDDA_AddElement : public CProjectViewDragDropAction {
public:
    CProjectVDDA_AddElement(CProjectView& view, std::string className, std::string typeName);

    int OnDragOver(CPoint point) override;
    bool OnDrop(int action) override;

private:
    std::string ClassName;
    std::string TypeName;
    CPoint LastPoint;
};
