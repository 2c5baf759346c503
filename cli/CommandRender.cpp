// qvr render PROJECT [--saver NAME] [--first N] [--last N] [--step N]
//                    [--threads N] [--log FILE] [--output NAME]:
// runs a standard saver's render exactly as its execution dialog would.

#include "QvrCommand.h"
#include "QvrSession.h"

#include "foundation/EStringTable.h"
#include "foundation/hReport.h"
#include "foundation/qvrString.h"
#include "model/iProject.h"
#include "output/ESaverExecution.h"
#include "output/isvrSaver.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>
#include <unistd.h>

namespace {

constexpr const char* Help =
    "usage: qvr render PROJECT [--saver NAME] [--first N] [--last N] [--step N]\n"
    "                  [--threads N] [--log FILE] [--output NAME]\n\n"
    "Runs a standard saver's render run as its execution dialog would, with the\n"
    "saver's own settings unless overridden. Without --saver the project must hold\n"
    "exactly one saver. --log keeps the render log in FILE; --output writes to NAME\n"
    "instead of the saver's file name. Progress goes to standard error when it is a\n"
    "terminal. Ctrl-C sends the stop; a second Ctrl-C ends the threads by force.\n"
    "Exit 0 when every frame was done, 1 when some failed or the run was aborted,\n"
    "2 when it could not start.\n";

constexpr unsigned long PollMs = 100;
constexpr EStringId TextNotConfigured = 65063;

struct RenderOptions {
    std::string Project;
    std::string Saver;
    std::optional<long> First;
    std::optional<long> Last;
    std::optional<long> Step;
    std::optional<long> Threads;
    std::string Log;
    std::string Output;
};

std::atomic<int> interrupts{0};

extern "C" void onInterrupt(int) {
    interrupts.fetch_add(1);
}

int usage(const std::string& problem) {
    std::fprintf(stderr, "qvr render: %s\n\n%s", problem.c_str(), Help);
    return ExitUsage;
}

std::optional<long>* numberOption(RenderOptions& options, const std::string& name) {
    if (name == "--first") return &options.First;
    if (name == "--last") return &options.Last;
    if (name == "--step") return &options.Step;
    if (name == "--threads") return &options.Threads;
    return nullptr;
}

std::string* textOption(RenderOptions& options, const std::string& name) {
    if (name == "--saver") return &options.Saver;
    if (name == "--log") return &options.Log;
    if (name == "--output") return &options.Output;
    return nullptr;
}

// Reads the options; an empty text means success, otherwise it says what is wrong.
std::string parseOptions(const QvrCommand::Arguments& arguments, RenderOptions& options) {
    std::vector<std::string> positional;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        std::optional<long>* number = numberOption(options, name);
        std::string* text = textOption(options, name);
        if (!number && !text) {
            if (name.rfind("--", 0) == 0) return "unknown option \"" + name + "\"";
            positional.push_back(name);
            continue;
        }
        if (i + 1 >= arguments.size()) return "\"" + name + "\" needs a value";
        const std::string& value = arguments[++i];
        long parsed = 0;
        if (text) {
            *text = value;
        } else if (!qvrParseLong(value, parsed) || parsed < 0) {
            return name + " wants a whole number of at least 0, not \"" + value + "\"";
        } else {
            *number = parsed;
        }
    }
    if (positional.size() != 1) return "one PROJECT is needed";
    options.Project = QvrSession::Absolute(positional[0]);
    if (!options.Log.empty()) options.Log = QvrSession::Absolute(options.Log);
    if (!options.Output.empty()) options.Output = QvrSession::Absolute(options.Output);
    return {};
}

// The saver named, or the project's only saver; null with a complaint printed.
isvrSaver* findSaver(const RenderOptions& options) {
    iProject& project = iProject::GetStandard();
    iElement* found = nullptr;
    if (!options.Saver.empty()) {
        found = project.FindElement(options.Saver);
        if (!found) {
            std::fprintf(stderr, "qvr render: %s: there is no element \"%s\"\n", options.Project.c_str(),
                         options.Saver.c_str());
            return nullptr;
        }
    } else {
        int savers = 0;
        for (iElement* element : project.GetElements()) {
            if (!dynamic_cast<iSaver*>(element)) continue;
            found = element;
            ++savers;
        }
        if (savers != 1) {
            std::fprintf(stderr, "qvr render: %s: the project holds %d savers; name one with --saver\n",
                         options.Project.c_str(), savers);
            return nullptr;
        }
    }
    auto* saver = dynamic_cast<isvrSaver*>(found);
    if (!saver)
        std::fprintf(stderr, "qvr render: %s: \"%s\" is not a standard saver\n", options.Project.c_str(),
                     found->GetName().c_str());
    return saver;
}

iSaverSetup runSetup(const isvrSaver& saver, const RenderOptions& options) {
    iSaverSetup setup = saver.GetSetup();
    auto take = [](const std::optional<long>& given, std::uint32_t& value) {
        if (given) value = static_cast<std::uint32_t>(*given);
    };
    take(options.First, setup.VideoStart);
    take(options.Last, setup.VideoEnd);
    take(options.Step, setup.VideoSteps);
    take(options.Threads, setup.MiscThreadCnt);
    if (!options.Log.empty()) {
        setup.LogKeep = true;
        setup.LogFile = options.Log;
    }
    return setup;
}

// Why the saver can't run with the setup; empty when it can.
std::string startProblem(const isvrSaver& saver, const iSaverSetup& setup) {
    if (!setup.IsValid()) return EStringTable::Load(TextNotConfigured);
    if (!saver.GetFirstParent()) return "the saver has no source";
    if (!saver.GetStream()) return "the saver has no output stream";
    if (!saver.CanExecute())
        return qvrFormat("the output size must be at least %ld,%ld", isvrSaver::MinSide, isvrSaver::MinSide);
    if (saver.GetFileName().empty()) return "the saver has no output file name";
    return {};
}

// The dialog's window on a terminal: a progress line on standard error, and
// the threads' warnings and errors printed as they come.
class TerminalView : public ESaverExecution::View {
public:
    TerminalView() : Interactive(::isatty(STDERR_FILENO) == 1) {}

    void AppendLine(const std::string& line) override {
        const bool important = line.rfind("*** ", 0) == 0 || line.find(" Warning: ") != std::string::npos;
        if (!important) return;
        clearProgress();
        std::fputs(line.substr(0, line.find_last_not_of("\r\n") + 1).c_str(), stderr);
        std::fputc('\n', stderr);
    }
    void RemoveFirstLines(size_t) override {}
    void PlaySound(ESaverExecution::Sound) override {}
    void MinimizeMainWindow() override {}
    void RestoreMainWindow() override {}
    void Close() override {}

    void ShowProgress(ESaverExecution& run) {
        if (!Interactive) return;
        std::uint32_t total = 0;
        std::uint32_t done = 0;
        std::uint32_t failed = 0;
        std::uint32_t remaining = 0;
        run.GetCounts(total, done, failed, remaining);
        std::fprintf(stderr, "\r\033[K%s: %u/%u frames, %u error(s)%s", run.GetStateText().c_str() + 1,
                     done + failed, total, failed, timesOf(run).c_str());
        std::fflush(stderr);
        ProgressShown = true;
    }
    void EndProgress() {
        if (ProgressShown) std::fputc('\n', stderr);
        ProgressShown = false;
    }

private:
    static std::string timesOf(ESaverExecution& run) {
        long elapsed = 0;
        long remaining = 0;
        if (!run.GetTimes(elapsed, remaining)) return {};
        return ", elapsed " + ESaverExecution::ClockText(elapsed) + ", remaining " +
               ESaverExecution::ClockText(remaining);
    }
    void clearProgress() {
        if (!ProgressShown) return;
        std::fputs("\r\033[K", stderr);
        ProgressShown = false;
    }

    const bool Interactive;
    bool ProgressShown = false;
};

// Drives the run until it is over: messages as they come, the figures once a
// second, and the interrupts as the abort and close buttons.
void driveRun(ESaverExecution& run, TerminalView& view) {
    using Clock = std::chrono::steady_clock;
    int handled = 0;
    Clock::time_point nextTick = Clock::now() + std::chrono::milliseconds(ESaverExecution::TimerMs);
    while (run.GetState() != ESaverExecution::StateOver) {
        if (run.Wait(PollMs)) run.DispatchMessages();
        if (Clock::now() >= nextTick) {
            nextTick += std::chrono::milliseconds(ESaverExecution::TimerMs);
            run.OnTimer();
            view.ShowProgress(run);
        }
        const int seen = interrupts.load();
        if (seen == handled) continue;
        handled = seen;
        if (seen == 1)
            run.SendStop();
        else
            run.HardAbort();
    }
    view.ShowProgress(run);
    view.EndProgress();
}

int renderWith(isvrSaver& saver, const iSaverSetup& setup) {
    TerminalView view;
    ESaverExecution run(saver, setup, view);
    run.Open();
    if (run.GetState() == ESaverExecution::StateOver) {
        std::fprintf(stderr, "qvr render: %s:%s\n", saver.GetName().c_str(), run.GetStateText().c_str());
        return ExitUsage;
    }
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    struct sigaction previous {};
    sigaction(SIGINT, &action, &previous);
    driveRun(run, view);
    sigaction(SIGINT, &previous, nullptr);
    std::uint32_t total = 0;
    std::uint32_t done = 0;
    std::uint32_t failed = 0;
    std::uint32_t remaining = 0;
    run.GetCounts(total, done, failed, remaining);
    std::fprintf(stderr, "qvr render: %s:%s %u of %u frames done, %u failed\n", saver.GetName().c_str(),
                 run.GetStateText().c_str(), done, total, failed);
    return !run.WasStopSent() && done == total ? ExitSuccess : ExitFailures;
}

int runRender(const QvrCommand::Arguments& arguments) {
    RenderOptions options;
    const std::string problem = parseOptions(arguments, options);
    if (!problem.empty()) return usage(problem);
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    hReportRoot report("Loading");
    const bool loaded = session.GetApp().GetDocument().OnOpenDocument(options.Project, &report);
    for (const hReportEntry& entry : report.GetEntries())
        std::fprintf(stderr, "report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
    if (!loaded) {
        std::fprintf(stderr, "qvr render: %s: the project could not be loaded\n", options.Project.c_str());
        return ExitUsage;
    }
    isvrSaver* saver = findSaver(options);
    if (!saver) return ExitUsage;
    if (!options.Output.empty()) saver->SetFileName(options.Output);
    const iSaverSetup setup = runSetup(*saver, options);
    const std::string cannot = startProblem(*saver, setup);
    if (!cannot.empty()) {
        std::fprintf(stderr, "qvr render: %s: %s\n", saver->GetName().c_str(), cannot.c_str());
        return ExitUsage;
    }
    return renderWith(*saver, setup);
}

QvrCommand render("render", "run a saver's render of a frame range", Help, runRender);

} // namespace
