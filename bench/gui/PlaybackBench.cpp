// qvrplaybench PROJECT [SECONDS] [ELEMENT] [WIDTH,HEIGHT]
//
// Plays the project in the desktop program's time control, from the first
// frame to the last and again, for SECONDS (10 by default) in a view of the
// element (Composer) of WIDTH x HEIGHT (720,405) showing its whole picture,
// and prints the resident memory after the first second and at the end, then
// "N.N frames/s shown, M dropped" as the last line. Run it with
// QT_QPA_PLATFORM=offscreen and QVR_HOME set as for the program.

#include "CMainFrame.h"
#include "CObjectViewWindow.h"
#include "CQtUserInterface.h"
#include "CTimeControlWindow.h"
#include "app/CTessarineApp.h"
#include "app/EInitializer.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "views/CObjectView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <cstdio>
#include <sys/resource.h>

namespace {

// Resident memory in megabytes.
double residentMegabytes() {
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly)) return 0.0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').front().toDouble() / 1024.0;
    return 0.0;
}

struct Options {
    QString Project;
    double Seconds = 10.0;
    QString Element = "Composer";
    QSize Size{720, 405};
};

Options parse(const QStringList& words) {
    Options options;
    // The program works in its own directory: the path is taken before it goes there.
    if (words.size() > 1) options.Project = QFileInfo(words[1]).absoluteFilePath();
    if (words.size() > 2) options.Seconds = words[2].toDouble();
    if (words.size() > 3) options.Element = words[3];
    if (words.size() > 4) {
        const QStringList sides = words[4].split(',');
        options.Size = {sides.value(0).toInt(), sides.value(1).toInt()};
    }
    return options;
}

// Plays from the first frame until the time is up; the rate over every play.
int play(CMainFrame& frame, const Options& options) {
    iElement* element = iProject::GetStandard().FindElement(options.Element.toStdString());
    if (!element) {
        std::fprintf(stderr, "qvrplaybench: no element called \"%s\"\n", qPrintable(options.Element));
        return 2;
    }
    iImageSizeResult size;
    element->QueryImageSize(size, 0);
    // A window of the main window, so that the time control moves it.
    auto* view = new CObjectViewWindow(iProject::GetStandard(), &frame);
    view->setWindowFlag(Qt::Window);
    view->GetFrame().DoSetElement(element);
    view->resize(options.Size);
    view->show();
    view->GetView().SetZoom(double(options.Size.width()) / double(std::max(size.Size.Width, 1L)));
    view->GetView().SetCenter({size.Size.Width / 2, size.Size.Height / 2});
    view->Invalidate();
    if (!QTest::qWaitFor([&frame] { return frame.AllViewsDrawn(); }, 60000)) return 1;

    auto* time = frame.findChild<CTimeControlWindow*>();
    time->UpdateObject();
    CTimeControlWindow::PlayRate total;
    QElapsedTimer clock;
    clock.start();
    double earlyMemory = 0.0;
    while (double(clock.elapsed()) / 1000.0 < options.Seconds) {
        time->GetControl().GoToFirstFrame();
        time->GetControl().Play(CDlgTimeCtrl::Forward);
        while (time->GetControl().timerDirection != CDlgTimeCtrl::Stopped &&
               double(clock.elapsed()) / 1000.0 < options.Seconds) {
            QTest::qWait(20);
            if (earlyMemory == 0.0 && clock.elapsed() >= 1000) earlyMemory = residentMegabytes();
        }
        time->GetControl().Play(CDlgTimeCtrl::Stopped);
        const CTimeControlWindow::PlayRate rate = time->GetPlayRate();
        total.Ticks += rate.Ticks;
        total.Shown += rate.Shown;
        total.Seconds += rate.Seconds;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("memory: %.1f MB after 1 s, %.1f MB after %.0f s, peak %.1f MB\n", earlyMemory,
                residentMegabytes(), options.Seconds, double(usage.ru_maxrss) / 1024.0);
    std::printf("%.1f frames/s shown, %ld dropped\n", total.FramesPerSecond(), total.Dropped());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const Options options = parse(QApplication::arguments());
    if (options.Project.isEmpty() || options.Seconds <= 0.0 || options.Size.isEmpty()) {
        std::fprintf(stderr, "usage: qvrplaybench PROJECT [SECONDS] [ELEMENT] [WIDTH,HEIGHT]\n");
        return 2;
    }
    CQtUserInterface userInterface(false);
    EUserInterface::Set(&userInterface);
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    EInitializerStatus silent;
    if (!app.InitInstance(CCommandLineInfo{}, silent)) return 1;
    int result = 1;
    {
        CMainFrame frame(app.GetDocument(), false);
        frame.show();
        if (frame.OpenDocument(options.Project)) result = play(frame, options);
    }
    app.ExitInstance();
    EUserInterface::Set(nullptr);
    return result;
}
