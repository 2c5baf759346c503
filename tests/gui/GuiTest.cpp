// The desktop program on the offscreen platform, over the showcase project:
// the pane, drags and undo, the clipboard, the composer view, the pictures
// of every kind of object against `qvr frame`, and the crash save. Each
// test writes what it shows to QVR_OUTPUT, to be looked at.

#include "CAddBar.h"
#include "CBatchDialog.h"
#include "CExecutionDialog.h"
#include "CJobAddDialog.h"
#include "CMainFrame.h"
#include "CObjectViewWindow.h"
#include "CPreferencesDialog.h"
#include "CProjectPane.h"
#include "CPropertyDialog.h"
#include "CQtUserInterface.h"
#include "CRenderSetupDialog.h"
#include "app/CCrashCatcher.h"
#include "app/CTessarineApp.h"
#include "app/EInitializer.h"
#include "batch/EBatchJob.h"
#include "foundation/EPrefsDiskIO.h"
#include "model/iActiveValue.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "objects/imodMerger.h"
#include "output/OutputText.h"
#include "output/isvrSaver.h"
#include "views/CObjectView.h"
#include "views/ioleConnector.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <memory>

namespace {

// Answers every question with its default and keeps what it was told.
class TestInterface : public CQtUserInterface {
public:
    TestInterface() : CQtUserInterface(false) {}
    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Questions << QString::fromStdString(request.Title);
        Texts << QString::fromStdString(request.Text);
        return CQtUserInterface::AskMessage(request);
    }
    std::optional<std::string> AskFile(const EFileDialogRequest&) override { return ChosenFile; }
    void ShowReport(const std::string& title, int, const std::vector<hReportEntry>&) override {
        Reports << QString::fromStdString(title);
    }
    void SetStatusText(const std::string& text) override { Status = QString::fromStdString(text); }

    QStringList Questions;
    QStringList Texts;
    QStringList Reports;
    QString Status;
    std::string ChosenFile;
};

iProject& project() {
    return iProject::GetStandard();
}

iElement& element(const char* name) {
    iElement* found = project().FindElement(name);
    if (!found) qFatal("no element %s", name);
    return *found;
}

QPoint onPane(CProjectPane& pane, const iElement& target) {
    const CPoint point = pane.GetView().PaneToClient(target.GetPanePosition());
    return {int(point.x), int(point.y)};
}

void mouse(QWidget& widget, QEvent::Type type, QPoint point, Qt::KeyboardModifiers keys = {}) {
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, point, widget.mapToGlobal(point),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, keys);
    QApplication::sendEvent(&widget, &event);
}

// Presses on `from`, moves in steps to `to` and lets go there.
void drag(QWidget& widget, QPoint from, QPoint to, Qt::KeyboardModifiers keys = {}) {
    mouse(widget, QEvent::MouseButtonPress, from, keys);
    for (int step = 1; step <= 4; ++step)
        mouse(widget, QEvent::MouseMove, from + (to - from) * step / 4, keys);
    mouse(widget, QEvent::MouseButtonRelease, to, keys);
}

double valueOf(const iElement& owner, const std::string& name, long frame) {
    for (iActiveValue* value = owner.GetFirstValue(); value; value = value->GetNextValue())
        if (value->GetName() == name) return value->GetValue(frame);
    qFatal("no value %s", name.c_str());
}

QString output(const QString& file) {
    return QString(QVR_OUTPUT) + "/" + file;
}

// A picture that is more than a plain area: a blank or garbled window fails here.
int colourCount(const QImage& image) {
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 3)
        for (int x = 0; x < image.width(); x += 3)
            colours.insert(image.pixel(x, y));
    return int(colours.size());
}

std::unique_ptr<CObjectViewWindow> showView(iElement& shown, QSize size, double zoom, CPoint centre) {
    auto view = std::make_unique<CObjectViewWindow>(project());
    view->GetFrame().DoSetElement(&shown);
    view->GetView().SetZoom(zoom);
    view->GetView().SetCenter(centre);
    view->resize(size);
    view->show();
    return view;
}

} // namespace

class GuiTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QStandardPaths::setTestModeEnabled(true);
        EUserInterface::Set(&ui);
        EInitializerStatus silent;
        QVERIFY(app.InitInstance(CCommandLineInfo{}, silent));
        frame = std::make_unique<CMainFrame>(app.GetDocument(), false);
        ui.SetStatusBar(frame->statusBar());
        frame->resize(1280, 800);
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));
    }

    void init() {
        project().ClearSelection();
        app.GetDocument().SetModifiedFlag(false);
        QVERIFY(frame->OpenDocument(QString(QVR_SHOWCASE) + "/showcase.tsp"));
        QCOMPARE(project().GetElementCount(), size_t(12));
    }

    void cleanupTestCase() {
        frame.reset();
        app.ExitInstance();
        EUserInterface::Set(nullptr);
    }

    void thePaneShowsTheObjectsAndTheirLinks() {
        CProjectPane& pane = frame->GetPane();
        const CProjectViewScene scene = pane.GetView().GetScene();
        QCOMPARE(scene.Icons.size(), size_t(12));
        long links = 0;
        for (iElement* each : project().GetElements())
            links += each->GetParentCount();
        QCOMPARE(long(std::count_if(scene.Lines.begin(), scene.Lines.end(),
                                    [](const CProjectViewLine& line) { return !line.IsGridLink; })),
                 links);
        const QImage shown = frame->grab().toImage();
        QVERIFY(shown.save(output("main-window.png")));
        const QImage paneShown = pane.grab().toImage();
        QCOMPARE(paneShown.pixelColor(onPane(pane, element("Composer"))), QColor(46, 150, 80));
        QCOMPARE(paneShown.pixelColor(onPane(pane, element("Backdrop"))), QColor(52, 110, 200));
        QCOMPARE(paneShown.pixelColor(onPane(pane, element("Movie"))), QColor(190, 60, 50));
        QVERIFY(colourCount(paneShown) > 20);
        QVERIFY(frame->windowTitle().startsWith("showcase.tsp"));
    }

    void aDragMovesLinksOrCopiesByItsKeysAndUndoRestores() {
        CProjectPane& pane = frame->GetPane();
        iElement& backdrop = element("Backdrop");
        const CPoint before = backdrop.GetPanePosition();
        drag(pane, onPane(pane, backdrop), onPane(pane, backdrop) + QPoint(60, 40));
        QCOMPARE(backdrop.GetPanePosition().x, before.x + 60);
        QVERIFY(app.GetDocument().IsModified());
        QTest::qWait(300);
        QVERIFY(frame->windowTitle().contains("*"));
        QVERIFY(frame->Undo());
        QCOMPARE(backdrop.GetPanePosition().x, before.x);

        iElement& tilt = element("Tilt");
        const std::string tiltSource = tilt.GetFirstParent()->GetName();
        drag(pane, onPane(pane, backdrop), onPane(pane, tilt), Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY2(tilt.GetFirstParent() == &backdrop, qPrintable(ui.Status));
        QCOMPARE(backdrop.GetPanePosition().x, before.x);
        QVERIFY(frame->Undo());
        QCOMPARE(tilt.GetFirstParent()->GetName(), tiltSource);

        drag(pane, onPane(pane, backdrop), onPane(pane, backdrop) + QPoint(0, 90), Qt::ControlModifier);
        QCOMPARE(project().GetElementCount(), size_t(13));
        QCOMPARE(backdrop.GetPanePosition().x, before.x);
        QVERIFY(frame->Undo());
        QCOMPARE(project().GetElementCount(), size_t(12));

        // In link mode a plain drag links, ALT moves.
        QTest::keyClick(&pane, Qt::Key_L);
        QCOMPARE(pane.GetView().GetDragMode(), CDragMode::Link);
        drag(pane, onPane(pane, backdrop), onPane(pane, tilt));
        QCOMPARE(tilt.GetFirstParent(), &backdrop);
        drag(pane, onPane(pane, backdrop), onPane(pane, backdrop) + QPoint(30, 0), Qt::AltModifier);
        QCOMPARE(backdrop.GetPanePosition().x, before.x + 30);
        QVERIFY(frame->Undo() && frame->Undo());
        QCOMPARE(tilt.GetFirstParent()->GetName(), tiltSource);
        QTest::keyClick(&pane, Qt::Key_M);
    }

    void theAddBarMakesEveryKindOfObject() {
        const QList<CAddButton*> buttons = frame->findChildren<CAddButton*>();
        QCOMPARE(buttons.size(), 11);
        for (CAddButton* button : buttons)
            QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(project().GetElementCount(), size_t(12 + 11));
        QVERIFY(frame->grab().save(output("added.png")));
        // A footage object without files can't render: its view says why.
        iElement* footage = nullptr;
        for (iElement* each : project().GetElements())
            if (each->GetElementType() == "Footage" && each->GetName().starts_with("New Object"))
                footage = each;
        QVERIFY(footage);
        auto view = showView(*footage, {320, 200}, 1.0, {0, 0});
        QTRY_VERIFY_WITH_TIMEOUT(view->IsUpToDate(), 20000);
        QVERIFY(!view->GetView().GetText().empty());
        QVERIFY(view->grab().save(output("failed-view.png")));
        QVERIFY(colourCount(view->GetPicture()) > 1);
        for (int undo = 0; undo < 11; ++undo)
            QVERIFY(frame->Undo());
        QCOMPARE(project().GetElementCount(), size_t(12));
    }

    void cutAndPasteGoThroughTheClipboardAndForeignDataChangesNothing() {
        CProjectPane& pane = frame->GetPane();
        mouse(pane, QEvent::MouseButtonPress, onPane(pane, element("Sharpen")));
        mouse(pane, QEvent::MouseButtonRelease, onPane(pane, element("Sharpen")));
        QVERIFY(frame->OpenView(element("Sharpen")));
        QVERIFY(frame->Cut());
        QCOMPARE(project().FindElement("Sharpen"), nullptr);
        QVERIFY2(frame->GetViews().empty(), "a view closes when its element goes");
        QVERIFY(QApplication::clipboard()->mimeData()->hasFormat(ioleConnector::Format));
        QVERIFY(frame->Paste());
        QCOMPARE(project().GetElementCount(), size_t(12));
        iElement* pasted = nullptr;
        for (iElement* each : project().GetElements())
            if (each->GetElementType() == "Matrix Filter") pasted = each;
        QVERIFY(pasted);

        QApplication::clipboard()->setText("Sharpen");
        QVERIFY(!frame->Paste());
        QVERIFY(ui.Status.contains("no objects"));
        auto* damaged = new QMimeData;
        damaged->setData(ioleConnector::Format, "qvrTessarine$_database = V1.10\n  garbage =\n");
        QApplication::clipboard()->setMimeData(damaged);
        const int reports = int(ui.Reports.size());
        QVERIFY(!frame->Paste());
        QCOMPARE(project().GetElementCount(), size_t(12));
        QCOMPARE(int(ui.Reports.size()), reports + 1);
    }

    void aComposerViewDragMovesTheLayer() {
        iElement& composerElement = element("Composer");
        auto view = showView(composerElement, {960, 540}, 0.5, {960, 540});
        QTRY_VERIFY_WITH_TIMEOUT(view->IsUpToDate(), 20000);
        auto& composer = static_cast<imodMerger&>(composerElement);
        const CRect layer = composer.GetLinkOf(&element("Inset"))->GetLayerRect();
        const CPoint centre = view->GetView().GetMapping().ToClient(
            CPoint{(layer.left + layer.right) / 2, (layer.top + layer.bottom) / 2});
        const QPoint grip(int(centre.x), int(centre.y));
        const double x = valueOf(composerElement, "Inset: X position", 0);
        const double y = valueOf(composerElement, "Inset: Y position", 0);
        mouse(*view, QEvent::MouseButtonPress, grip);
        mouse(*view, QEvent::MouseButtonRelease, grip);
        QCOMPARE(view->GetLine(), QString("Inset (Crop)"));

        mouse(*view, QEvent::MouseButtonPress, grip);
        for (int step = 1; step <= 4; ++step)
            mouse(*view, QEvent::MouseMove, grip + QPoint(10, 5) * step);
        QSignalSpy painted(view.get(), &CObjectViewWindow::Painted);
        QElapsedTimer clock;
        clock.start();
        mouse(*view, QEvent::MouseButtonRelease, grip + QPoint(40, 20));
        QVERIFY(painted.wait(20000));
        qInfo("a layer's drop to the repainted 1920x1080 composer at 50%%: %lld ms", clock.elapsed());
        QVERIFY(view->IsUpToDate());
        QVERIFY(valueOf(composerElement, "Inset: X position", 0) > x + 60);
        QVERIFY(valueOf(composerElement, "Inset: Y position", 0) > y + 20);
        const QImage shown = view->grab().toImage();
        QVERIFY(shown.save(output("composer-view.png")));
        QVERIFY(colourCount(shown) > 100);
    }

    void eachKindOfViewPaintsThePictureOfQvrFrame() {
        for (iElement* shown : project().GetElements()) {
            if (shown->GetElementClass() == "Saver") continue;
            iImageSizeResult size;
            QVERIFY(shown->QueryImageSize(size, 0));
            const double zoom = 480.0 / double(size.Size.Width);
            const QSize client(480, int(double(size.Size.Height) * zoom));
            auto view = showView(*shown, client, zoom, {size.Size.Width / 2, size.Size.Height / 2});
            QTRY_VERIFY_WITH_TIMEOUT(view->IsUpToDate(), 20000);
            const QString name = QString::fromStdString(shown->GetName()).replace(' ', '_');
            const QString expectedFile = output("frame-" + name + ".bmp");
            QProcess qvr;
            qvr.start(QVR_PROGRAM, {"frame", QString(QVR_SHOWCASE) + "/showcase.tsp",
                                    QString::fromStdString(shown->GetName()), "0", "-o", expectedFile,
                                    "--display", QString("%1,%2").arg(client.width()).arg(client.height())});
            QVERIFY(qvr.waitForFinished(60000));
            QVERIFY2(qvr.exitCode() == 0, qvr.readAllStandardError().constData());
            const QImage expected = QImage(expectedFile).convertToFormat(QImage::Format_RGB32);
            const QImage painted = view->GetPicture();
            painted.save(output("view-" + name + ".png"));
            QCOMPARE(painted.size(), expected.size());
            int differing = 0;
            for (int row = 0; row < painted.height(); ++row)
                for (int column = 0; column < painted.width(); ++column)
                    if ((painted.pixel(column, row) & 0xFFFFFF) != (expected.pixel(column, row) & 0xFFFFFF))
                        ++differing;
            QVERIFY2(differing == 0, qPrintable(name + QString(": %1 pixels differ").arg(differing)));
            QVERIFY2(colourCount(painted) > 1 || shown->GetElementType() == "Solid", qPrintable(name));
        }
    }

    void viewsKeptInTheProjectOpenAgainWithIt() {
        CObjectViewWindow* view = frame->OpenView(element("Grade"));
        view->GetView().SetZoom(0.125);
        QVERIFY(frame->OpenView(element("Composer")));
        const QString kept = output("kept-views.tsp");
        QVERIFY(app.GetDocument().OnSaveDocument(kept.toStdString()));
        QVERIFY(frame->OpenDocument(kept));
        QCOMPARE(frame->GetViews().size(), size_t(2));
        QTRY_VERIFY_WITH_TIMEOUT(frame->AllViewsDrawn(), 20000);
        QStringList titles;
        for (CObjectViewWindow* each : frame->GetViews())
            titles << each->GetTitle();
        titles.sort();
        QCOMPARE(titles.join('|'),
                 QString("kept-views.tsp: Composer (Composer), frame 0: Background: \"Backdrop\"|"
                         "kept-views.tsp: Grade (Image Correction), frame 0: Image correction"));
        for (CObjectViewWindow* each : frame->GetViews())
            if (each->GetView().GetElement() == &element("Grade")) QCOMPARE(each->GetView().GetZoom(), 0.125);
        QVERIFY(frame->grab().save(output("kept-views.png")));
        QVERIFY(frame->NewDocument());
        QVERIFY(frame->GetViews().empty());
    }

    void aMessageBoxShowsItsAlwaysBoxAndTellsWhatWasPressed() {
        CQtUserInterface asking(true);
        EMessageRequest request;
        request.Text = "Overwrite?";
        request.Title = "qvrTessarine";
        request.Buttons = {IDYES, IDNO};
        request.Labels = {"&Yes", "&No"};
        request.DefaultIndex = 1;
        request.AlwaysText = "Always answer \"No\".";
        QString shownText;
        QTimer::singleShot(50, [&shownText] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->checkBox()) return;
            shownText = box->text() + "|" + box->checkBox()->text() + "|" + box->defaultButton()->text();
            box->checkBox()->setChecked(true);
            for (QAbstractButton* button : box->buttons())
                if (button->text() == "Yes") button->click();
        });
        const EMessageAnswer answer = asking.AskMessage(request);
        QCOMPARE(shownText, QString("Overwrite?|Always answer \"No\".|No"));
        QCOMPARE(answer.Button, int(IDYES));
        QVERIFY(answer.Always);
        QCOMPARE(
            CQtUserInterface::ToQtFilter("Files of \"qvrTessarine\" (*.tsp)|*.tsp|All files (*.*)|*.*|||"),
            QString("Files of \"qvrTessarine\" (*.tsp);;All files (*.*)"));
    }

    void theCrashCatcherSavesTheProject() {
        ui.ChosenFile = output("crashed.tsp").toStdString();
        QFile::remove(output("crashed.tsp"));
        const int result = app.Run([]() -> int { throw std::runtime_error("crash"); });
        QCOMPARE(result, 1);
        QVERIFY(!frame->isVisible());
        QFile saved(output("crashed.tsp"));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QVERIFY(saved.readAll().contains("Composer = Modifier/Composer"));
        QVERIFY(ui.Questions.contains("qvrCCrashCatcher V2.01 nevora works"));
        frame->show();
    }

    void theUnsavedProjectIsNeverLostWithoutTheQuestion() {
        app.GetDocument().SetModifiedFlag(true);
        const int questions = int(ui.Questions.size());
        // The headless answer is the question's default, "Yes": save first.
        ui.ChosenFile = output("saved.tsp").toStdString();
        app.GetDocument().OnSaveDocument(ui.ChosenFile);
        app.GetDocument().SetModifiedFlag(true);
        QVERIFY(frame->NewDocument());
        QCOMPARE(int(ui.Questions.size()), questions + 1);
        QVERIFY(!app.GetDocument().IsModified());
    }

    // Every kind of object: the page opens from the element menu, refuses a
    // bad entry with the system's text and gives the field its old text and
    // the focus back; a good entry is one step of the undo chain after OK,
    // and Cancel leaves the object as it was.
    void everyPropertyPageRefusesBadEntriesAndCommitsGoodOnesAsOneStep() {
        struct Case {
            const char* Object;
            const char* Field;
            const char* Bad;
            const char* Refusal;
            const char* Good;
        };
        const Case cases[] = {
            {"Backdrop", "&Alpha:", "300", "Invalid alpha value !", "200"},
            {"Footage", "&Start frame:", "x", "Invalid value; you must enter a number.", "5"},
            {"Badge size", "&Width:", "3", "Please enter a number greater or equal to 10.", "200"},
            {"Composer", "Inset Op.:", "x", "Invalid opacity !", "50.00"},
            {"Composer", "Tilt X,Y:", "1", "Invalid position !", "10,-20"},
            {"Tilt", "&Angle:", "x", "Please enter a number !", "30"},
            {"Inset", "&Color:", "1,2", "Invalid color !", "10,20,30"},
            {"Grade", "&Brightness:", "500", "Please enter a number !", "20"},
            {"Sharpen", "&Name:", "Backdrop", "There is already an object with that name !", "Sharper"},
            {"Program", "&Name:", "", "The name cannot be empty !", "Programme"},
            {"Frames", "&Name:", "", "The name cannot be empty !", "Stills"},
            {"Movie", "&Size:", "5,5", "Neither dimension should be smaller than 10.", "320,240"},
        };
        qvrCActionManager& actions = project().GetActionManager();
        for (const Case& each : cases) {
            const QString what = QString("%1 %2").arg(each.Object, each.Field);
            QElapsedTimer clock;
            clock.start();
            CPropertyDialog* dialog = openProperties(each.Object);
            qInfo("%s: page open in %lld ms", each.Object, clock.elapsed());
            QVERIFY2(dialog, qPrintable(what));
            QVERIFY(dialog->grab().save(output(QString("properties-%1.png").arg(each.Object))));
            auto* field = qobject_cast<QLineEdit*>(dialog->FindField(each.Field));
            QVERIFY2(field, qPrintable(what));
            const QString old = field->text();
            enter(*field, each.Bad);
            QCOMPARE(ui.Texts.last(), QString(each.Refusal));
            QCOMPARE(field->text(), old);
            QCOMPARE(dialog->focusWidget(), field);

            const long steps = actions.GetUndoCount();
            enter(*field, each.Good);
            QCOMPARE(field->text(), QString(each.Good));
            dialog->accept();
            QCOMPARE(actions.GetUndoCount(), steps + 1);
            const std::string name = QString(each.Field) == "&Name:" ? each.Good : each.Object;
            QCOMPARE(fieldText(name.c_str(), each.Field), QString(each.Good));
            QVERIFY(frame->Undo());
            QCOMPARE(fieldText(each.Object, each.Field), old);

            dialog = openProperties(each.Object);
            enter(*qobject_cast<QLineEdit*>(dialog->FindField(each.Field)), each.Good);
            dialog->reject();
            QCOMPARE(fieldText(each.Object, each.Field), old);
            QCOMPARE(actions.GetUndoCount(), steps);
        }
    }

    void aFlagOfTheTableIsACheckBoxThatUndoTakesBack() {
        CPropertyDialog* dialog = openProperties("Badge size");
        auto* lock = qobject_cast<QCheckBox*>(dialog->FindField("&Lock aspect"));
        QVERIFY(lock);
        const bool before = lock->isChecked();
        lock->setChecked(!before);
        dialog->accept();
        QVERIFY(frame->Undo());
        dialog = openProperties("Badge size");
        QCOMPARE(qobject_cast<QCheckBox*>(dialog->FindField("&Lock aspect"))->isChecked(), before);
        dialog->reject();
    }

    // The same frames as `qvr render` of the same saver and range, byte for
    // byte; the run's lines, figures and the Close button on the way.
    void aRenderFromTheSetupDialogWritesWhatQvrRenderWrites() {
        const QString desktop = output("render-desktop"), terminal = output("render-qvr");
        for (const QString& folder : {desktop, terminal}) {
            QDir(folder).removeRecursively();
            QVERIFY(QDir().mkpath(folder));
        }
        auto& saver = dynamic_cast<isvrSaver&>(element("Frames"));
        QElapsedTimer clock;
        clock.start();
        CRenderSetupDialog setup(saver, QString(QVR_SHOWCASE "/showcase.tsp").toStdString(), frame.get());
        qInfo("render setup open in %lld ms", clock.elapsed());
        QVERIFY(setup.grab().save(output("render-setup.png")));
        const QString first = QString::fromStdString(EStringTable::Load(OutputText::LabelFirstFrame));
        const QString last = QString::fromStdString(EStringTable::Load(OutputText::LabelLastFrame));
        qobject_cast<QSpinBox*>(setup.FindField(first))->setValue(0);
        qobject_cast<QSpinBox*>(setup.FindField(last))->setValue(RenderedFrames - 1);
        auto* file = qobject_cast<QLineEdit*>(setup.FindField("File"));
        file->setText(desktop + "/frame.bmp");
        emit file->textEdited(file->text());
        setup.GetRenderButton()->click();
        QCOMPARE(setup.result(), int(QDialog::Accepted));
        QCOMPARE(saver.GetSetup().VideoEnd, std::uint32_t(RenderedFrames - 1));

        clock.restart();
        CExecutionDialog execution(saver, saver.GetSetup(), frame.get());
        execution.show();
        QTRY_VERIFY_WITH_TIMEOUT(execution.GetRun().GetState() == ESaverExecution::StateOver, 120000);
        const double desktopRate = RenderedFrames * 1000.0 / double(clock.elapsed());
        QVERIFY(execution.grab().save(output("render-execution.png")));
        QCOMPARE(execution.GetRun().GetStateText(), std::string(" Finished."));
        QVERIFY(execution.GetLines().count() > 0);
        frame->showNormal();

        clock.restart();
        QProcess qvr;
        qvr.start(QVR_PROGRAM,
                  {"render", QVR_SHOWCASE "/showcase.tsp", "--saver", "Frames", "--first", "0", "--last",
                   QString::number(RenderedFrames - 1), "--output", terminal + "/frame.bmp"});
        QVERIFY(qvr.waitForFinished(120000));
        QCOMPARE(qvr.exitCode(), 0);
        const double terminalRate = RenderedFrames * 1000.0 / double(clock.elapsed());
        qInfo("frame rate: desktop %.2f/s, qvr render %.2f/s", desktopRate, terminalRate);
        const QStringList written = QDir(terminal).entryList(QDir::Files);
        QCOMPARE(written.size(), RenderedFrames);
        QCOMPARE(QDir(desktop).entryList(QDir::Files), written);
        for (const QString& name : written)
            QVERIFY2(readAll(desktop + "/" + name) == readAll(terminal + "/" + name), qPrintable(name));
    }

    // The job that "Render later..." enters is the one `qvr batch list` shows
    // once the program has written its preferences.
    void renderLaterEntersTheJobThatQvrBatchListShows() {
        CRenderSetupDialog setup(dynamic_cast<isvrSaver&>(element("Movie")),
                                 QString(QVR_SHOWCASE "/showcase.tsp").toStdString(), frame.get());
        const QString job = "later " + QString::number(QDateTime::currentMSecsSinceEpoch());
        QTimer::singleShot(100, [&job] {
            auto* add = qobject_cast<CJobAddDialog*>(QApplication::activeModalWidget());
            if (!add) return;
            add->grab().save(output("job-add.png"));
            auto* name = add->findChild<QLineEdit*>("Name");
            name->setText(job);
            emit name->textEdited(job);
            add->accept();
        });
        setup.GetLaterButton()->click();
        QCOMPARE(setup.result(), int(QDialog::Rejected));
        // The program writes its preferences, the batch list among them, at exit.
        CTessarineApp::WritePreferences();
        QProcess qvr;
        qvr.start(QVR_PROGRAM, {"batch", "list"});
        QVERIFY(qvr.waitForFinished(60000));
        const QString listed = QString::fromUtf8(qvr.readAllStandardOutput());
        QVERIFY2(listed.contains(job), qPrintable(listed));
    }

    // A key changed in the dialog takes effect at once and is in the
    // preference file that the program writes at its end; Cancel keeps it.
    void preferencesChangedInTheDialogAreWrittenToTheFile() {
        std::string file;
        long interval = 0;
        QVERIFY(EPrefsDiskIO::GetAutoSave(file, interval));
        CPreferencesDialog preferences(frame.get());
        QVERIFY(preferences.grab().save(output("preferences.png")));
        auto* field = qobject_cast<QSpinBox*>(preferences.FindField("Disk I/O", "AutoSaveIntv"));
        QVERIFY(field);
        QCOMPARE(field->minimum(), 0);
        field->setValue(int(interval) + 7);
        preferences.accept();
        long changed = 0;
        QVERIFY(EPrefsDiskIO::GetAutoSave(file, changed));
        QCOMPARE(changed, interval + 7);

        CPreferencesDialog cancelled(frame.get());
        qobject_cast<QSpinBox*>(cancelled.FindField("Disk I/O", "AutoSaveIntv"))->setValue(1);
        cancelled.reject();
        QVERIFY(EPrefsDiskIO::GetAutoSave(file, changed));
        QCOMPARE(changed, interval + 7);

        CTessarineApp::WritePreferences();
        const QString written =
            QString::fromUtf8(readAll(QString::fromStdString(CTessarineApp::GlobalPreferencesPath())) +
                              readAll(QString::fromStdString(CTessarineApp::UserPreferencesPath())));
        QVERIFY(written.contains(QRegularExpression(QString("AutoSaveIntv\\s*:?=\\s*%1").arg(interval + 7))));
        EPrefsDiskIO::SetAutoSave(file, interval);
        CTessarineApp::WritePreferences();
    }

    // Render runs the list through the execution window: a job whose saver is
    // gone is told and passed, the next one renders every frame; the
    // controls order the list.
    void theBatchProcessorRendersTheListPastAFailingJob() {
        EBatchJobList& list = EBatchJobList::Get();
        list.DeleteAll();
        const std::string project = QVR_SHOWCASE "/showcase.tsp";
        list.Create({"gone", project, "Nothing", "Saver", std::time(nullptr)});
        list.Create({"frames", project, "Frames", "Saver", std::time(nullptr)});
        QDir written(QVR_SHOWCASE "/output/frames");
        QVERIFY(written.mkpath("."));
        for (const QString& file : written.entryList(QDir::Files))
            QVERIFY(written.remove(file));
        CBatchDialog batch(*frame);
        QCOMPARE(batch.GetJobs().topLevelItemCount(), 2);
        batch.GetJobs().setCurrentItem(batch.GetJobs().topLevelItem(1));
        batch.GetButton("&Top")->click();
        QCOMPARE(list.GetJob(0).Name, std::string("frames"));
        batch.GetButton("Do&wn")->click();
        QCOMPARE(list.GetJob(1).Name, std::string("frames"));
        QVERIFY(batch.grab().save(output("batch-processor.png")));
        batch.GetButton("&Render")->click();
        QCOMPARE(batch.GetStatus(), QString("1 of 2 job(s) rendered completely."));
        const std::uint32_t frames = dynamic_cast<isvrSaver&>(element("Frames")).GetSetup().VideoEnd + 1;
        QCOMPARE(QDir(QVR_SHOWCASE "/output/frames").entryList(QDir::Files).size(), qsizetype(frames));
        frame->showNormal();
        list.DeleteAll();
    }

private:
    static constexpr int RenderedFrames = 10;

    static QByteArray readAll(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    CPropertyDialog* openProperties(const char* name) {
        for (CPropertyDialog* open : frame->findChildren<CPropertyDialog*>())
            delete open;
        element(name).RunMenuCommand(iElement::command_properties);
        return frame->findChild<CPropertyDialog*>();
    }

    static void enter(QLineEdit& field, const QString& text) {
        field.setText(text);
        emit field.editingFinished();
    }

    QString fieldText(const char* object, const char* label) {
        CPropertyDialog* dialog = openProperties(object);
        const QString text = qobject_cast<QLineEdit*>(dialog->FindField(label))->text();
        dialog->reject();
        return text;
    }

    TestInterface ui;
    CTessarineApp app{CTessarineApp::Preferences::ReadOnly};
    std::unique_ptr<CMainFrame> frame;
};

QTEST_MAIN(GuiTest)
#include "GuiTest.moc"
