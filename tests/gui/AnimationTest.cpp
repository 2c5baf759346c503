// The animation docks of the desktop program on the offscreen platform, over
// the showcase project: the spline bar's tree and curves, editing keys with
// the mouse and the key edit panel under undo, and the time control moving
// every object view, whose pictures must match `qvr frame` at that frame.
// Screens go to QVR_OUTPUT, to be looked at.

#include "CCurveWindow.h"
#include "CKeyEditPanel.h"
#include "CMainFrame.h"
#include "CObjectViewWindow.h"
#include "CQtUserInterface.h"
#include "CSplineBarWindow.h"
#include "CTimeControlWindow.h"
#include "app/CTessarineApp.h"
#include "app/EInitializer.h"
#include "model/iActiveValue.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "views/CObjectView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTest>
#include <QTreeWidget>

#include <memory>

namespace {

// Keeps the status line; questions get their defaults.
class StatusInterface : public CQtUserInterface {
public:
    StatusInterface() : CQtUserInterface(false) {}
    void SetStatusText(const std::string& text) override { Status = QString::fromStdString(text); }
    QString Status;
};

iProject& project() {
    return iProject::GetStandard();
}

iActiveValue& valueNamed(const char* element, const std::string& name) {
    const iElement* owner = project().FindElement(element);
    for (iActiveValue* value = owner ? owner->GetFirstValue() : nullptr; value; value = value->GetNextValue())
        if (value->GetName() == name) return *value;
    qFatal("no value %s", name.c_str());
}

void mouse(QWidget& widget, QEvent::Type type, QPoint point, Qt::KeyboardModifiers keys = {}) {
    const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, point, widget.mapToGlobal(point),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, keys);
    QApplication::sendEvent(&widget, &event);
}

QString output(const QString& file) {
    return QString(QVR_OUTPUT) + "/" + file;
}

// How many pixels of the picture have the colour, give or take antialiasing.
int pixelsOf(const QImage& image, QColor colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor seen = image.pixelColor(x, y);
            count += std::abs(seen.red() - colour.red()) + std::abs(seen.green() - colour.green()) +
                         std::abs(seen.blue() - colour.blue()) <
                     24;
        }
    return count;
}

// Differing pixels between a view's picture and `qvr frame --display` of its element at the frame.
int differenceFromQvrFrame(const CObjectViewWindow& view, long frame) {
    const QImage painted = view.GetPicture();
    const QString name = QString::fromStdString(view.GetView().GetElement()->GetName());
    painted.save(output(QString("play-%1-%2.png").arg(name).arg(frame)));
    const QString expectedFile = output(QString("play-%1-%2.bmp").arg(name).arg(frame));
    QProcess qvr;
    qvr.start(QVR_PROGRAM,
              {"frame", QString(QVR_SHOWCASE) + "/showcase.tsp", name, QString::number(frame), "-o",
               expectedFile, "--display", QString("%1,%2").arg(painted.width()).arg(painted.height())});
    if (!qvr.waitForFinished(60000) || qvr.exitCode() != 0) return -1;
    const QImage expected = QImage(expectedFile).convertToFormat(QImage::Format_RGB32);
    if (expected.size() != painted.size()) return -2;
    int differing = 0;
    for (int row = 0; row < painted.height(); ++row)
        for (int column = 0; column < painted.width(); ++column)
            differing += (painted.pixel(column, row) & 0xFFFFFF) != (expected.pixel(column, row) & 0xFFFFFF);
    return differing;
}

// Floats the view's dock and sizes it so that the view shows the whole 1920x1080 picture at a quarter.
void showWholeAtQuarter(CObjectViewWindow& view) {
    auto* dock = qobject_cast<QDockWidget*>(view.parentWidget());
    dock->setFloating(true);
    for (int attempt = 0; attempt < 3 && view.size() != QSize(480, 270); ++attempt) {
        dock->resize(dock->size() + QSize(480, 270) - view.size());
        QApplication::processEvents();
    }
    view.GetView().SetZoom(0.25);
    view.GetView().SetCenter({960, 540});
    view.Invalidate();
}

} // namespace

class AnimationTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QStandardPaths::setTestModeEnabled(true);
        EUserInterface::Set(&ui);
        EInitializerStatus silent;
        QVERIFY(app.InitInstance(CCommandLineInfo{}, silent));
        frame = std::make_unique<CMainFrame>(app.GetDocument(), false);
        ui.SetStatusBar(frame->statusBar());
        frame->resize(1400, 900);
        frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(frame.get()));
        bar = frame->findChild<CSplineBarWindow*>();
        time = frame->findChild<CTimeControlWindow*>();
        QVERIFY(bar && time);
        bar->parentWidget()->show();
        time->parentWidget()->show();
        frame->resizeDocks({qobject_cast<QDockWidget*>(bar->parentWidget())}, {300}, Qt::Vertical);
    }

    void init() {
        app.GetDocument().SetModifiedFlag(false);
        QVERIFY(frame->OpenDocument(QString(QVR_SHOWCASE) + "/showcase.tsp"));
    }

    void cleanupTestCase() {
        frame.reset();
        app.ExitInstance();
        EUserInterface::Set(nullptr);
    }

    void checkingAValueShowsItsCurveAndTheTreeKeysWork() {
        CSplineBarTree& tree = bar->GetBar().GetTree();
        QCOMPARE(bar->GetSelector().currentText(), QString("<All>"));
        QCOMPARE(bar->GetTreeWidget().topLevelItemCount(), int(project().GetElementCount()));
        CCurveWindow& curves = bar->GetCurves();
        QVERIFY(curves.GetShownValues().empty());
        iActiveValue& position = valueNamed("Composer", "Tilt: X position");
        iActiveValue& opacity = valueNamed("Composer", "Tilt: Opacity");
        const CSplineBarElement* composer = tree.FindEntry(project().FindElement("Composer"));
        QVERIFY(composer);
        bar->SetChecked(composer->FindValue(&position), true);
        bar->SetChecked(composer->FindValue(&opacity), true);
        QCOMPARE(curves.GetShownValues().size(), size_t(2));
        QCOMPARE(curves.GetView().GetActiveValue(), &position);
        // Space on the tree unchecks the selected value; F5 sorts and keeps the checks.
        QTreeWidgetItem* opacityItem = bar->FindItem(composer->FindValue(&opacity));
        bar->GetTreeWidget().setCurrentItem(opacityItem);
        QTest::keyClick(&bar->GetTreeWidget(), Qt::Key_Space);
        QCOMPARE(curves.GetShownValues().size(), size_t(1));
        QTest::keyClick(&bar->GetTreeWidget(), Qt::Key_Space);
        QTest::keyClick(&bar->GetTreeWidget(), Qt::Key_F5);
        QCOMPARE(curves.GetShownValues().size(), size_t(2));
        // DEL can't take an object out of the default collection.
        bar->GetTreeWidget().setCurrentItem(bar->FindItem(composer));
        QTest::keyClick(&bar->GetTreeWidget(), Qt::Key_Delete);
        QCOMPARE(ui.Status, QString("You cannot remove objects from the default collection !"));

        curves.setFocus();
        QTest::keyClick(&curves, Qt::Key_F);
        QApplication::processEvents();
        const QImage shown = curves.grab().toImage();
        QVERIFY(pixelsOf(shown, QColor::fromRgb(QRgb(position.GetColour()))) > 50);
        const QPoint lastKey = curves.ToScreen(49, 700.0);
        QVERIFY(curves.rect().contains(lastKey));
        QCOMPARE(shown.pixelColor(lastKey + QPoint(1, 1)), QColor(Qt::white));
        // The opacity lies far below; fitted to it, the view shows its curve.
        QVERIFY(frame->grab().save(output("spline-bar.png")));
        curves.GetView().SetActiveValue(&opacity);
        QTest::keyClick(&curves, Qt::Key_F);
        QVERIFY(pixelsOf(curves.grab().toImage(), QColor::fromRgb(QRgb(opacity.GetColour()))) > 50);
        QVERIFY(bar->grab().save(output("spline-bar-only.png")));
    }

    void aDraggedKeyMovesByWholeFramesWithinLimitsAndUndoRestores() {
        CCurveWindow& curves = showCurves({"Tilt: X position", "Tilt: Opacity"});
        iActiveValue& position = valueNamed("Composer", "Tilt: X position");
        CObjectViewWindow* view = frame->OpenView(*project().FindElement("Composer"));
        QTRY_VERIFY_WITH_TIMEOUT(frame->AllViewsDrawn(), 20000);

        const QPoint grip = curves.ToScreen(49, 700.0);
        const QPoint to = curves.ToScreen(40, 650.0) + QPoint(1, 0);
        mouse(curves, QEvent::MouseButtonPress, grip);
        for (int step = 1; step <= 4; ++step)
            mouse(curves, QEvent::MouseMove, grip + (to - grip) * step / 4);
        QSignalSpy painted(view, &CObjectViewWindow::Painted);
        QElapsedTimer clock;
        clock.start();
        mouse(curves, QEvent::MouseButtonRelease, to);
        QVERIFY(painted.wait(20000));
        qInfo("a key's drop to the repainted composer view: %lld ms", clock.elapsed());
        QCOMPARE(position.GetKeyCount(), 2L);
        QCOMPARE(position.GetKey(1)->frame, 40L);
        QVERIFY(std::abs(position.GetKey(1)->value - 650.0) < 2.0 / curves.GetView().zoomY + 1e-9);
        QVERIFY(frame->Undo());
        QCOMPARE(position.GetKey(1)->frame, 49L);
        QCOMPARE(position.GetKey(1)->value, 700.0);
        QVERIFY(frame->Redo());
        QCOMPARE(position.GetKey(1)->frame, 40L);
        QVERIFY(frame->Undo());

        // The opacity's one key, dragged far up and left, stops at 100 and at frame 0.
        iActiveValue& opacity = valueNamed("Composer", "Tilt: Opacity");
        curves.GetView().SetActiveValue(&opacity);
        const QPoint key = curves.ToScreen(0, 80.0);
        mouse(curves, QEvent::MouseButtonPress, key);
        mouse(curves, QEvent::MouseMove, key + QPoint(-50, -3000));
        mouse(curves, QEvent::MouseButtonRelease, key + QPoint(-50, -3000));
        QCOMPARE(opacity.GetKey(0)->value, 100.0);
        QCOMPARE(opacity.GetKey(0)->frame, 0L);
        QVERIFY(frame->Undo());
        QCOMPARE(opacity.GetKey(0)->value, 80.0);

        // A rubber band over both keys of the position, then DEL: one step of undo.
        curves.GetView().SetActiveValue(&position);
        mouse(curves, QEvent::MouseButtonPress, curves.ToScreen(-5, 800.0));
        mouse(curves, QEvent::MouseMove, curves.ToScreen(60, 400.0));
        mouse(curves, QEvent::MouseButtonRelease, curves.ToScreen(60, 400.0));
        QCOMPARE(position.CountSelectedKeys(), 2L);
        QTest::keyClick(&curves, Qt::Key_Delete);
        QCOMPARE(position.GetKeyCount(), 1L);
        QVERIFY(frame->Undo());
        QCOMPARE(position.GetKeyCount(), 2L);

        // In add mode a click sets a key on the active curve.
        QTest::keyClick(&curves, Qt::Key_Space);
        QVERIFY(curves.GetView().IsAddMode());
        mouse(curves, QEvent::MouseButtonPress, curves.ToScreen(20, 600.0));
        mouse(curves, QEvent::MouseButtonRelease, curves.ToScreen(20, 600.0));
        QTest::keyClick(&curves, Qt::Key_Space);
        QCOMPARE(position.GetKeyCount(), 3L);
        QCOMPARE(position.GetKey(1)->frame, 20L);
        QVERIFY(frame->Undo());
        QCOMPARE(position.GetKeyCount(), 2L);
    }

    void aTypedKeyOutsideTheLimitsIsRefusedWithItsText() {
        CCurveWindow& curves = showCurves({"Tilt: Opacity"});
        iActiveValue& opacity = valueNamed("Composer", "Tilt: Opacity");
        const QPoint key = curves.ToScreen(0, 80.0);
        mouse(curves, QEvent::MouseButtonPress, key);
        mouse(curves, QEvent::MouseButtonRelease, key);
        QTest::mouseDClick(&curves, Qt::LeftButton, {}, key);
        CKeyEditPanel* panel = curves.GetKeyEditPanel();
        QVERIFY(panel && panel->isVisible());
        QCOMPARE(panel->GetValueField()->text(), QString("80"));
        panel->GetValueField()->setText("150");
        panel->accept();
        QCOMPARE(panel->GetComplaint(), QString("Please enter a number from 0 to 100."));
        QCOMPARE(ui.Status, panel->GetComplaint());
        QVERIFY(panel->isVisible());
        panel->GetValueField()->setText("55");
        panel->GetFrameField()->setText("-3");
        panel->accept();
        QCOMPARE(panel->GetComplaint(), QString("Please enter a whole number from 0 to 10000000."));
        QCOMPARE(opacity.GetKey(0)->value, 80.0);
        QVERIFY(panel->grab().save(output("key-edit-panel.png")));
        panel->GetFrameField()->setText("12");
        panel->accept();
        QTRY_VERIFY(!curves.GetKeyEditPanel());
        QCOMPARE(opacity.GetKey(0)->frame, 12L);
        QCOMPARE(opacity.GetKey(0)->value, 55.0);
        QVERIFY(frame->Undo());
        QCOMPARE(opacity.GetKey(0)->frame, 0L);
        QCOMPARE(opacity.GetKey(0)->value, 80.0);
    }

    void theTimeControlMovesEveryViewToItsFrame() {
        std::vector<CObjectViewWindow*> views = {frame->OpenView(*project().FindElement("Composer")),
                                                 frame->OpenView(*project().FindElement("Footage"))};
        for (CObjectViewWindow* view : views)
            showWholeAtQuarter(*view);
        for (CObjectViewWindow* view : views)
            QCOMPARE(view->size(), QSize(480, 270));
        time->UpdateObject();
        CDlgTimeCtrl& control = time->GetControl();
        QVERIFY(control.AreControlsEnabled());
        auto allAt = [&views](long at) {
            return std::all_of(views.begin(), views.end(),
                               [at](CObjectViewWindow* view) { return view->GetView().GetFrame() == at; });
        };
        QTest::mouseClick(time->GetButton(">"), Qt::LeftButton);
        QVERIFY(allAt(1));
        QTest::mouseClick(time->GetButton(">>"), Qt::LeftButton);
        QVERIFY(allAt(101));
        QCOMPARE(time->GetSlider().value(), 101);
        QTest::mouseClick(time->GetButton(">|"), Qt::LeftButton);
        QVERIFY(allAt(249));
        QTest::mouseClick(time->GetButton("<<"), Qt::LeftButton);
        QVERIFY(allAt(149));
        QTest::mouseClick(time->GetButton("|<"), Qt::LeftButton);
        QVERIFY(allAt(0));
        QTest::mouseClick(time->GetButton("K>"), Qt::LeftButton);
        QVERIFY(allAt(49));
        time->GetFrameField().setText("30");
        QTest::keyClick(&time->GetFrameField(), Qt::Key_Return);
        QVERIFY(allAt(30));
        // A view opened now shows the frame as well.
        CObjectViewWindow* later = frame->OpenView(*project().FindElement("Grade"));
        QTRY_COMPARE(later->GetView().GetFrame(), 30L);
        QTRY_VERIFY_WITH_TIMEOUT(frame->AllViewsDrawn(), 20000);
        for (CObjectViewWindow* view : views)
            QCOMPARE(differenceFromQvrFrame(*view, 30), 0);

        // Play from 40 to the end of a range of 40 to 60 at 25 frames per second.
        QTest::mouseClick(time->GetButton("..."), Qt::LeftButton);
        time->findChild<QCheckBox*>("LimitRange")->setChecked(true);
        time->findChild<QSpinBox*>("RangeFirst")->setValue(40);
        time->findChild<QSpinBox*>("RangeLast")->setValue(60);
        QVERIFY(time->grab().save(output("time-control-options.png")));
        QTest::mouseClick(time->GetButton("..."), Qt::LeftButton);
        QVERIFY(!control.GetOptionsPanel());
        QCOMPARE(control.GetLastFrame(), 60L);
        control.GoToFrame(40);
        QSignalSpy stopped(time, &CTimeControlWindow::PlayStopped);
        QTest::mouseClick(time->GetButton("|>"), Qt::LeftButton);
        QVERIFY(stopped.wait(20000));
        QVERIFY(allAt(60));
        const CTimeControlWindow::PlayRate rate = time->GetPlayRate();
        qInfo("played 40 to 60: %.1f frames/s shown, %ld dropped", rate.FramesPerSecond(), rate.Dropped());
        QCOMPARE(rate.Ticks, 21L);
        QVERIFY(rate.Shown > 0);
        QTRY_VERIFY_WITH_TIMEOUT(frame->AllViewsDrawn(), 20000);
        for (CObjectViewWindow* view : views)
            QCOMPARE(differenceFromQvrFrame(*view, 60), 0);
        QVERIFY(frame->grab().save(output("time-control.png")));
        QVERIFY(time->grab().save(output("time-control-only.png")));
        QVERIFY(time->findChild<QLabel*>()->text().contains(" frames/s shown, "));
        control.limitRange = false;
    }

private:
    // The spline bar with these values of the composer checked, fitted to the active one.
    CCurveWindow& showCurves(std::initializer_list<std::string> names) {
        CSplineBarTree& tree = bar->GetBar().GetTree();
        const CSplineBarElement* composer = tree.FindEntry(project().FindElement("Composer"));
        for (const std::string& name : names)
            bar->SetChecked(composer->FindValue(&valueNamed("Composer", name)), true);
        CCurveWindow& curves = bar->GetCurves();
        curves.setFocus();
        curves.GetView().SetActiveValue(&valueNamed("Composer", *names.begin()));
        QTest::keyClick(&curves, Qt::Key_F);
        // Whole frames apart by eight pixels, frame 0 near the left.
        curves.GetView().zoomX = 8.0;
        curves.GetView().Position.x = -10;
        return curves;
    }

    StatusInterface ui;
    CTessarineApp app{CTessarineApp::Preferences::ReadOnly};
    std::unique_ptr<CMainFrame> frame;
    CSplineBarWindow* bar = nullptr;
    CTimeControlWindow* time = nullptr;
};

QTEST_MAIN(AnimationTest)
#include "AnimationTest.moc"
