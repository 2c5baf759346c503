#include "batch/EBatchListFile.h"

#include "batch/EBatchJob.h"
#include "batch/EBatchProcessorPrefs.h"
#include "batch/EBatchTreeFile.h"

namespace {

EPrefsSection::Lock lockList(hReport& report) {
    EPrefsSection::Lock lock = EBatchProcessorPrefs::Get().TryLock();
    if (!lock) report.Report("Resouce is in use", hReportError);
    return lock;
}

} // namespace

bool EBatchListFile::Save(const std::string& path, hReport& report) {
    const EPrefsSection::Lock lock = lockList(report);
    if (!lock) return false;
    qvrCTreeData root(RootName, Version);
    EBatchJobList::Get().SaveJobs(*root.CreateChild(EBatchJobList::JobsBlock));
    return EBatchTreeFile::Write(path, root, report);
}

bool EBatchListFile::Load(const std::string& path, hReport& report) {
    qvrCTreeData root;
    if (!EBatchTreeFile::Read(path, RootName, root, report)) return false;
    const EPrefsSection::Lock lock = lockList(report);
    if (!lock) return false;
    EBatchJobList& list = EBatchJobList::Get();
    list.DeleteAll();
    if (const qvrCTreeData* jobs = root.Find(EBatchJobList::JobsBlock)) list.LoadJobs(*jobs, report);
    return true;
}
