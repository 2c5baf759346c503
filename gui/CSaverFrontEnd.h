#pragma once
// The desktop program's saver dialogs: the render setup that "Render"
// opens and the execution dialog of the run. A projector array's pages are
// not drawn here yet: such a saver is run from the command line.

#include "output/ESaverFrontEnd.h"

#include <functional>
#include <string>

class QWidget;

class CSaverFrontEnd : public ESaverFrontEnd {
public:
    // `projectPath` tells the path of the project file, for "Render later...".
    CSaverFrontEnd(QWidget* parent, std::function<std::string()> projectPath)
        : Parent(parent), ProjectPath(std::move(projectPath)) {}

    bool RunSetup(iSaver& saver) override;
    bool RunExecution(iSaver& saver) override;

private:
    QWidget* Parent;
    std::function<std::string()> ProjectPath;
};
