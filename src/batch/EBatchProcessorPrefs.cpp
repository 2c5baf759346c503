#include "batch/EBatchProcessorPrefs.h"

#include "batch/EBatchJob.h"

EBatchProcessorPrefs::EBatchProcessorPrefs() : EPrefsSection("Batch processor") {}

EBatchProcessorPrefs& EBatchProcessorPrefs::Get() {
    static EBatchProcessorPrefs instance;
    return instance;
}

namespace {
[[maybe_unused]] EBatchProcessorPrefs& batchSection = EBatchProcessorPrefs::Get();
}

void EBatchProcessorPrefs::LoadExtra(qvrCTreeData& block, hReport& report) {
    if (const qvrCTreeData* jobs = block.Find(EBatchJobList::JobsBlock))
        EBatchJobList::Get().LoadJobs(*jobs, report);
}

void EBatchProcessorPrefs::SaveExtra(qvrCTreeData& block, hReport&) {
    EBatchJobList::Get().SaveJobs(*block.CreateChild(EBatchJobList::JobsBlock));
}
