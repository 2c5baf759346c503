// qvr batch list|add|remove|move|clear|save|load|run: the batch list in the
// preferences, edited as the batch processor's controls edit it, and rendered
// job after job.

#include "QvrCommand.h"
#include "QvrJson.h"
#include "QvrRender.h"
#include "QvrSaverLookup.h"
#include "QvrSession.h"

#include "app/CTessarineApp.h"
#include "batch/EBatchJob.h"
#include "batch/EBatchJobAddDialog.h"
#include "batch/EBatchListFile.h"
#include "batch/EBatchRun.h"
#include "batch/ERenderLater.h"
#include "foundation/iDataBase.h"
#include "foundation/qvrString.h"
#include "output/iSaver.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

namespace {

constexpr const char* Help =
    "usage: qvr batch list [--json]\n"
    "       qvr batch add PROJECT [--saver NAME] [--name NAME]\n"
    "       qvr batch remove NAME\n"
    "       qvr batch move NAME top|up|down|bottom\n"
    "       qvr batch clear\n"
    "       qvr batch save FILE\n"
    "       qvr batch load FILE\n"
    "       qvr batch run [--job NAME]... [--threads N]\n\n"
    "The batch list of the preferences: the render jobs kept for later. 'list' prints\n"
    "them in list order (name, project, saver, class, time, split by tabs). 'add'\n"
    "enters a saver as \"Render later...\" does: its setup is checked, then the job\n"
    "gets the proposed name or NAME; a job of the same project and saver is renewed\n"
    "and keeps its name. 'remove', 'move', 'clear', 'save' and 'load' are the batch\n"
    "processor's buttons; 'load' replaces the list with the file's jobs. 'run'\n"
    "renders the jobs (all, or the named ones) in list order, each as 'qvr render'\n"
    "would, and prints a summary line per job; a failing job doesn't stop the next.\n"
    "Exit 0 on success, 1 when a job failed or a check refused, 2 for bad usage.\n";

using Arguments = QvrCommand::Arguments;

int usage(const std::string& problem) {
    std::fprintf(stderr, "qvr batch: %s\n\n%s", problem.c_str(), Help);
    return ExitUsage;
}

int fail(const std::string& problem, int status = ExitUsage) {
    std::fprintf(stderr, "qvr batch: %s\n", problem.c_str());
    return status;
}

void printReport(const hReportRoot& report) {
    for (const hReportEntry& entry : report.GetEntries())
        std::fprintf(stderr, "report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
}

// Writes the global preferences, which hold the list; the exit status.
int savePreferences() {
    hReportRoot report("Saving");
    iDataBase database;
    const bool saved = database.Save(CTessarineApp::GlobalPreferencesPath(), DBMaskGlobalPrefs, 0, &report);
    printReport(report);
    return saved ? ExitSuccess : fail("the preferences could not be written", ExitFailures);
}

EBatchJob* findJob(const std::string& name) {
    EBatchJob* job = EBatchJobList::Get().Find(name);
    if (!job) std::fprintf(stderr, "qvr batch: there is no job \"%s\"\n", name.c_str());
    return job;
}

int listJobs(const Arguments& arguments) {
    const bool asJson = arguments.size() == 1 && arguments[0] == "--json";
    if (!arguments.empty() && !asJson) return usage("list takes only --json");
    const EBatchJobList& list = EBatchJobList::Get();
    QvrJson json;
    json.BeginArray();
    for (std::size_t index = 0; index < list.GetCount(); ++index) {
        const EBatchJob& job = list.GetJob(index);
        const std::string time = EBatchJob::TimeCodeText(job.TimeCode);
        if (!asJson) {
            std::printf("%s\t%s\t%s\t%s\t%s\n", job.Name.c_str(), job.ProjectFile.c_str(),
                        job.SaverObject.c_str(), job.SaverClass.c_str(), time.c_str());
            continue;
        }
        json.BeginObject().Key("name").String(job.Name).Key("project").String(job.ProjectFile);
        json.Key("saver").String(job.SaverObject).Key("class").String(job.SaverClass);
        json.Key("time").String(time).EndObject();
    }
    json.EndArray();
    if (asJson) std::printf("%s\n", json.Text().c_str());
    return ExitSuccess;
}

// Reads "--NAME VALUE" options into `options` and the rest into `positional`;
// an empty text means success.
std::string splitArguments(const Arguments& arguments, std::map<std::string, std::string>& options,
                           std::vector<std::string>& positional) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].rfind("--", 0) != 0) {
            positional.push_back(arguments[i]);
            continue;
        }
        if (!options.count(arguments[i])) return "unknown option \"" + arguments[i] + "\"";
        if (i + 1 >= arguments.size()) return "\"" + arguments[i] + "\" needs a value";
        options[arguments[i]] = arguments[i + 1];
        ++i;
    }
    return {};
}

int addJob(QvrSession& session, const Arguments& arguments) {
    std::map<std::string, std::string> options{{"--saver", ""}, {"--name", ""}};
    std::vector<std::string> positional;
    const std::string problem = splitArguments(arguments, options, positional);
    if (!problem.empty()) return usage(problem);
    if (positional.size() != 1) return usage("add needs one PROJECT");
    const std::string& project = positional[0];
    std::string cannot;
    if (!QvrSaverLookup::LoadProject(session, project, cannot)) return fail(cannot);
    iSaver* saver = QvrSaverLookup::FindSaver(options["--saver"], cannot);
    if (!saver) return fail(project + ": " + cannot);
    const bool named = std::find(arguments.begin(), arguments.end(), "--name") != arguments.end();
    EBatchJob* entered = nullptr;
    const ERenderLater::Outcome outcome = ERenderLater::Run(*saver, project, [&](EBatchJobAddDialog& dialog) {
        if (named) dialog.SetName(options["--name"]);
        if (!dialog.OnOk()) return false;
        entered = dialog.GetEnteredJob();
        return true;
    });
    if (outcome != ERenderLater::Outcome::Entered) return ExitFailures;
    const std::string name = entered->Name;
    const int saved = savePreferences();
    if (saved == ExitSuccess) std::printf("%s\n", name.c_str());
    return saved;
}

int removeJob(const Arguments& arguments) {
    if (arguments.size() != 1) return usage("remove needs one NAME");
    EBatchJob* job = findJob(arguments[0]);
    if (!job) return ExitUsage;
    EBatchJobList::Get().Remove(*job);
    return savePreferences();
}

std::optional<EBatchJobList::Move> moveOf(const std::string& text) {
    if (text == "top") return EBatchJobList::Move::Top;
    if (text == "up") return EBatchJobList::Move::Up;
    if (text == "down") return EBatchJobList::Move::Down;
    if (text == "bottom") return EBatchJobList::Move::Bottom;
    return std::nullopt;
}

int moveJob(const Arguments& arguments) {
    if (arguments.size() != 2) return usage("move needs NAME and top, up, down or bottom");
    const std::optional<EBatchJobList::Move> where = moveOf(arguments[1]);
    if (!where) return usage("move takes top, up, down or bottom, not \"" + arguments[1] + "\"");
    EBatchJob* job = findJob(arguments[0]);
    if (!job) return ExitUsage;
    EBatchJobList::Get().MoveJob(*job, *where);
    return savePreferences();
}

int clearJobs(const Arguments& arguments) {
    if (!arguments.empty()) return usage("clear takes no arguments");
    EBatchJobList::Get().DeleteAll();
    return savePreferences();
}

int saveList(const Arguments& arguments) {
    if (arguments.size() != 1) return usage("save needs one FILE");
    hReportRoot report("Saving");
    const bool saved = EBatchListFile::Save(arguments[0], report);
    printReport(report);
    return saved ? ExitSuccess : ExitFailures;
}

int loadList(const Arguments& arguments) {
    if (arguments.size() != 1) return usage("load needs one FILE");
    hReportRoot report("Loading");
    const bool loaded = EBatchListFile::Load(arguments[0], report);
    printReport(report);
    if (!loaded) return fail("the list was left as it was", ExitUsage);
    return savePreferences();
}

// Renders a job in the session's document, as `qvr render` renders a saver.
class SessionJobRenderer : public iBatchJobRenderer {
public:
    SessionJobRenderer(QvrSession& session, std::optional<long> threads)
        : Session(session), Threads(threads) {}

    EBatchJobOutcome RenderJob(const EBatchJob& job) override {
        EBatchJobOutcome outcome;
        std::fprintf(stderr, "qvr batch: job \"%s\": %s, saver %s\n", job.Name.c_str(),
                     job.ProjectFile.c_str(), job.SaverObject.c_str());
        if (!QvrSaverLookup::LoadProject(Session, job.ProjectFile, outcome.Problem)) return outcome;
        iSaver* saver = QvrSaverLookup::FindSaver(job.SaverObject, job.SaverClass, outcome.Problem);
        if (!saver) {
            outcome.Problem = job.ProjectFile + ": " + outcome.Problem;
            return outcome;
        }
        iSaverSetup setup = saver->GetSetup();
        if (Threads) setup.MiscThreadCnt = static_cast<std::uint32_t>(*Threads);
        QvrRenderCounts counts;
        const int status = QvrRender::Run(*saver, setup, counts);
        if (status == ExitUsage) {
            outcome.Problem = "the saver could not start";
            return outcome;
        }
        outcome.Started = true;
        outcome.Total = counts.Total;
        outcome.Done = counts.Done;
        outcome.Failed = counts.Failed;
        outcome.Aborted = status != ExitSuccess && counts.Done == counts.Total;
        return outcome;
    }

private:
    QvrSession& Session;
    std::optional<long> Threads;
};

int runJobs(QvrSession& session, const Arguments& arguments) {
    std::vector<std::string> names;
    std::optional<long> threads;
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        if (i + 1 >= arguments.size()) return usage("\"" + arguments[i] + "\" needs a value");
        long value = 0;
        if (arguments[i] == "--job")
            names.push_back(arguments[i + 1]);
        else if (arguments[i] == "--threads" && qvrParseLong(arguments[i + 1], value) && value > 0)
            threads = value;
        else
            return usage("run takes --job NAME and --threads N (at least 1), not \"" + arguments[i] + "\"");
    }
    std::vector<std::string> unknown;
    const std::vector<const EBatchJob*> jobs = EBatchRun::SelectJobs(names, unknown);
    for (const std::string& name : unknown)
        std::fprintf(stderr, "qvr batch: there is no job \"%s\"\n", name.c_str());
    if (!unknown.empty()) return ExitUsage;
    SessionJobRenderer renderer(session, threads);
    bool allDone = true;
    EBatchRun::Run(jobs, renderer, [&allDone](const EBatchRun::Entry& entry) {
        allDone = allDone && entry.Outcome.IsComplete();
        std::printf("%s\n", EBatchRun::SummaryLine(entry).c_str());
        std::fflush(stdout);
    });
    return allDone ? ExitSuccess : ExitFailures;
}

// The arguments after the subcommand, with the files that add, save and load
// name made absolute before the session moves the working directory.
Arguments restOf(const Arguments& arguments) {
    Arguments rest(arguments.begin() + 1, arguments.end());
    if (arguments[0] != "add" && arguments[0] != "save" && arguments[0] != "load") return rest;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i].rfind("--", 0) == 0)
            ++i;
        else
            rest[i] = QvrSession::Absolute(rest[i]);
    }
    return rest;
}

int runBatch(const Arguments& arguments) {
    if (arguments.empty()) return usage("a subcommand is needed");
    const std::string subcommand = arguments[0];
    const Arguments rest = restOf(arguments);
    using Plain = int (*)(const Arguments&);
    using WithSession = int (*)(QvrSession&, const Arguments&);
    const std::map<std::string, Plain> plain{{"list", listJobs},   {"remove", removeJob}, {"move", moveJob},
                                             {"clear", clearJobs}, {"save", saveList},    {"load", loadList}};
    const std::map<std::string, WithSession> withSession{{"add", addJob}, {"run", runJobs}};
    if (!plain.count(subcommand) && !withSession.count(subcommand))
        return usage("unknown subcommand \"" + subcommand + "\"");
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    return plain.count(subcommand) ? plain.at(subcommand)(rest) : withSession.at(subcommand)(session, rest);
}

QvrCommand batch("batch", "keep render jobs for later and render them", Help, runBatch);

} // namespace
