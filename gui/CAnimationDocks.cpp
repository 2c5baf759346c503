#include "CAnimationDocks.h"

#include "CSplineBarWindow.h"
#include "CTimeControlWindow.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace {

QDockWidget* addDock(QMainWindow& window, QWidget* content, const QString& title, QMenu* viewMenu) {
    auto* dock = new QDockWidget(title, &window);
    dock->setObjectName(content->objectName() + "Dock");
    content->setParent(dock);
    dock->setWidget(content);
    window.addDockWidget(Qt::BottomDockWidgetArea, dock);
    if (viewMenu) viewMenu->addAction(dock->toggleViewAction());
    return dock;
}

QMenu* findViewMenu(QMainWindow& window) {
    for (QAction* action : window.menuBar()->actions())
        if (action->menu() && action->text() == "&View") return action->menu();
    return nullptr;
}

} // namespace

void AddAnimationDocks(QMainWindow& window) {
    QMenu* viewMenu = findViewMenu(window);
    if (viewMenu) viewMenu->addSeparator();
    QDockWidget* time = addDock(window, new CTimeControlWindow(&window), "Time control", viewMenu);
    QDockWidget* splines = addDock(window, new CSplineBarWindow(&window), "Spline bar", viewMenu);
    // The transport above the curves, both the width of the window.
    window.splitDockWidget(time, splines, Qt::Vertical);
    // Shown from the View menu; the main window's kept state brings them back as they were left.
    time->hide();
    splines->hide();
}
