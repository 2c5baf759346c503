#pragma once
// A run of the batch list: each job in list order is rendered by opening its
// project, finding its saver by name and class and running the saver's
// execution. Opening projects and running savers belong to the program above
// this layer, which lends them through iBatchJobRenderer. A failing job never
// stops the next; the list stays as it is. Main thread only.

#include "batch/EBatchJob.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// How one job's render ended.
struct EBatchJobOutcome {
    bool Started = false; // the project opened and the saver ran
    std::string Problem;  // why it didn't start
    std::uint32_t Total = 0;
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;
    bool Aborted = false;

    bool IsComplete() const { return Started && !Aborted && Done == Total; }
    // "<done> of <total> frames done, <failed> failed", or the problem.
    std::string SummaryText() const;
};

class iBatchJobRenderer {
public:
    virtual ~iBatchJobRenderer() = default;
    // Opens the project of the job and renders the saver that the job names.
    virtual EBatchJobOutcome RenderJob(const EBatchJob& job) = 0;
};

class EBatchRun {
public:
    struct Entry {
        std::string JobName;
        EBatchJobOutcome Outcome;
    };

    // The jobs to render: all, or the named ones (without regard to case), in list order.
    // Names that no job has are given back through `unknown`.
    static std::vector<const EBatchJob*> SelectJobs(const std::vector<std::string>& names,
                                                    std::vector<std::string>& unknown);

    // Renders the jobs one after the other; `onJobDone` hears of each as it ends.
    static std::vector<Entry> Run(const std::vector<const EBatchJob*>& jobs, iBatchJobRenderer& renderer,
                                  const std::function<void(const Entry&)>& onJobDone);

    // The summary line of one job: "<name>: <outcome>".
    static std::string SummaryLine(const Entry& entry);
};
