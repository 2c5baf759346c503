// QVR_SHOWCASE=build/showcase QVR_HOME=build/showcase/home QT_QPA_PLATFORM=offscreen qvrguibench

#include "CMainFrame.h"
#include "CObjectViewWindow.h"
#include "CQtUserInterface.h"
#include "app/CTessarineApp.h"
#include "app/EInitializer.h"
#include "model/iElement.h"
#include "model/iProject.h"
#include "objects/imodMerger.h"
#include "views/CObjectView.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <benchmark/benchmark.h>
#include <sys/resource.h>

namespace {

QString showcaseProject() {
    return qEnvironmentVariable("QVR_SHOWCASE", "build/showcase") + "/showcase.tsp";
}

void mouse(QWidget& widget, QEvent::Type type, QPoint point) {
    QMouseEvent event(type, point, widget.mapToGlobal(point), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
}

bool waitUntilDrawn(CMainFrame& frame) {
    return QTest::qWaitFor([&frame] { return frame.AllViewsDrawn(); }, 60000);
}

// The main window with the showcase loaded, idle.
void StartUpWithShowcase(benchmark::State& state) {
    for (auto _ : state) {
        CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
        EInitializerStatus silent;
        app.InitInstance(CCommandLineInfo{}, silent);
        {
            CMainFrame frame(app.GetDocument(), false);
            frame.show();
            frame.OpenDocument(showcaseProject());
            QApplication::processEvents();
            waitUntilDrawn(frame);
        }
        app.ExitInstance();
    }
}

// A layer dropped in the composer's view of 1920x1080 shown at 50%, until the new picture is shown.
void ComposerLayerDropToRepaint(benchmark::State& state) {
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    EInitializerStatus silent;
    app.InitInstance(CCommandLineInfo{}, silent);
    {
        CMainFrame frame(app.GetDocument(), false);
        frame.OpenDocument(showcaseProject());
        iElement* composer = iProject::GetStandard().FindElement("Composer");
        CObjectViewWindow view(iProject::GetStandard());
        view.GetFrame().DoSetElement(composer);
        view.GetView().SetZoom(0.5);
        view.GetView().SetCenter({960, 540});
        view.resize(960, 540);
        view.show();
        if (!QTest::qWaitFor([&view] { return view.IsUpToDate(); }, 60000)) state.SkipWithError("no picture");
        const CRect layer = static_cast<imodMerger*>(composer)
                                ->GetLinkOf(iProject::GetStandard().FindElement("Inset"))
                                ->GetLayerRect();
        const CPoint centre = view.GetView().GetMapping().ToClient(
            CPoint{(layer.left + layer.right) / 2, (layer.top + layer.bottom) / 2});
        QPoint grip(int(centre.x), int(centre.y));
        mouse(view, QEvent::MouseButtonPress, grip);
        mouse(view, QEvent::MouseButtonRelease, grip);
        int direction = 1;
        for (auto _ : state) {
            const QPoint to = grip + QPoint(16, 8) * direction;
            mouse(view, QEvent::MouseButtonPress, grip);
            mouse(view, QEvent::MouseMove, to);
            QSignalSpy painted(&view, &CObjectViewWindow::Painted);
            mouse(view, QEvent::MouseButtonRelease, to);
            if (!painted.wait(60000)) state.SkipWithError("no picture");
            grip = to;
            direction = -direction;
        }
    }
    app.ExitInstance();
}

// The showcase with three views of 1920x1080 pictures open: the process's peak memory.
void ThreeViewsPeakMemory(benchmark::State& state) {
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    EInitializerStatus silent;
    app.InitInstance(CCommandLineInfo{}, silent);
    {
        CMainFrame frame(app.GetDocument(), false);
        frame.resize(1920, 1080);
        frame.show();
        frame.OpenDocument(showcaseProject());
        for (auto _ : state) {
            for (const char* name : {"Composer", "Footage", "Badge"})
                frame.OpenView(*iProject::GetStandard().FindElement(name));
            waitUntilDrawn(frame);
        }
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        state.counters["peak_MB"] = double(usage.ru_maxrss) / 1024.0;
    }
    app.ExitInstance();
}

} // namespace

BENCHMARK(StartUpWithShowcase)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(ComposerLayerDropToRepaint)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(ThreeViewsPeakMemory)->Unit(benchmark::kMillisecond)->Iterations(1);

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    CQtUserInterface userInterface(false);
    EUserInterface::Set(&userInterface);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    EUserInterface::Set(nullptr);
    return 0;
}
