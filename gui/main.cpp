// qvrtessarine [PROJECT]
// qvrtessarine PROJECT --grab OUT.png [--view ELEMENT]... [--size W,H]
// qvrtessarine --grab-dialogs DIR PROJECT
//
// Starts the components with the splash, shows the main window and opens the
// project. With --grab it opens the named views, waits until every picture
// is painted, writes the whole main window to OUT.png and ends. With
// --grab-dialogs it writes a picture of every dialog into DIR and ends.

#include "CDialogGallery.h"
#include "CMainFrame.h"
#include "CObjectViewWindow.h"
#include "CQtUserInterface.h"
#include "CSplashScreen.h"
#include "app/CTessarineApp.h"
#include "model/iElement.h"
#include "model/iProject.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>

#include <cstdio>
#include <optional>

namespace {

struct GrabRequest {
    QString Output;
    QStringList Views;
    QSize Size{1280, 800};
};

struct Arguments {
    std::vector<std::string> Shell; // what the application's own command line takes
    CCommandLineInfo CommandLine;
    std::optional<GrabRequest> Grab;
    QString DialogFolder;
    QString Error;
};

Arguments parse(const QStringList& words) {
    Arguments arguments;
    for (qsizetype i = 1; i < words.size(); ++i) {
        const QString& word = words[i];
        const bool hasValue = i + 1 < words.size();
        if (word == "--grab-dialogs") {
            if (!hasValue) {
                arguments.Error = word + " needs a folder";
                return arguments;
            }
            arguments.DialogFolder = QFileInfo(words[++i]).absoluteFilePath();
        } else if (word == "--grab" || word == "--view" || word == "--size") {
            if (!hasValue) {
                arguments.Error = word + " needs a value";
                return arguments;
            }
            if (!arguments.Grab) arguments.Grab = GrabRequest{};
            const QString value = words[++i];
            // The program works in its own directory: paths are taken before it goes there.
            if (word == "--grab") arguments.Grab->Output = QFileInfo(value).absoluteFilePath();
            if (word == "--view") arguments.Grab->Views << value;
            if (word == "--size") {
                const QStringList sides = value.split(',');
                bool wideOk = false;
                bool highOk = false;
                if (sides.size() == 2)
                    arguments.Grab->Size = {sides[0].toInt(&wideOk), sides[1].toInt(&highOk)};
                if (!wideOk || !highOk || arguments.Grab->Size.isEmpty())
                    arguments.Error = "bad --size " + value;
            }
        } else {
            arguments.Shell.push_back(word.toStdString());
        }
    }
    arguments.CommandLine = CCommandLineInfo::Parse(arguments.Shell);
    if (arguments.Grab && (arguments.Grab->Output.isEmpty() || arguments.CommandLine.FileName.empty()))
        arguments.Error = "--grab needs a project and an output file";
    if (!arguments.DialogFolder.isEmpty() && arguments.CommandLine.FileName.empty())
        arguments.Error = "--grab-dialogs needs a project";
    return arguments;
}

// Opens the views, waits for their pictures, writes the window and ends the loop.
void grabWhenPainted(CMainFrame& frame, const GrabRequest& grab, QApplication& application) {
    for (const QString& name : grab.Views) {
        iElement* element = iProject::GetStandard().FindElement(name.toStdString());
        if (!element) {
            std::fprintf(stderr, "qvrtessarine: no element called \"%s\"\n", qPrintable(name));
            QTimer::singleShot(0, &application, [] { QApplication::exit(2); });
            return;
        }
        frame.OpenView(*element);
    }
    auto* clock = new QElapsedTimer;
    clock->start();
    auto* poll = new QTimer(&frame);
    QObject::connect(poll, &QTimer::timeout, &frame, [&frame, grab, poll, clock] {
        const bool timedOut = clock->elapsed() > 120000;
        if (!frame.AllViewsDrawn() && !timedOut) return;
        poll->stop();
        delete clock;
        const bool written = !timedOut && frame.grab().save(grab.Output, "PNG");
        if (!written) std::fprintf(stderr, "qvrtessarine: could not write %s\n", qPrintable(grab.Output));
        QApplication::exit(written ? 0 : 1);
    });
    poll->start(50);
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setOrganizationName("nevora works");
    QApplication::setApplicationName("qvrTessarine");
    const Arguments arguments = parse(QApplication::arguments());
    if (!arguments.Error.isEmpty()) {
        std::fprintf(stderr,
                     "qvrtessarine: %s\nusage: qvrtessarine [PROJECT]\n"
                     "       qvrtessarine PROJECT --grab OUT.png [--view ELEMENT]... [--size W,H]\n"
                     "       qvrtessarine --grab-dialogs DIR PROJECT\n",
                     qPrintable(arguments.Error));
        return 2;
    }
    const bool grabbing = arguments.Grab.has_value() || !arguments.DialogFolder.isEmpty();
    CQtUserInterface userInterface(!grabbing);
    EUserInterface::Set(&userInterface);
    CTessarineApp app(grabbing ? CTessarineApp::Preferences::ReadOnly
                               : CTessarineApp::Preferences::ReadAndWrite);
    const CCommandLineInfo& commandLine = arguments.CommandLine;
    // The project opens in the main window, which asks and reports as the File menu does.
    CCommandLineInfo startUp = commandLine;
    startUp.ShellCommand = CCommandLineInfo::Command::FileNew;
    int result = 0;
    {
        CSplashScreen splash;
        if (!app.InitInstance(startUp, splash)) return 1;
        if (commandLine.RunEmbedded || commandLine.RunAutomated) {
            app.ExitInstance();
            return 0;
        }
        CMainFrame frame(app.GetDocument(), !grabbing);
        userInterface.SetStatusBar(frame.statusBar());
        if (arguments.Grab) frame.resize(arguments.Grab->Size);
        frame.show();
        splash.Close(&frame);
        const bool opened = commandLine.ShellCommand != CCommandLineInfo::Command::FileOpen ||
                            frame.OpenDocument(QString::fromStdString(commandLine.FileName));
        if (grabbing && !opened) {
            result = 1;
        } else if (!arguments.DialogFolder.isEmpty()) {
            const int written = CDialogGallery::GrabAll(&frame, commandLine.FileName, arguments.DialogFolder);
            std::printf("qvrtessarine: %d dialog picture(s) in %s\n", written,
                        qPrintable(arguments.DialogFolder));
            result = written > 0 ? 0 : 1;
        } else {
            if (arguments.Grab) grabWhenPainted(frame, *arguments.Grab, application);
            result = app.Run([] { return QApplication::exec(); });
        }
        userInterface.SetStatusBar(nullptr);
    }
    app.ExitInstance();
    EUserInterface::Set(nullptr);
    return result;
}
