#pragma once
// The main window: menus and tool bars with the program's commands, the
// status line, the title with the project's name and a mark while it is
// modified, the project pane in the middle and one dock window per object
// view. It is also the object model's front end: it shows the core's popup
// menus and opens views, those of a loaded project after the load. The
// question about unsaved changes comes before every close, new and open.
// The places of docks and tool bars are kept in the user's settings.

#include "model/iObjectFrontEnd.h"

#include <QMainWindow>

#include <memory>
#include <vector>

class CObjectViewWindow;
class CProjectPane;
class CSaverFrontEnd;
class CTessarineDoc;
class QDockWidget;
class iElement;
class qvrCTreeData;

class CMainFrame : public QMainWindow, public iObjectFrontEnd {
    Q_OBJECT
public:
    // `persistent`: window places are read from and written to the user's settings.
    CMainFrame(CTessarineDoc& document, bool persistent);
    ~CMainFrame() override;

    CProjectPane& GetPane() const { return *Pane; }
    const std::vector<CObjectViewWindow*>& GetViews() const { return Views; }

    // --- File commands; false when nothing was done.
    bool NewDocument();
    bool OpenDocument(const QString& path);
    bool SaveDocument();
    bool SaveDocumentAs();
    // Asks about unsaved changes: false when the user cancels or the save fails.
    bool SaveModified();

    // --- Edit commands.
    bool Undo();
    bool Redo();
    bool Cut();
    bool Copy();
    bool Paste();
    bool Delete();

    CObjectViewWindow* OpenView(iElement& element, const qvrCTreeData* windowBlock = nullptr);
    // Every view has its newest picture and no drawing is waiting.
    bool AllViewsDrawn() const;

    // --- The object model's front end.
    unsigned TrackPopupMenu(const hMenu& menu, CPoint point, CWnd* window) override;
    void OpenView(iObjectBase& object) override;
    void RestoreView(iObjectBase& object, const qvrCTreeData& windowBlock) override;
    void ShowProperties(iObjectBase& object) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createMenus();
    void createFileMenu();
    void createEditMenu();
    void createViewMenu();
    void createOtherMenus();
    void fillObjectMenu();
    void updateState();
    void updateRecentFiles();
    void addRecentFile(const QString& path);
    void openRestoredViews();
    void closeAllViews();
    void closeView(CObjectViewWindow* view);
    // The docked views share the height of the window evenly.
    void shareHeight();
    void saveWindowPlaces() const;

    CTessarineDoc& Document;
    bool Persistent;
    CProjectPane* Pane = nullptr;
    std::unique_ptr<CSaverFrontEnd> SaverDialogs;
    std::vector<CObjectViewWindow*> Views;
    std::vector<std::pair<std::string, std::unique_ptr<qvrCTreeData>>> Restored;
    QMenu* ObjectMenu = nullptr;
    QMenu* RecentMenu = nullptr;
    QAction* UndoAction = nullptr;
    QAction* RedoAction = nullptr;
    std::vector<QAction*> ModeActions;
    int ViewCounter = 0;
};
