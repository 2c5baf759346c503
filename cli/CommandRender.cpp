// qvr render PROJECT [--saver NAME] [--first N] [--last N] [--step N]
//                    [--threads N] [--log FILE] [--output NAME]:
// runs a saver's render exactly as its execution dialog would: a standard
// saver, or a projector array saver with the state of every projector.

#include "QvrCommand.h"
#include "QvrRender.h"
#include "QvrSaverLookup.h"
#include "QvrSession.h"

#include "foundation/EStringTable.h"
#include "foundation/qvrString.h"
#include "model/iProject.h"
#include "output/ESaverExecution.h"
#include "output/OutputText.h"
#include "output/isvrSaver.h"
#include "projector/EVitreaExecution.h"
#include "projector/isvrVitrea.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <unistd.h>

namespace {

constexpr const char* Help =
    "usage: qvr render PROJECT [--saver NAME] [--first N] [--last N] [--step N]\n"
    "                  [--threads N] [--log FILE] [--output NAME]\n\n"
    "Runs a saver's render run as its execution dialog would, with the saver's own\n"
    "settings unless overridden. Without --saver the project must hold exactly one\n"
    "saver. --log keeps the render log in FILE; --output writes to NAME instead of\n"
    "the file name of a standard saver. Progress goes to standard error when it is\n"
    "a terminal; a projector array saver shows there how far each projector is, and\n"
    "the outcome of every projector at the end. Ctrl-C sends the stop; a second\n"
    "Ctrl-C ends the threads by force.\n"
    "Exit 0 when every frame was done, 1 when some failed or the run was aborted,\n"
    "2 when it could not start.\n";

constexpr unsigned long PollMs = 100;

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

iSaverSetup runSetup(const iSaver& saver, const RenderOptions& options) {
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
std::string startProblem(const iSaver& saver, const iSaverSetup& setup) {
    if (!setup.IsValid()) return EStringTable::Load(OutputText::NotConfigured);
    if (!saver.GetFirstParent()) return "the saver has no source";
    return {};
}

std::string startProblem(const isvrVitrea& saver, const iSaverSetup& setup) {
    const std::string problem = startProblem(static_cast<const iSaver&>(saver), setup);
    return problem.empty() ? saver.CheckRender(setup) : problem;
}

std::string startProblem(const isvrSaver& saver, const iSaverSetup& setup) {
    const std::string problem = startProblem(static_cast<const iSaver&>(saver), setup);
    if (!problem.empty()) return problem;
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
        if (important) PrintLine(line.substr(0, line.find_last_not_of("\r\n") + 1));
    }
    // A line of its own on standard error, above the progress line.
    void PrintLine(const std::string& line) {
        clearProgress();
        std::fputs(line.c_str(), stderr);
        std::fputc('\n', stderr);
    }
    bool IsInteractive() const { return Interactive; }
    // More of the run to show at the end of the progress line.
    std::function<std::string()> Details;
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
        std::fprintf(stderr, "\r\033[K%s: %u/%u frames, %u error(s)%s%s", run.GetStateText().c_str() + 1,
                     done + failed, total, failed, timesOf(run).c_str(), Details ? Details().c_str() : "");
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
void driveRun(ESaverExecution& run, TerminalView& view, const std::function<void()>& afterMessages) {
    using Clock = std::chrono::steady_clock;
    int handled = 0;
    Clock::time_point nextTick = Clock::now() + std::chrono::milliseconds(ESaverExecution::TimerMs);
    while (run.GetState() != ESaverExecution::StateOver) {
        if (run.Wait(PollMs)) {
            run.DispatchMessages();
            afterMessages();
        }
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

// The projector list of an array's run: on a terminal a line whenever a
// projector starts or ends and the working projectors' frames beside the
// progress, and at the end the outcome of every projector that was on.
class ProjectorRows {
public:
    ProjectorRows(EVitreaExecution& run, TerminalView& view) : Run(run), View(view) {
        for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
            Shown[projector] = run.GetRowState(projector);
    }

    void ShowChanges() {
        if (!View.IsInteractive()) return;
        for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector) {
            if (Run.GetRowState(projector) == Shown[projector]) continue;
            Shown[projector] = Run.GetRowState(projector);
            View.PrintLine(rowLine(projector));
        }
    }
    // " #NN done/frames" for every projector at work.
    std::string WorkingText() const {
        std::string text;
        for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
            if (Run.GetRowState(projector) == isvrVitreaWorkData::StateWorking)
                text += qvrFormat(" #%02ld ", static_cast<long>(projector) + 1) +
                        Run.GetRowStatus(projector).substr(0, Run.GetRowStatus(projector).find(' '));
        return text.empty() ? text : ";" + text;
    }
    void ShowOutcome() {
        for (std::size_t projector = 0; projector < LVitrea::ProjectorCount; ++projector)
            if (Run.GetRowState(projector) != isvrVitreaWorkData::StateOff)
                View.PrintLine(rowLine(projector));
    }

private:
    std::string rowLine(std::size_t projector) const {
        return "qvr render: " + Run.GetRowHead(projector) + ": " + Run.GetRowStatus(projector);
    }

    EVitreaExecution& Run;
    TerminalView& View;
    std::array<isvrVitreaWorkData::ProjectorState, LVitrea::ProjectorCount> Shown{};
};

// Runs the dialog's logic to its end; the exit status.
int renderWith(ESaverExecution& run, TerminalView& view, const iSaver& saver, QvrRenderCounts& counts,
               const std::function<void()>& afterMessages) {
    run.Open();
    if (run.GetState() == ESaverExecution::StateOver) {
        std::fprintf(stderr, "qvr render: %s:%s\n", saver.GetName().c_str(), run.GetStateText().c_str());
        return ExitUsage;
    }
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    struct sigaction previous {};
    sigaction(SIGINT, &action, &previous);
    driveRun(run, view, afterMessages);
    sigaction(SIGINT, &previous, nullptr);
    std::uint32_t& total = counts.Total;
    std::uint32_t& done = counts.Done;
    std::uint32_t& failed = counts.Failed;
    std::uint32_t remaining = 0;
    run.GetCounts(total, done, failed, remaining);
    std::fprintf(stderr, "qvr render: %s:%s %u of %u frames done, %u failed\n", saver.GetName().c_str(),
                 run.GetStateText().c_str(), done, total, failed);
    const std::uint32_t unsaved = run.GetSaveFailures();
    if (unsaved > 0)
        std::fprintf(stderr, "qvr render: %s: %u frames could not be written\n", saver.GetName().c_str(),
                     unsaved);
    const bool whole = !run.WasStopSent() && done == total && unsaved == 0;
    // The run counts a frame whose save failed as done; those who read the
    // counts (batch and farm runs) count only frames on disk.
    const std::uint32_t unwritten = std::min(unsaved, done);
    done -= unwritten;
    failed += unwritten;
    return whole ? ExitSuccess : ExitFailures;
}

int renderStandard(isvrSaver& saver, const iSaverSetup& setup, QvrRenderCounts& counts) {
    TerminalView view;
    ESaverExecution run(saver, setup, view);
    return renderWith(run, view, saver, counts, [] {});
}

int renderArray(isvrVitrea& saver, const iSaverSetup& setup, QvrRenderCounts& counts) {
    TerminalView view;
    EVitreaExecution run(saver, setup, view);
    ProjectorRows rows(run, view);
    view.Details = [&rows] { return rows.WorkingText(); };
    const int status = renderWith(run, view, saver, counts, [&rows] { rows.ShowChanges(); });
    if (status != ExitUsage) rows.ShowOutcome();
    return status;
}

// Checks what the saver needs and runs it.
template <class Saver>
int checkAndRender(Saver& saver, const iSaverSetup& setup,
                   int (*render)(Saver&, const iSaverSetup&, QvrRenderCounts&), QvrRenderCounts& counts) {
    const std::string cannot = startProblem(saver, setup);
    if (!cannot.empty()) {
        std::fprintf(stderr, "qvr render: %s: %s\n", saver.GetName().c_str(), cannot.c_str());
        return ExitUsage;
    }
    return render(saver, setup, counts);
}

int runRender(const QvrCommand::Arguments& arguments) {
    RenderOptions options;
    const std::string problem = parseOptions(arguments, options);
    if (!problem.empty()) return usage(problem);
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    std::string cannot;
    if (!QvrSaverLookup::LoadProject(session, options.Project, cannot)) {
        std::fprintf(stderr, "qvr render: %s\n", cannot.c_str());
        return ExitUsage;
    }
    iSaver* saver = QvrSaverLookup::FindSaver(options.Saver, cannot);
    if (!saver) {
        std::fprintf(stderr, "qvr render: %s: %s\n", options.Project.c_str(), cannot.c_str());
        return ExitUsage;
    }
    if (!options.Output.empty()) {
        auto* standard = dynamic_cast<isvrSaver*>(saver);
        if (!standard) return usage("--output names the file of a standard saver only");
        standard->SetFileName(options.Output);
    }
    QvrRenderCounts counts;
    return QvrRender::Run(*saver, runSetup(*saver, options), counts);
}

QvrCommand render("render", "run a saver's render of a frame range", Help, runRender);

} // namespace

int QvrRender::Run(iSaver& saver, const iSaverSetup& setup, QvrRenderCounts& counts) {
    if (auto* array = dynamic_cast<isvrVitrea*>(&saver))
        return checkAndRender(*array, setup, renderArray, counts);
    if (auto* standard = dynamic_cast<isvrSaver*>(&saver))
        return checkAndRender(*standard, setup, renderStandard, counts);
    std::fprintf(stderr, "qvr render: \"%s\" is a saver that qvr render can't run\n",
                 saver.GetName().c_str());
    return ExitUsage;
}
