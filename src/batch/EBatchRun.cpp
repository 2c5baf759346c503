#include "batch/EBatchRun.h"

#include "foundation/qvrString.h"

std::string EBatchJobOutcome::SummaryText() const {
    if (!Started) return "not rendered: " + Problem;
    return qvrFormat("%u of %u frames done, %u failed%s", Done, Total, Failed, Aborted ? ", aborted" : "");
}

std::vector<const EBatchJob*> EBatchRun::SelectJobs(const std::vector<std::string>& names,
                                                    std::vector<std::string>& unknown) {
    const EBatchJobList& list = EBatchJobList::Get();
    for (const std::string& name : names)
        if (!list.Find(name)) unknown.push_back(name);
    std::vector<const EBatchJob*> jobs;
    for (std::size_t index = 0; index < list.GetCount(); ++index) {
        const EBatchJob& job = list.GetJob(index);
        bool named = names.empty();
        for (const std::string& name : names)
            named = named || qvrEqualNoCase(name, job.Name);
        if (named) jobs.push_back(&job);
    }
    return jobs;
}

std::vector<EBatchRun::Entry> EBatchRun::Run(const std::vector<const EBatchJob*>& jobs,
                                             iBatchJobRenderer& renderer,
                                             const std::function<void(const Entry&)>& onJobDone) {
    std::vector<Entry> entries;
    for (const EBatchJob* job : jobs) {
        entries.push_back({job->Name, renderer.RenderJob(*job)});
        onJobDone(entries.back());
    }
    return entries;
}

std::string EBatchRun::SummaryLine(const Entry& entry) {
    return entry.JobName + ": " + entry.Outcome.SummaryText();
}
