#include "CMainFrame.h"

#include "CAddBar.h"
#include "CAnimationDocks.h"
#include "CBatchDialog.h"
#include "CObjectViewWindow.h"
#include "CPreferencesDialog.h"
#include "CProjectPane.h"
#include "CPropertyDialog.h"
#include "CSaverFrontEnd.h"
#include "CViewRenderer.h"
#include "app/CCrashCatcher.h"
#include "app/CTessarineDoc.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/iElement.h"
#include "model/iElementGroup.h"
#include "model/iProject.h"
#include "output/iSaver.h"
#include "views/ioleConnector.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QCursor>
#include <QDockWidget>
#include <QFileInfo>
#include <QInputDialog>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>

#include <algorithm>

namespace {

constexpr int RecentFileCount = 4;
constexpr const char* ProjectFilter = "qvrTessarine Files (*.tsp)|*.tsp|All files (*.*)|*.*||";

QSettings userSettings() {
    return QSettings("nevora works", "qvrTessarine");
}

void status(const std::string& text) {
    EUserInterface::Get().SetStatusText(text);
}

iProject& project() {
    return iProject::GetStandard();
}

// The core's menu as a Qt menu; each item's id is kept in its action's data.
void fillMenu(QMenu& target, const hMenu& menu) {
    for (const hMenuItem& item : menu.GetItems()) {
        if (item.IsSeparator()) {
            target.addSeparator();
        } else if (item.SubMenu) {
            fillMenu(*target.addMenu(QString::fromStdString(item.Text)), *item.SubMenu);
        } else {
            QAction* action = target.addAction(QString::fromStdString(item.Text));
            action->setData(item.Id);
            action->setCheckable(item.Checked);
            action->setChecked(item.Checked);
            action->setEnabled(item.Enabled);
            if (item.Default) {
                QFont font = action->font();
                font.setBold(true);
                action->setFont(font);
            }
        }
    }
}

QAction* addCommand(QMenu* menu, const QString& text, const QString& tip, QKeySequence keys = {}) {
    QAction* action = menu->addAction(text);
    action->setStatusTip(tip);
    if (!keys.isEmpty()) action->setShortcut(keys);
    return action;
}

std::optional<std::string> askProjectFile(bool save, const std::string& proposed) {
    EFileDialogRequest request;
    request.Save = save;
    request.DefaultExtension = "tsp";
    request.Filter = ProjectFilter;
    request.ProposedPath = proposed;
    return EUserInterface::Get().AskFile(request);
}

} // namespace

CMainFrame::CMainFrame(CTessarineDoc& document, bool persistent)
    : Document(document), Persistent(persistent) {
    setObjectName("MainFrame");
    Pane = new CProjectPane(this);
    setCentralWidget(Pane);
    connect(Pane, &CProjectPane::OpenViewRequested, this, [this](iElement* element) { OpenView(*element); });
    auto* addBar = new CAddBar(*Pane, this);
    addToolBar(Qt::LeftToolBarArea, addBar);
    createMenus();
    AddAnimationDocks(*this);
    statusBar()->showMessage("Ready");
    iObjectFrontEnd::Set(this);
    SaverDialogs = std::make_unique<CSaverFrontEnd>(this, [this] { return Document.GetPathName(); });
    ESaverFrontEnd::Set(SaverDialogs.get());
    CCrashCatcher::SetBeforeQuestion([this] { hide(); });
    auto* refresh = new QTimer(this);
    connect(refresh, &QTimer::timeout, this, &CMainFrame::updateState);
    refresh->start(250);
    resize(1280, 800);
    if (Persistent) {
        QSettings settings = userSettings();
        restoreGeometry(settings.value("MainFrame/Geometry").toByteArray());
        restoreState(settings.value("MainFrame/State").toByteArray());
    }
    updateRecentFiles();
    updateState();
    Pane->GetView().RestartAutoSave(false);
}

CMainFrame::~CMainFrame() {
    CCrashCatcher::SetBeforeQuestion(nullptr);
    if (iObjectFrontEnd* current = &iObjectFrontEnd::Get(); current == this) iObjectFrontEnd::Set(nullptr);
    if (&ESaverFrontEnd::Get() == SaverDialogs.get()) ESaverFrontEnd::Set(nullptr);
    closeAllViews();
}

// ---------------------------------------------------------------- menus

void CMainFrame::createMenus() {
    createFileMenu();
    createEditMenu();
    ObjectMenu = menuBar()->addMenu("&Object");
    connect(ObjectMenu, &QMenu::aboutToShow, this, &CMainFrame::fillObjectMenu);
    createViewMenu();
    createOtherMenus();
}

void CMainFrame::createFileMenu() {
    QMenu* file = menuBar()->addMenu("&File");
    QToolBar* tools = addToolBar("Standard");
    tools->setObjectName("StandardBar");
    QAction* action = addCommand(file, "&New", "Create a new project", QKeySequence::New);
    connect(action, &QAction::triggered, this, &CMainFrame::NewDocument);
    tools->addAction(action);
    action = addCommand(file, "&Open...", "Open an existing project", QKeySequence::Open);
    connect(action, &QAction::triggered, this, [this] {
        if (std::optional<std::string> path = askProjectFile(false, Document.GetPathName()))
            OpenDocument(QString::fromStdString(*path));
    });
    tools->addAction(action);
    action = addCommand(file, "&Save", "Save the active project", QKeySequence::Save);
    connect(action, &QAction::triggered, this, &CMainFrame::SaveDocument);
    tools->addAction(action);
    action = addCommand(file, "Save &as...", "Save the active project with a new name");
    connect(action, &QAction::triggered, this, &CMainFrame::SaveDocumentAs);
    file->addSeparator();
    RecentMenu = file->addMenu("Recent &files");
    file->addSeparator();
    action = addCommand(file, "E&xit", "Quit the program; asks to save the project", QKeySequence::Quit);
    connect(action, &QAction::triggered, this, &QWidget::close);
}

void CMainFrame::createEditMenu() {
    QMenu* edit = menuBar()->addMenu("&Edit");
    UndoAction = addCommand(edit, "&Undo", "Undo the last action", QKeySequence::Undo);
    connect(UndoAction, &QAction::triggered, this, &CMainFrame::Undo);
    RedoAction = addCommand(edit, "&Redo", "Redo the previously undone action", QKeySequence::Redo);
    connect(RedoAction, &QAction::triggered, this, &CMainFrame::Redo);
    edit->addSeparator();
    connect(addCommand(edit, "Cu&t", "Cut the selection and put it on the clipboard", QKeySequence::Cut),
            &QAction::triggered, this, &CMainFrame::Cut);
    connect(addCommand(edit, "&Copy", "Copy the selection and put it on the clipboard", QKeySequence::Copy),
            &QAction::triggered, this, &CMainFrame::Copy);
    connect(addCommand(edit, "&Paste", "Insert the objects of the clipboard", QKeySequence::Paste),
            &QAction::triggered, this, &CMainFrame::Paste);
    connect(addCommand(edit, "&Delete", "Delete the selected objects", QKeySequence::Delete),
            &QAction::triggered, this, &CMainFrame::Delete);
}

void CMainFrame::createViewMenu() {
    QMenu* view = menuBar()->addMenu("&View");
    CProjectView& pane = Pane->GetView();
    connect(addCommand(view, "Zoom &in", "Enlarge the project pane", QKeySequence::ZoomIn),
            &QAction::triggered, this, [&pane] { pane.ZoomIn(); });
    connect(addCommand(view, "Zoom &out", "Reduce the project pane", QKeySequence::ZoomOut),
            &QAction::triggered, this, [&pane] { pane.ZoomOut(); });
    connect(addCommand(view, "&Reset zoom", "Show the project pane at its own size"), &QAction::triggered,
            this, [&pane] { pane.ResetZoom(); });
    connect(addCommand(view, "C&entre objects", "Put the selected objects in the middle of the pane"),
            &QAction::triggered, this, [&pane] { pane.CenterObjects(); });
    view->addSeparator();
    connect(addCommand(view, "Create &group", "Collect the selected objects in a new group"),
            &QAction::triggered, this, [&pane] { pane.CreateGroup(); });
    connect(addCommand(view, "&Collapse groups", "Show the selected groups as one icon"), &QAction::triggered,
            this, [&pane] { pane.CollapseGroups(); });
    connect(addCommand(view, "E&xpand groups", "Show the members of the selected groups"),
            &QAction::triggered, this, [&pane] { pane.ExpandGroups(); });
    connect(addCommand(view, "Re&name group...", "Give the selected group a new name"), &QAction::triggered,
            this, [this, &pane] {
                iElementGroup* group = project().GetFirstSelectedGroup();
                if (!group) return status("Please select some objects...");
                std::string complaint = "";
                const std::string oldName = group->GetName();
                QString name = QString::fromStdString(oldName);
                do {
                    if (!complaint.empty())
                        QMessageBox::warning(this, "qvrTessarine", QString::fromStdString(complaint));
                    bool ok = false;
                    name = QInputDialog::getText(
                        this, QString::fromStdString(CProjectView::GetRenameGroupTitle()),
                        QString::fromStdString(CProjectView::GetRenameGroupPrompt(*group, false)),
                        QLineEdit::Normal, name, &ok);
                    if (!ok) return;
                } while (!pane.RenameGroup(oldName, name.toStdString(), complaint) && !complaint.empty());
            });
    view->addSeparator();
    auto* modes = new QActionGroup(this);
    QToolBar* modeBar = addToolBar("Drag modes");
    modeBar->setObjectName("DragModeBar");
    for (CDragMode mode : {CDragMode::Move, CDragMode::Link, CDragMode::Copy}) {
        const std::string help = CDragModes::HelpLine(mode);
        QAction* action = view->addAction(QString::fromStdString(help.substr(help.find('\n') + 1)));
        action->setStatusTip(QString::fromStdString(help.substr(0, help.find('\n'))));
        action->setCheckable(true);
        action->setChecked(mode == Pane->GetView().GetDragMode());
        modes->addAction(action);
        modeBar->addAction(action);
        connect(action, &QAction::triggered, this, [this, mode] { Pane->SetDragMode(mode); });
        ModeActions.push_back(action);
    }
    connect(Pane, &CProjectPane::DragModeChanged, this,
            [this](CDragMode mode) { ModeActions[size_t(mode)]->setChecked(true); });
}

void CMainFrame::createOtherMenus() {
    QMenu* render = menuBar()->addMenu("&Render");
    QAction* renderNow = addCommand(render, "&Render...", "Render the selected saver");
    connect(renderNow, &QAction::triggered, this, [] {
        auto* saver = dynamic_cast<iSaver*>(project().GetFirstSelected());
        if (!saver) return status("Please select a saver...");
        saver->RunSetupDialog();
    });
    connect(addCommand(render, "&Batch processor...", "Render the jobs kept for later"), &QAction::triggered,
            this, [this] { CBatchDialog(*this).exec(); });
    QMenu* options = menuBar()->addMenu("O&ptions");
    connect(addCommand(options, "&Preferences...", "Change the program's settings"), &QAction::triggered,
            this, [this] {
                CPreferencesDialog preferences(this);
                if (preferences.exec() == QDialog::Accepted) Pane->GetView().RestartAutoSave(false);
            });
    connect(addCommand(options, "&Autosave now", "Write the project to the autosave file now"),
            &QAction::triggered, this, [this] { Pane->GetView().RestartAutoSave(true); });
    connect(
        addCommand(options, "&Forget message answers", "Ask again every question answered with \"Always\""),
        &QAction::triggered, this, [] { hMessageBox::ClearAllAlways(); });
    QMenu* help = menuBar()->addMenu("&Help");
    connect(addCommand(help, "&About qvrTessarine...", "Display program information and version"),
            &QAction::triggered, this, [this] {
                QMessageBox::about(
                    this, "About qvrTessarine",
                    QString("qvrTessarine %1\nVideo composition\n\nnevora works").arg(QVR_VERSION_TEXT));
            });
}

void CMainFrame::fillObjectMenu() {
    for (QMenu* subMenu : ObjectMenu->findChildren<QMenu*>(Qt::FindDirectChildrenOnly))
        delete subMenu;
    ObjectMenu->clear();
    iElement* element = project().GetFirstSelected();
    if (!element) {
        ObjectMenu->addAction("No object selected")->setEnabled(false);
        return;
    }
    hMenu menu;
    element->BuildContextMenu(menu);
    fillMenu(*ObjectMenu, menu);
    const std::string name = element->GetName();
    for (QAction* action : ObjectMenu->findChildren<QAction*>()) {
        if (!action->data().isValid()) continue;
        connect(action, &QAction::triggered, this, [name, id = action->data().toUInt()] {
            CViewRenderer::Get().WaitIdle();
            if (iElement* target = project().FindElement(name)) target->RunMenuCommand(id);
        });
    }
}

unsigned CMainFrame::TrackPopupMenu(const hMenu& menu, CPoint point, CWnd*) {
    QMenu popup(this);
    fillMenu(popup, menu);
    QAction* chosen = popup.exec(QPoint(int(point.x), int(point.y)));
    return chosen && chosen->data().isValid() ? chosen->data().toUInt() : 0;
}

void CMainFrame::ShowProperties(iObjectBase& object) {
    auto* element = dynamic_cast<iElement*>(&object);
    if (!element) return;
    CViewRenderer::Get().WaitIdle();
    auto* dialog = new CPropertyDialog(*element, project().GetCurrentFrame(), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

// ---------------------------------------------------------------- state

void CMainFrame::updateState() {
    const std::string& path = Document.GetPathName();
    const QString name = path.empty() ? "Untitled" : QFileInfo(QString::fromStdString(path)).fileName();
    setWindowTitle(QString("%1[*] - qvrTessarine").arg(name));
    setWindowModified(Document.IsModified());
    qvrCActionManager& actions = project().GetActionManager();
    UndoAction->setEnabled(actions.CanUndo());
    UndoAction->setText(actions.CanUndo()
                            ? QString("&Undo %1").arg(QString::fromStdString(actions.GetUndoTitle()))
                            : "&Undo");
    RedoAction->setEnabled(actions.CanRedo());
    RedoAction->setText(actions.CanRedo()
                            ? QString("&Redo %1").arg(QString::fromStdString(actions.GetRedoTitle()))
                            : "&Redo");
}

void CMainFrame::updateRecentFiles() {
    RecentMenu->clear();
    const QStringList files = userSettings().value("RecentFiles").toStringList();
    for (int i = 0; i < files.size() && i < RecentFileCount; ++i) {
        QAction* action = RecentMenu->addAction(QString("&%1 %2").arg(i + 1).arg(files[i]));
        action->setStatusTip("Open this project");
        connect(action, &QAction::triggered, this, [this, path = files[i]] { OpenDocument(path); });
    }
    RecentMenu->setEnabled(!RecentMenu->isEmpty());
}

void CMainFrame::addRecentFile(const QString& path) {
    if (!Persistent) return;
    QSettings settings = userSettings();
    QStringList files = settings.value("RecentFiles").toStringList();
    const QString absolute = QFileInfo(path).absoluteFilePath();
    files.removeAll(absolute);
    files.prepend(absolute);
    settings.setValue("RecentFiles", files.mid(0, RecentFileCount));
    updateRecentFiles();
}

void CMainFrame::saveWindowPlaces() const {
    if (!Persistent) return;
    QSettings settings = userSettings();
    settings.setValue("MainFrame/Geometry", saveGeometry());
    settings.setValue("MainFrame/State", saveState());
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    if (!SaveModified()) {
        event->ignore();
        return;
    }
    saveWindowPlaces();
    const QRect place = geometry();
    Pane->GetView().SetWindowRect({place.left(), place.top(), place.right() + 1, place.bottom() + 1});
    closeAllViews();
    event->accept();
}

// ---------------------------------------------------------------- file commands

bool CMainFrame::SaveModified() {
    if (!Document.IsModified()) return true;
    const std::string& path = Document.GetPathName();
    const std::string name =
        path.empty() ? "Untitled" : QFileInfo(QString::fromStdString(path)).fileName().toStdString();
    switch (hMessageBox::Show("Save changes to " + name + "?",
                              hMessageBox::YesNoCancel | hMessageBox::IconExclamation, "qvrTessarine")) {
    case IDYES:
        return SaveDocument();
    case IDNO:
        return true;
    default:
        return false;
    }
}

bool CMainFrame::NewDocument() {
    if (!SaveModified()) return false;
    CViewRenderer::Get().WaitIdle();
    closeAllViews();
    Document.OnNewDocument();
    Pane->update();
    updateState();
    return true;
}

bool CMainFrame::OpenDocument(const QString& path) {
    if (!SaveModified()) return false;
    CViewRenderer::Get().WaitIdle();
    closeAllViews();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool loaded = Document.OnOpenDocument(path.toStdString());
    QApplication::restoreOverrideCursor();
    if (loaded) {
        addRecentFile(path);
        Pane->GetView().CenterAllObjects();
        openRestoredViews();
        status("Ready");
    } else {
        // Nothing half-built stays behind.
        Restored.clear();
        Document.OnNewDocument();
        status("The project \"" + path.toStdString() + "\" could not be loaded.");
    }
    Pane->update();
    updateState();
    return loaded;
}

bool CMainFrame::SaveDocument() {
    if (Document.GetPathName().empty()) return SaveDocumentAs();
    CViewRenderer::Get().WaitIdle();
    const bool saved = Document.OnSaveDocument(Document.GetPathName());
    updateState();
    return saved;
}

bool CMainFrame::SaveDocumentAs() {
    const std::optional<std::string> path = askProjectFile(true, Document.GetPathName());
    if (!path) return false;
    CViewRenderer::Get().WaitIdle();
    const bool saved = Document.OnSaveDocument(*path);
    if (saved) addRecentFile(QString::fromStdString(*path));
    updateState();
    return saved;
}

// ---------------------------------------------------------------- edit commands

bool CMainFrame::Undo() {
    CViewRenderer::Get().WaitIdle();
    qvrCActionManager& actions = project().GetActionManager();
    if (!actions.CanUndo()) {
        status("Nothing to undo !");
        return false;
    }
    const bool undone = actions.Undo();
    Pane->update();
    updateState();
    return undone;
}

bool CMainFrame::Redo() {
    CViewRenderer::Get().WaitIdle();
    qvrCActionManager& actions = project().GetActionManager();
    if (!actions.CanRedo()) {
        status("Nothing to redo !");
        return false;
    }
    const bool redone = actions.Redo();
    Pane->update();
    updateState();
    return redone;
}

bool CMainFrame::Copy() {
    std::string buffer;
    if (!Pane->GetView().Copy(buffer)) return false;
    auto* mime = new QMimeData;
    mime->setData(ioleConnector::Format, QByteArray::fromStdString(buffer));
    QApplication::clipboard()->setMimeData(mime);
    return true;
}

bool CMainFrame::Cut() {
    CViewRenderer::Get().WaitIdle();
    std::string buffer;
    if (!Pane->GetView().Cut(buffer)) return false;
    auto* mime = new QMimeData;
    mime->setData(ioleConnector::Format, QByteArray::fromStdString(buffer));
    QApplication::clipboard()->setMimeData(mime);
    updateState();
    return true;
}

bool CMainFrame::Paste() {
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    if (!mime || !mime->hasFormat(ioleConnector::Format)) {
        status("The clipboard holds no objects of qvrTessarine.");
        return false;
    }
    CViewRenderer::Get().WaitIdle();
    hReportRoot report("Paste");
    if (!Pane->GetView().Paste(mime->data(ioleConnector::Format).toStdString(), report)) {
        status("The objects on the clipboard could not be pasted.");
        report.ShowReport("The objects on the clipboard could not be pasted:", hReportError);
        return false;
    }
    updateState();
    return true;
}

bool CMainFrame::Delete() {
    CViewRenderer::Get().WaitIdle();
    const bool deleted = Pane->GetView().DeleteSelection();
    updateState();
    return deleted;
}

// ---------------------------------------------------------------- object views

CObjectViewWindow* CMainFrame::OpenView(iElement& element, const qvrCTreeData* windowBlock) {
    auto* dock = new QDockWidget(this);
    dock->setObjectName(QString("ObjectView%1").arg(++ViewCounter));
    dock->setAttribute(Qt::WA_DeleteOnClose);
    auto* view = new CObjectViewWindow(project(), dock);
    dock->setWidget(view);
    view->GetFrame().DoSetElement(&element);
    if (windowBlock)
        view->GetFrame().LoadWindow(*windowBlock);
    else
        view->FitWhenSized();
    dock->setWindowTitle(view->GetTitle());
    connect(view, &CObjectViewWindow::TitleChanged, dock, &QDockWidget::setWindowTitle);
    connect(view, &CObjectViewWindow::Closing, this, &CMainFrame::closeView);
    connect(dock, &QObject::destroyed, this, [this, view] { std::erase(Views, view); });
    addDockWidget(Qt::RightDockWidgetArea, dock);
    const CRect place = view->GetFrame().GetWindowRect();
    if (!place.IsRectEmpty()) {
        resizeDocks({dock}, {int(place.Width())}, Qt::Horizontal);
        resizeDocks({dock}, {int(place.Height())}, Qt::Vertical);
    } else if (Views.empty()) {
        resizeDocks({dock}, {width() * 2 / 5}, Qt::Horizontal);
    }
    Views.push_back(view);
    if (place.IsRectEmpty()) shareHeight();
    return view;
}

void CMainFrame::shareHeight() {
    QList<QDockWidget*> docks;
    for (CObjectViewWindow* view : Views)
        if (auto* dock = qobject_cast<QDockWidget*>(view->parentWidget()); dock && !dock->isFloating())
            docks << dock;
    resizeDocks(docks, QList<int>(docks.size(), height()), Qt::Vertical);
}

void CMainFrame::OpenView(iObjectBase& object) {
    if (auto* element = dynamic_cast<iElement*>(&object)) OpenView(*element);
}

void CMainFrame::RestoreView(iObjectBase& object, const qvrCTreeData& windowBlock) {
    // The project is still loading: the view opens when it is complete.
    Restored.emplace_back(object.GetName(), windowBlock.Clone());
    QTimer::singleShot(0, this, &CMainFrame::openRestoredViews);
}

void CMainFrame::openRestoredViews() {
    auto restored = std::move(Restored);
    Restored.clear();
    for (auto& [name, block] : restored)
        if (iElement* element = project().FindElement(name)) OpenView(*element, block.get());
}

void CMainFrame::closeView(CObjectViewWindow* view) {
    std::erase(Views, view);
    view->hide();
    view->parentWidget()->close();
}

void CMainFrame::closeAllViews() {
    for (CObjectViewWindow* view : std::vector<CObjectViewWindow*>(Views)) {
        CViewRenderer::Get().Cancel(view);
        std::erase(Views, view);
        delete view->parentWidget();
    }
}

bool CMainFrame::AllViewsDrawn() const {
    return CViewRenderer::Get().IsIdle() &&
           std::all_of(Views.begin(), Views.end(),
                       [](const CObjectViewWindow* view) { return view->IsUpToDate(); });
}
