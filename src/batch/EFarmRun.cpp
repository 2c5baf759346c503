#include "batch/EFarmRun.h"

#include "batch/EBatchTreeFile.h"
#include "batch/EFarmSlurm.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

constexpr const char* KindNames[] = {"sequence", "movie", "array"};

std::string scriptOf(const EFarmRun& run, const char* verb, const char* more = "") {
    std::string script = "#!/bin/sh\n# A task of the farm run " + run.Folder + "\n";
    if (!run.Home.empty()) script += "export QVR_HOME=" + EFarmSlurm::Quoted(run.Home) + "\n";
    return script + "exec " + EFarmSlurm::Quoted(run.Program) + " farm " + verb + " " +
           EFarmSlurm::Quoted(run.Folder) + more + "\n";
}

long getLong(const qvrCTreeData& block, const char* key, long fallback = 0) {
    long value = fallback;
    block.GetLong(key, value);
    return value;
}

std::string getText(const qvrCTreeData& block, const char* key) {
    const std::string* text = block.GetText(key);
    return text ? *text : std::string();
}

std::uint32_t framesOf(const EFarmChunk& chunk, long step) {
    return static_cast<std::uint32_t>((chunk.Last - chunk.First) / step + 1);
}

// The state of a task from its result file and the queue.
EFarmStatus::Chunk taskState(const std::string& resultPath, const std::string& jobId, std::uint32_t frames,
                             const std::map<std::string, std::string>& queue) {
    EFarmStatus::Chunk state;
    state.Frames = frames;
    const auto queued = jobId.empty() ? queue.end() : queue.find(jobId);
    if (queued != queue.end()) state.SlurmState = queued->second;
    if (const std::optional<EFarmTaskResult> result = EFarmRun::ReadResult(resultPath)) {
        state.Done = std::min(result->Done, frames);
        state.Failed = frames - state.Done;
        state.State = result->Exit == 0 && state.Done == frames ? EFarmState::Done : EFarmState::Failed;
    } else if (queued != queue.end()) {
        state.State = queued->second == "PENDING" ? EFarmState::Pending : EFarmState::Running;
    } else if (!jobId.empty()) {
        // Gone from the queue without a result: the task died.
        state.State = EFarmState::Failed;
        state.Failed = frames;
    }
    return state;
}

} // namespace

std::string EFarmTaskResult::ToText() const {
    return qvrFormat("exit %d total %u done %u failed %u\n", Exit, Total, Done, Failed);
}

std::optional<EFarmTaskResult> EFarmTaskResult::Parse(const std::string& text) {
    EFarmTaskResult result;
    if (std::sscanf(text.c_str(), "exit %d total %u done %u failed %u", &result.Exit, &result.Total,
                    &result.Done, &result.Failed) != 4)
        return std::nullopt;
    return result;
}

void EFarmRun::PlanFrameChunks(long frames) {
    Chunks.clear();
    const long lastRendered = First + (Last - First) / Step * Step;
    const long span = std::max(1L, frames) * Step;
    for (long first = First; first <= lastRendered; first += span)
        Chunks.push_back({first, std::min(lastRendered, first + span - Step), -1, {}});
}

void EFarmRun::PlanProjectorChunks(const std::vector<long>& projectors) {
    Chunks.clear();
    for (long projector : projectors)
        Chunks.push_back({First, Last, projector, {}});
}

bool EFarmRun::Save(hReport& report) const {
    qvrCTreeData root(RootName, "V1.10");
    root.SetText("Project", Project);
    root.SetText("Saver", Saver);
    root.SetText("Saverclass", SaverClass);
    root.SetText("Kind", KindText(RunKind));
    root.SetLong("First", First);
    root.SetLong("Last", Last);
    root.SetLong("Step", Step);
    root.SetLong("Threads", Threads);
    root.SetText("Program", Program);
    root.SetText("Home", Home);
    root.SetText("AssemblyJob", AssemblyJobId);
    root.SetText("Partition", Partition);
    qvrCTreeData* options = root.CreateChild("Sbatch");
    for (std::size_t index = 0; index < SbatchOptions.size(); ++index)
        options->SetText(qvrFormat("Option%04zu", index), SbatchOptions[index]);
    qvrCTreeData* chunks = root.CreateChild("Chunks");
    for (std::size_t index = 0; index < Chunks.size(); ++index) {
        qvrCTreeData* block = chunks->CreateChild(qvrFormat("Chunk%06zu", index));
        block->SetLong("First", Chunks[index].First);
        block->SetLong("Last", Chunks[index].Last);
        block->SetLong("Projector", Chunks[index].Projector);
        block->SetText("Job", Chunks[index].JobId);
    }
    return EBatchTreeFile::Write(Folder + "/" + StateFile, root, report);
}

std::optional<EFarmRun> EFarmRun::Load(const std::string& folder, hReport& report) {
    qvrCTreeData root;
    if (!EBatchTreeFile::Read(folder + "/" + StateFile, RootName, root, report)) return std::nullopt;
    EFarmRun run;
    run.Folder = folder;
    run.Project = getText(root, "Project");
    run.Saver = getText(root, "Saver");
    run.SaverClass = getText(root, "Saverclass");
    const std::string kind = getText(root, "Kind");
    for (Kind candidate : {Kind::Sequence, Kind::Movie, Kind::Array})
        if (kind == KindText(candidate)) run.RunKind = candidate;
    run.First = getLong(root, "First");
    run.Last = getLong(root, "Last");
    run.Step = std::max(1L, getLong(root, "Step", 1));
    run.Threads = getLong(root, "Threads", 1);
    run.Program = getText(root, "Program");
    run.Home = getText(root, "Home");
    run.AssemblyJobId = getText(root, "AssemblyJob");
    run.Partition = getText(root, "Partition");
    if (const qvrCTreeData* options = root.Find("Sbatch"))
        for (const auto& [name, option] : options->GetChildren())
            run.SbatchOptions.push_back(option->Value);
    if (const qvrCTreeData* chunks = root.Find("Chunks"))
        for (const auto& [name, block] : chunks->GetChildren())
            run.Chunks.push_back({getLong(*block, "First"), getLong(*block, "Last"),
                                  getLong(*block, "Projector", -1), getText(*block, "Job")});
    return run;
}

std::string EFarmRun::ChunkFile(std::size_t chunk, const char* extension) const {
    return qvrFormat("%s/chunk%06zu.%s", Folder.c_str(), chunk, extension);
}

std::string EFarmRun::QuickFile(long frame) const {
    // The quick file stream numbers its files by frame, with at least four digits.
    return qvrFormat("%s/frame%04ld.qts", FramesFolder().c_str(), frame);
}

std::string EFarmRun::AssemblyFile(const char* extension) const {
    return Folder + "/assembly." + extension;
}

std::string EFarmRun::ChunkScriptText() const {
    return scriptOf(*this, "task", " \"$SLURM_ARRAY_TASK_ID\"");
}

std::string EFarmRun::AssemblyScriptText() const {
    return scriptOf(*this, "assemble");
}

std::optional<EFarmTaskResult> EFarmRun::ReadResult(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return in ? EFarmTaskResult::Parse(text.str()) : std::nullopt;
}

bool EFarmRun::WriteResult(const std::string& path, const EFarmTaskResult& result) {
    const std::string temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << result.ToText();
        if (!out.flush()) return false;
    }
    return std::rename(temporary.c_str(), path.c_str()) == 0;
}

const char* EFarmRun::KindText(Kind kind) {
    return KindNames[static_cast<int>(kind)];
}

const char* EFarmRun::StateText(EFarmState state) {
    static constexpr const char* names[] = {"missing", "pending", "running", "done", "failed"};
    return names[static_cast<int>(state)];
}

EFarmStatus EFarmStatus::Of(const EFarmRun& run, const std::map<std::string, std::string>& queue) {
    EFarmStatus status;
    for (std::size_t index = 0; index < run.Chunks.size(); ++index) {
        const EFarmChunk& chunk = run.Chunks[index];
        Chunk state =
            taskState(run.ChunkFile(index, "result"), chunk.JobId, framesOf(chunk, run.Step), queue);
        status.Done += state.Done;
        status.Failed += state.Failed;
        status.Missing += state.Frames - state.Done - state.Failed;
        status.Chunks.push_back(state);
    }
    if (run.RunKind == EFarmRun::Kind::Movie) {
        const std::uint32_t frames = status.Done + status.Failed + status.Missing;
        status.Assembly = taskState(run.AssemblyFile("result"), run.AssemblyJobId, frames, queue);
    }
    return status;
}

bool EFarmStatus::IsRunning() const {
    auto busy = [](const Chunk& chunk) {
        return chunk.State == EFarmState::Pending || chunk.State == EFarmState::Running;
    };
    for (const Chunk& chunk : Chunks)
        if (busy(chunk)) return true;
    return Assembly && busy(*Assembly);
}

bool EFarmStatus::IsComplete() const {
    for (const Chunk& chunk : Chunks)
        if (chunk.State != EFarmState::Done) return false;
    return !Assembly || Assembly->State == EFarmState::Done;
}

std::vector<std::size_t> EFarmStatus::ChunksToResume() const {
    std::vector<std::size_t> chunks;
    for (std::size_t index = 0; index < Chunks.size(); ++index)
        if (Chunks[index].State == EFarmState::Failed || Chunks[index].State == EFarmState::Missing)
            chunks.push_back(index);
    return chunks;
}
