#pragma once
// The batch list: render jobs kept for later, each naming a project file and a
// saver in it. One global list in the order of creation, which the batch
// processor's controls may change; names are unique without regard to case.
// The jobs' blocks are read and written here for both places that keep a list:
// the preferences' section and a list file. Main thread only.

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <cstddef>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class EBatchJob {
public:
    std::string Name;
    std::string ProjectFile;
    std::string SaverObject;
    std::string SaverClass;
    std::time_t TimeCode = 0;

    // The text form of a time in the list's files: "YYYY-MM-DD hh:mm:ss UTC".
    static std::string TimeCodeText(std::time_t time);
    static std::optional<std::time_t> ParseTimeCode(const std::string& text);
    // The time as the job lists show it ("%x", the local date).
    static std::string DateText(std::time_t time);
};

class EBatchJobList {
public:
    // The keys of a job's block.
    static constexpr const char* KeyProjectFile = "Projectfile";
    static constexpr const char* KeySaverObject = "Saverobject";
    static constexpr const char* KeySaverClass = "Saverclass";
    static constexpr const char* KeyTimeCode = "TimeCode";
    // The job's place in the list: blocks are kept sorted by name, so the
    // order that the controls give the list is written beside each job.
    static constexpr const char* KeyListPosition = "Listposition";
    static constexpr const char* JobsBlock = "Jobs";
    static constexpr const char* LogSource = "Batch processor";

    enum class Move { Top, Up, Down, Bottom };

    static EBatchJobList& Get();

    // Makes a job at the tail of the list.
    EBatchJob& Create(EBatchJob job);
    // The job of the name, compared without regard to case; null when there is none.
    EBatchJob* Find(const std::string& name) const;
    // Deletes the job; false when it isn't in the list.
    bool Remove(const EBatchJob& job);
    // Moves the job within the list; false when it isn't in the list.
    bool MoveJob(const EBatchJob& job, Move where);
    void DeleteAll() { Jobs.clear(); }

    std::size_t GetCount() const { return Jobs.size(); }
    const EBatchJob& GetJob(std::size_t index) const { return *Jobs[index]; }
    EBatchJob& GetJob(std::size_t index) { return *Jobs[index]; }

    // Makes the jobs of a "Jobs" block at the tail, in their list positions,
    // with a report for every job that is dropped.
    void LoadJobs(const qvrCTreeData& jobs, hReport& report);
    // Writes one block per job in list order.
    void SaveJobs(qvrCTreeData& jobs) const;

private:
    std::optional<std::size_t> indexOf(const EBatchJob& job) const;
    // Makes the job of one block unless its definition can't be used.
    void loadJob(const qvrCTreeData& block, hReport& report);

    std::vector<std::unique_ptr<EBatchJob>> Jobs;
};
