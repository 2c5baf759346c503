#pragma once
// A saver's render run on a farm: its frames split into chunks that the
// cluster's tasks render, and the state of the run in a folder of its own, so
// that the run can be told and resumed long after the cluster has forgotten
// its jobs. The folder holds "run.tsp" (what the run renders, its chunks and
// the cluster's job of each), the tasks' scripts, and for each chunk its
// render log, its output and its result, which the task writes as its last
// step. A movie's chunks render quick files into "frames", and the
// assembly task writes the movie from them in frame order.
//
// Kinds of run: a sequence saver's chunks are ranges of frames; a movie's
// too, plus the assembly; a projector array's chunks are its active
// projectors, each over the whole range.

#include "foundation/hReport.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// What a chunk's task leaves behind: its exit status and frame counts.
struct EFarmTaskResult {
    int Exit = 0;
    std::uint32_t Total = 0;
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;

    std::string ToText() const;
    static std::optional<EFarmTaskResult> Parse(const std::string& text);
};

struct EFarmChunk {
    long First = 0;
    long Last = 0;
    long Projector = -1; // the projector of an array's chunk, counted from 0
    std::string JobId;   // the cluster's job of the chunk's latest task, "<array>_<index>"
};

// The state of a chunk or of the assembly.
enum class EFarmState { Missing, Pending, Running, Done, Failed };

class EFarmRun {
public:
    enum class Kind { Sequence, Movie, Array };
    static constexpr const char* RootName = "qvrTessarine farm run";
    static constexpr const char* StateFile = "run.tsp";

    std::string Folder;
    std::string Project;
    std::string Saver;
    std::string SaverClass;
    Kind RunKind = Kind::Sequence;
    long First = 0;
    long Last = 0;
    long Step = 1;
    long Threads = 1;
    std::string Program; // the qvr program that the tasks run
    std::string Home;    // the program directory, empty for the default
    std::string Partition;
    std::vector<std::string> SbatchOptions; // more options for every submission
    std::vector<EFarmChunk> Chunks;
    std::string AssemblyJobId;

    // Ranges of at most `frames` rendered frames each over first..last by step.
    void PlanFrameChunks(long frames);
    // One chunk per projector over the whole range.
    void PlanProjectorChunks(const std::vector<long>& projectors);

    bool Save(hReport& report) const;
    static std::optional<EFarmRun> Load(const std::string& folder, hReport& report);

    std::string ChunkFile(std::size_t chunk, const char* extension) const;
    std::string AssemblyFile(const char* extension) const;
    std::string FramesFolder() const { return Folder + "/frames"; }
    // The name that a movie's chunks render their quick files under, and the file of one frame.
    std::string QuickFilesName() const { return FramesFolder() + "/frame.qts"; }
    std::string QuickFile(long frame) const;
    std::string ChunkScript() const { return Folder + "/chunk.sh"; }
    std::string AssemblyScript() const { return Folder + "/assemble.sh"; }
    // The scripts of the tasks: a chunk's (its index in the array's task id) and the assembly.
    std::string ChunkScriptText() const;
    std::string AssemblyScriptText() const;

    static std::optional<EFarmTaskResult> ReadResult(const std::string& path);
    static bool WriteResult(const std::string& path, const EFarmTaskResult& result);
    static const char* KindText(Kind kind);
    static const char* StateText(EFarmState state);
};

// The state of a whole run, from the result files and the cluster's queue.
struct EFarmStatus {
    struct Chunk {
        EFarmState State = EFarmState::Missing;
        std::string SlurmState; // as the queue tells it, empty when it isn't queued
        std::uint32_t Frames = 0;
        std::uint32_t Done = 0;
        std::uint32_t Failed = 0;
    };
    std::vector<Chunk> Chunks;
    std::optional<Chunk> Assembly; // a movie's
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;
    std::uint32_t Missing = 0;

    // `queue`: the cluster's queued tasks by job id ("<array>_<index>" or "<job>") and their states.
    static EFarmStatus Of(const EFarmRun& run, const std::map<std::string, std::string>& queue);
    bool IsRunning() const;
    bool IsComplete() const;
    // The chunks that a resume renders again: failed, or never rendered and not queued.
    std::vector<std::size_t> ChunksToResume() const;
};
