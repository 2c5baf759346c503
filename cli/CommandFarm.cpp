// qvr farm submit|status|wait|resume: a saver's render run on a Slurm
// cluster, split into chunks that the cluster's tasks render with this
// program (qvr farm task, qvr farm assemble), the run's state in a folder of
// its own beside the output.

#include "QvrCommand.h"
#include "QvrJson.h"
#include "QvrRender.h"
#include "QvrSaverLookup.h"
#include "QvrSession.h"

#include "batch/EBatchJob.h"
#include "batch/EFarmQuickStream.h"
#include "batch/EFarmRun.h"
#include "batch/EFarmSlurm.h"
#include "foundation/qvrString.h"
#include "imaging/EImageData.h"
#include "imaging/EImageFileFormat.h"
#include "imaging/EImageStorage.h"
#include "output/EImageOutputHandle.h"
#include "output/isvrSaver.h"
#include "projector/isvrVitrea.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <thread>
#include <unistd.h>

namespace {

constexpr const char* Help =
    "usage: qvr farm submit PROJECT [--saver NAME] [--first N] [--last N] [--chunk N]\n"
    "                       [--threads N] [--partition NAME] [--sbatch ARG]... [--dry-run]\n"
    "       qvr farm submit --batch [options as above]\n"
    "       qvr farm status RUN [--json]\n"
    "       qvr farm wait RUN\n"
    "       qvr farm resume RUN\n\n"
    "Renders a saver on the Slurm cluster that SLURM_CONF names. A sequence saver\n"
    "becomes a job array of chunks of --chunk frames (default 10); a movie saver\n"
    "chunks that render quick files, then one task that writes the movie from them,\n"
    "byte for byte as 'qvr render' writes it; a projector array saver one task per\n"
    "active projector. Each task gets --threads cores (default: the saver's thread\n"
    "count). The run's state lives in a folder beside the output, whose path is the\n"
    "RUN that submit prints; project, footage, output and the program directory\n"
    "must be reachable under the same paths on every node. --dry-run prints the\n"
    "batch scripts and the sbatch commands instead of submitting. --batch submits\n"
    "every job of the batch list.\n"
    "status prints every chunk with its state and the frames done, failed and\n"
    "missing: exit 0 when every frame is done, 1 when something failed, 3 while\n"
    "the run goes on. wait waits for the end, then acts as status. resume submits\n"
    "again the chunks that failed or were never rendered.\n"
    "Exit 2 for bad usage, or when the cluster can't be reached (Slurm's error).\n";

constexpr long DefaultChunkFrames = 10;
constexpr int ExitRunning = 3;
constexpr auto WaitPoll = std::chrono::milliseconds(250);

using Arguments = QvrCommand::Arguments;

int usage(const std::string& problem) {
    std::fprintf(stderr, "qvr farm: %s\n\n%s", problem.c_str(), Help);
    return ExitUsage;
}

int fail(const std::string& problem, int status = ExitUsage) {
    std::fprintf(stderr, "qvr farm: %s\n", problem.c_str());
    return status;
}

void printReport(const hReportRoot& report) {
    for (const hReportEntry& entry : report.GetEntries())
        std::fprintf(stderr, "report %d %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
}

struct SubmitOptions {
    std::string Project;
    std::string Saver;
    std::string SaverClass; // checked when given
    std::optional<long> First;
    std::optional<long> Last;
    long Chunk = DefaultChunkFrames;
    std::optional<long> Threads;
    std::string Partition;
    std::vector<std::string> Sbatch;
    bool DryRun = false;
    bool Batch = false;
};

std::string parseSubmit(const Arguments& arguments, SubmitOptions& options) {
    std::vector<std::string> positional;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (name == "--dry-run" || name == "--batch") {
            (name == "--batch" ? options.Batch : options.DryRun) = true;
            continue;
        }
        if (name.rfind("--", 0) != 0) {
            positional.push_back(QvrSession::Absolute(name));
            continue;
        }
        if (i + 1 >= arguments.size()) return "\"" + name + "\" needs a value";
        const std::string& value = arguments[++i];
        long number = 0;
        const bool isNumber = qvrParseLong(value, number) && number >= 0;
        if (name == "--saver")
            options.Saver = value;
        else if (name == "--partition")
            options.Partition = value;
        else if (name == "--sbatch")
            options.Sbatch.push_back(value);
        else if (!isNumber)
            return name + " wants a whole number of at least 0, not \"" + value + "\"";
        else if (name == "--first")
            options.First = number;
        else if (name == "--last")
            options.Last = number;
        else if (name == "--chunk" && number > 0)
            options.Chunk = number;
        else if (name == "--threads" && number > 0)
            options.Threads = number;
        else
            return "unknown option or bad value \"" + name + " " + value + "\"";
    }
    if (options.Batch) return positional.empty() ? "" : "--batch takes no PROJECT";
    if (positional.size() != 1) return "one PROJECT is needed";
    options.Project = positional[0];
    return {};
}

std::string programPath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string("qvr") : path.string();
}

std::string runFolderName(const std::string& saver) {
    char stamp[32];
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &parts);
    std::string name = "qvrfarm-" + saver + "-" + stamp + "-" + std::to_string(::getpid());
    for (char& c : name)
        if (c == '/' || c == ' ' || c == ':') c = '_';
    return name;
}

// The run's kind and chunks, and the folder of the output beside which the
// run's folder goes. Empty text on success.
std::string planChunks(iSaver& saver, const iSaverSetup& setup, long chunkFrames, EFarmRun& run,
                       std::string& outputFolder) {
    if (auto* array = dynamic_cast<isvrVitrea*>(&saver)) {
        const std::string problem = array->CheckRender(setup);
        if (!problem.empty()) return problem;
        run.RunKind = EFarmRun::Kind::Array;
        std::vector<long> projectors;
        const auto& active = array->GetConfiguration().OutputFiles.ProjectorActive;
        for (std::size_t projector = 0; projector < active.size(); ++projector)
            if (active[projector]) projectors.push_back(static_cast<long>(projector));
        run.PlanProjectorChunks(projectors);
        outputFolder = std::filesystem::path(run.Project).parent_path().string();
        return {};
    }
    auto* standard = dynamic_cast<isvrSaver*>(&saver);
    if (!standard) return "\"" + saver.GetName() + "\" is a saver that the farm can't run";
    if (!standard->GetStream() || standard->GetFileName().empty())
        return "the saver has no output stream or file";
    run.RunKind = standard->GetStream()->IsMovie() ? EFarmRun::Kind::Movie : EFarmRun::Kind::Sequence;
    run.PlanFrameChunks(chunkFrames);
    outputFolder = std::filesystem::path(standard->GetFileName()).parent_path().string();
    return {};
}

// Describes the run of the saver: what it renders, its chunks and its folder. Empty text on success.
std::string planRun(iSaver& saver, const SubmitOptions& options, EFarmRun& run) {
    iSaverSetup setup = saver.GetSetup();
    if (options.First) setup.VideoStart = static_cast<std::uint32_t>(*options.First);
    if (options.Last) setup.VideoEnd = static_cast<std::uint32_t>(*options.Last);
    if (!setup.IsValid()) return "the saver's render settings can't be used (is the range backwards?)";
    run.Project = options.Project;
    run.Saver = saver.GetName();
    run.SaverClass = saver.GetElementType();
    run.First = setup.VideoStart;
    run.Last = setup.VideoEnd;
    run.Step = setup.VideoSteps;
    run.Threads = options.Threads.value_or(setup.MiscThreadCnt);
    run.Program = programPath();
    run.Partition = options.Partition;
    run.SbatchOptions = options.Sbatch;
    const char* home = std::getenv("QVR_HOME");
    run.Home = home && *home ? QvrSession::Absolute(home) : std::string();
    std::string outputFolder;
    const std::string problem = planChunks(saver, setup, options.Chunk, run, outputFolder);
    run.Folder = outputFolder + "/" + runFolderName(saver.GetName());
    return problem;
}

std::vector<std::string> taskOptions(const EFarmRun& run, const std::string& output) {
    std::vector<std::string> sbatch{"--job-name=qvr:" + run.Saver,
                                    "--cpus-per-task=" + std::to_string(run.Threads),
                                    "--output=" + run.Folder + "/" + output};
    if (!run.Partition.empty()) sbatch.push_back("--partition=" + run.Partition);
    sbatch.insert(sbatch.end(), run.SbatchOptions.begin(), run.SbatchOptions.end());
    return sbatch;
}

// The array's task ids, runs of consecutive chunks as ranges: "0-3,7".
std::string arrayText(const std::vector<std::size_t>& chunks) {
    std::string text;
    for (std::size_t start = 0; start < chunks.size();) {
        std::size_t end = start;
        while (end + 1 < chunks.size() && chunks[end + 1] == chunks[end] + 1)
            ++end;
        text += (text.empty() ? "" : ",") + std::to_string(chunks[start]);
        if (end > start) text += "-" + std::to_string(chunks[end]);
        start = end + 1;
    }
    return text;
}

bool writeScript(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::trunc) << text;
    std::error_code error;
    std::filesystem::permissions(path,
                                 std::filesystem::perms::owner_all | std::filesystem::perms::group_read |
                                     std::filesystem::perms::group_exec |
                                     std::filesystem::perms::others_read |
                                     std::filesystem::perms::others_exec,
                                 error);
    return !error;
}

// The assembly's options: it starts once the chunks of the array, if any, have all succeeded.
std::vector<std::string> assemblyOptions(const EFarmRun& run, const std::string& arrayId) {
    std::vector<std::string> sbatch = taskOptions(run, "assembly.out");
    if (arrayId.empty()) return sbatch;
    sbatch.push_back("--dependency=afterok:" + arrayId);
    sbatch.push_back("--kill-on-invalid-dep=yes");
    return sbatch;
}

// Submits the chunks and, for a movie, the assembly after them; false with Slurm's error.
bool submitTasks(EFarmRun& run, const std::vector<std::size_t>& chunks, bool withAssembly,
                 std::string& error) {
    std::string arrayId;
    if (!chunks.empty()) {
        std::vector<std::string> sbatch = taskOptions(run, "chunk%6a.out");
        sbatch.push_back("--array=" + arrayText(chunks));
        if (!EFarmSlurm::Submit(sbatch, run.ChunkScript(), arrayId, error)) return false;
        for (std::size_t chunk : chunks)
            run.Chunks[chunk].JobId = arrayId + "_" + std::to_string(chunk);
    }
    if (!withAssembly) return true;
    return EFarmSlurm::Submit(assemblyOptions(run, arrayId), run.AssemblyScript(), run.AssemblyJobId, error);
}

void printDryRun(const EFarmRun& run) {
    std::vector<std::size_t> all;
    for (std::size_t chunk = 0; chunk < run.Chunks.size(); ++chunk)
        all.push_back(chunk);
    std::vector<std::string> sbatch = taskOptions(run, "chunk%6a.out");
    sbatch.push_back("--array=" + arrayText(all));
    std::printf("# %s\n%s\n# %s\n", run.ChunkScript().c_str(), run.ChunkScriptText().c_str(),
                EFarmSlurm::SubmitCommand(sbatch, run.ChunkScript()).c_str());
    if (run.RunKind != EFarmRun::Kind::Movie) return;
    const std::vector<std::string> assembly = assemblyOptions(run, "<chunks>");
    std::printf("\n# %s\n%s\n# %s\n", run.AssemblyScript().c_str(), run.AssemblyScriptText().c_str(),
                EFarmSlurm::SubmitCommand(assembly, run.AssemblyScript()).c_str());
}

int submitSaver(QvrSession& session, const SubmitOptions& options) {
    std::string problem;
    if (!QvrSaverLookup::LoadProject(session, options.Project, problem)) return fail(problem);
    iSaver* saver = options.SaverClass.empty()
                        ? QvrSaverLookup::FindSaver(options.Saver, problem)
                        : QvrSaverLookup::FindSaver(options.Saver, options.SaverClass, problem);
    if (!saver) return fail(options.Project + ": " + problem);
    EFarmRun run;
    problem = planRun(*saver, options, run);
    if (!problem.empty()) return fail(saver->GetName() + ": " + problem);
    if (run.Chunks.empty()) return fail(saver->GetName() + ": there is nothing to render");
    if (options.DryRun) {
        printDryRun(run);
        return ExitSuccess;
    }
    const bool movie = run.RunKind == EFarmRun::Kind::Movie;
    std::error_code error;
    std::filesystem::create_directories(movie ? run.FramesFolder() : run.Folder, error);
    hReportRoot report("Farm run");
    if (error || !writeScript(run.ChunkScript(), run.ChunkScriptText()) ||
        (movie && !writeScript(run.AssemblyScript(), run.AssemblyScriptText())) || !run.Save(report)) {
        printReport(report);
        return fail("can't write the run's folder " + run.Folder);
    }
    std::vector<std::size_t> all;
    for (std::size_t chunk = 0; chunk < run.Chunks.size(); ++chunk)
        all.push_back(chunk);
    std::string slurmError;
    const bool submitted = submitTasks(run, all, movie, slurmError);
    run.Save(report);
    printReport(report);
    if (!submitted) return fail(slurmError);
    std::printf("%s\n", run.Folder.c_str());
    return ExitSuccess;
}

int submit(const Arguments& arguments) {
    SubmitOptions options;
    const std::string problem = parseSubmit(arguments, options);
    if (!problem.empty()) return usage(problem);
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    // The run's tasks may be using the shared proxy directory by the time this session ends.
    EImageStorage::Get().KeepProxyDirAtExit();
    if (!options.Batch) return submitSaver(session, options);
    const EBatchJobList& list = EBatchJobList::Get();
    int status = ExitSuccess;
    for (std::size_t index = 0; index < list.GetCount(); ++index) {
        const EBatchJob& job = list.GetJob(index);
        SubmitOptions jobOptions = options;
        jobOptions.Project = job.ProjectFile;
        jobOptions.Saver = job.SaverObject;
        jobOptions.SaverClass = job.SaverClass;
        std::fprintf(stderr, "qvr farm: job \"%s\"\n", job.Name.c_str());
        status = std::max(status, submitSaver(session, jobOptions));
    }
    return status;
}

std::optional<EFarmRun> loadRun(const std::string& folder) {
    hReportRoot report("Farm run");
    std::optional<EFarmRun> run = EFarmRun::Load(QvrSession::Absolute(folder), report);
    printReport(report);
    return run;
}

std::string chunkHead(const EFarmRun& run, std::size_t index) {
    const EFarmChunk& chunk = run.Chunks[index];
    std::string head = qvrFormat("chunk %zu: frames %ld-%ld", index, chunk.First, chunk.Last);
    if (chunk.Projector >= 0) head += qvrFormat(", projector #%02ld", chunk.Projector + 1);
    return head;
}

std::string stateText(const EFarmStatus::Chunk& state) {
    std::string text = EFarmRun::StateText(state.State);
    if (!state.SlurmState.empty()) text += " (" + state.SlurmState + ")";
    return text + qvrFormat(", %u of %u frames done", state.Done, state.Frames);
}

void printStatus(const EFarmRun& run, const EFarmStatus& status, bool asJson) {
    if (!asJson) {
        for (std::size_t index = 0; index < status.Chunks.size(); ++index)
            std::printf("%s: %s\n", chunkHead(run, index).c_str(), stateText(status.Chunks[index]).c_str());
        if (status.Assembly) std::printf("movie: %s\n", EFarmRun::StateText(status.Assembly->State));
        std::printf("frames: %u done, %u failed, %u missing\n", status.Done, status.Failed, status.Missing);
        return;
    }
    QvrJson json;
    json.BeginObject().Key("run").String(run.Folder).Key("kind").String(EFarmRun::KindText(run.RunKind));
    json.Key("chunks").BeginArray();
    for (std::size_t index = 0; index < status.Chunks.size(); ++index) {
        const EFarmStatus::Chunk& state = status.Chunks[index];
        json.BeginObject()
            .Key("first")
            .Number(run.Chunks[index].First)
            .Key("last")
            .Number(run.Chunks[index].Last);
        json.Key("projector").Number(run.Chunks[index].Projector).Key("job").String(run.Chunks[index].JobId);
        json.Key("state").String(EFarmRun::StateText(state.State)).Key("slurmState").String(state.SlurmState);
        json.Key("done").Number(state.Done).Key("failed").Number(state.Failed).EndObject();
    }
    json.EndArray();
    if (status.Assembly) json.Key("movie").String(EFarmRun::StateText(status.Assembly->State));
    json.Key("done")
        .Number(status.Done)
        .Key("failed")
        .Number(status.Failed)
        .Key("missing")
        .Number(status.Missing);
    std::printf("%s\n", json.EndObject().Text().c_str());
}

// The run's status as the cluster and the folder tell it; false when the cluster can't be asked.
bool queryStatus(const EFarmRun& run, EFarmStatus& status) {
    std::map<std::string, std::string> queue;
    std::string error;
    if (!EFarmSlurm::Queue(queue, error)) {
        std::fprintf(stderr, "qvr farm: %s\n", error.c_str());
        return false;
    }
    status = EFarmStatus::Of(run, queue);
    return true;
}

int statusExit(const EFarmStatus& status) {
    if (status.IsRunning()) return ExitRunning;
    return status.IsComplete() ? ExitSuccess : ExitFailures;
}

int showStatus(const Arguments& arguments, bool wait) {
    const bool asJson = arguments.size() == 2 && arguments[1] == "--json" && !wait;
    if (arguments.size() != 1 && !asJson)
        return usage(wait ? "wait needs one RUN" : "status needs RUN [--json]");
    const std::optional<EFarmRun> run = loadRun(arguments[0]);
    if (!run) return ExitUsage;
    EFarmStatus status;
    if (!queryStatus(*run, status)) return ExitUsage;
    while (wait && status.IsRunning()) {
        std::this_thread::sleep_for(WaitPoll);
        if (!queryStatus(*run, status)) return ExitUsage;
    }
    printStatus(*run, status, asJson);
    return statusExit(status);
}

int resume(const Arguments& arguments) {
    if (arguments.size() != 1) return usage("resume needs one RUN");
    std::optional<EFarmRun> run = loadRun(arguments[0]);
    if (!run) return ExitUsage;
    EFarmStatus status;
    if (!queryStatus(*run, status)) return ExitUsage;
    const std::vector<std::size_t> chunks = status.ChunksToResume();
    const bool assemble = status.Assembly && status.Assembly->State != EFarmState::Done &&
                          (!chunks.empty() || status.Assembly->State != EFarmState::Pending);
    if (chunks.empty() && !assemble) {
        std::printf("%s: nothing to resume\n", run->Folder.c_str());
        return ExitSuccess;
    }
    for (std::size_t chunk : chunks)
        std::remove(run->ChunkFile(chunk, "result").c_str());
    if (assemble) std::remove(run->AssemblyFile("result").c_str());
    std::string error;
    const bool submitted = submitTasks(*run, chunks, assemble, error);
    hReportRoot report("Farm run");
    run->Save(report);
    printReport(report);
    if (!submitted) return fail(error);
    std::printf("%s: %zu chunk(s) submitted again%s\n", run->Folder.c_str(), chunks.size(),
                assemble ? ", and the movie" : "");
    return ExitSuccess;
}

// --------------------------------------------------------------- the tasks on the nodes

// Loads the run's project in a task's session and finds its saver; null with a complaint.
iSaver* openTaskSaver(QvrSession& session, const EFarmRun& run) {
    // Other tasks still use the shared proxy directory.
    EImageStorage::Get().KeepProxyDirAtExit();
    std::string problem;
    if (!QvrSaverLookup::LoadProject(session, run.Project, problem)) {
        fail(problem);
        return nullptr;
    }
    iSaver* saver = QvrSaverLookup::FindSaver(run.Saver, run.SaverClass, problem);
    if (!saver) fail(run.Project + ": " + problem);
    return saver;
}

int finishTask(const std::string& resultPath, int status, const QvrRenderCounts& counts) {
    if (!EFarmRun::WriteResult(resultPath, {status, counts.Total, counts.Done, counts.Failed}))
        return fail("can't write " + resultPath, ExitFailures);
    return status;
}

long taskThreads(const EFarmRun& run) {
    const char* given = std::getenv("SLURM_CPUS_PER_TASK");
    long threads = 0;
    return given && qvrParseLong(given, threads) && threads > 0 ? threads : run.Threads;
}

// The chunk's render settings; the saver is set up for the chunk: a movie's
// frames go to quick files, an array renders the chunk's projector alone.
iSaverSetup prepareChunk(iSaver& saver, const EFarmRun& run, std::size_t index) {
    const EFarmChunk& chunk = run.Chunks[index];
    iSaverSetup setup = saver.GetSetup();
    setup.VideoStart = static_cast<std::uint32_t>(chunk.First);
    setup.VideoEnd = static_cast<std::uint32_t>(chunk.Last);
    setup.VideoSteps = static_cast<std::uint32_t>(run.Step);
    setup.MiscThreadCnt = static_cast<std::uint32_t>(taskThreads(run));
    setup.LogKeep = true;
    setup.LogFile = run.ChunkFile(index, "rlog");
    if (run.RunKind == EFarmRun::Kind::Movie) {
        auto& standard = dynamic_cast<isvrSaver&>(saver);
        standard.SetStream(&EFarmQuickStream::Get());
        standard.SetStreamSetup({});
        standard.SetFileName(run.QuickFilesName());
    }
    if (run.RunKind == EFarmRun::Kind::Array) {
        auto& active = dynamic_cast<isvrVitrea&>(saver).GetConfiguration().OutputFiles.ProjectorActive;
        for (std::size_t projector = 0; projector < active.size(); ++projector)
            active[projector] = static_cast<long>(projector) == chunk.Projector;
    }
    return setup;
}

int renderChunk(const Arguments& arguments) {
    long number = -1;
    if (arguments.size() != 2 || !qvrParseLong(arguments[1], number) || number < 0)
        return usage("task needs RUN and a chunk number");
    const std::optional<EFarmRun> run = loadRun(arguments[0]);
    if (!run) return ExitUsage;
    const auto index = static_cast<std::size_t>(number);
    if (index >= run->Chunks.size()) return fail("the run has no such chunk");
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    iSaver* saver = openTaskSaver(session, *run);
    QvrRenderCounts counts;
    const std::string result = run->ChunkFile(index, "result");
    if (!saver) return finishTask(result, ExitUsage, counts);
    const iSaverSetup setup = prepareChunk(*saver, *run, index);
    return finishTask(result, QvrRender::Run(*saver, setup, counts), counts);
}

// Writes the movie from the chunks' quick files in frame order, through the
// saver's own stream as its render thread writes it.
int assembleMovie(const Arguments& arguments) {
    if (arguments.size() != 1) return usage("assemble needs RUN");
    const std::optional<EFarmRun> run = loadRun(arguments[0]);
    if (!run) return ExitUsage;
    QvrSession session;
    if (!session.Started()) return ExitUsage;
    auto* saver = dynamic_cast<isvrSaver*>(openTaskSaver(session, *run));
    QvrRenderCounts counts;
    const std::string result = run->AssemblyFile("result");
    if (!saver || !saver->GetStream()) return finishTask(result, ExitUsage, counts);
    const EImageOutputStream& stream = *saver->GetStream();
    std::unique_ptr<EImageOutputSetup> streamSetup = stream.UsesSetup() ? stream.CreateSetup() : nullptr;
    if (streamSetup) streamSetup->SetSetupString(saver->GetStreamSetup());
    const iSaverSetup& setup = saver->GetSetup();
    EImageOutputHandle movie(stream);
    if (!movie.Open(saver->GetFileName(), saver->GetSize().ToSize(), streamSetup.get(), setup.VideoFPS,
                    setup.VideoRes)) {
        fail("can't open the movie: " + movie.GetLastError().Text);
        return finishTask(result, ExitFailures, counts);
    }
    for (long frame = run->First; frame <= run->Last; frame += run->Step) {
        ++counts.Total;
        EImageFileResult read;
        const std::unique_ptr<EImageData> picture =
            EImageFileFormat::Load(run->QuickFile(frame), {0, 0, 0, 0}, read);
        EImageOutputError error;
        if (picture && movie.Write(*picture, frame, &error)) {
            ++counts.Done;
            continue;
        }
        ++counts.Failed;
        std::fprintf(stderr, "qvr farm: frame %ld: %s\n", frame,
                     picture ? error.Text.c_str() : read.text.c_str());
    }
    const bool closed = movie.Close();
    const int status = closed && counts.Done == counts.Total ? ExitSuccess : ExitFailures;
    if (status == ExitSuccess) std::filesystem::remove_all(run->FramesFolder());
    return finishTask(result, status, counts);
}

int runFarm(const Arguments& arguments) {
    if (arguments.empty()) return usage("a subcommand is needed");
    const std::string subcommand = arguments[0];
    const Arguments rest(arguments.begin() + 1, arguments.end());
    if (subcommand == "submit") return submit(rest);
    if (subcommand == "status" || subcommand == "wait") return showStatus(rest, subcommand == "wait");
    if (subcommand == "resume") return resume(rest);
    if (subcommand == "task") return renderChunk(rest);
    if (subcommand == "assemble") return assembleMovie(rest);
    return usage("unknown subcommand \"" + subcommand + "\"");
}

QvrCommand farm("farm", "render a saver's run on a Slurm cluster", Help, runFarm);

} // namespace
