#include "batch/EBatchJob.h"

#include "foundation/ELog.h"
#include "foundation/qvrCException.h"
#include "foundation/qvrCTextFile.h"
#include "foundation/qvrString.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <exception>

namespace {

constexpr const char* TimeCodeFormat = "%Y-%m-%d %H:%M:%S UTC";

// The four keys that a job's block must have, in the order of the block.
constexpr const char* RequiredKeys[] = {EBatchJobList::KeyProjectFile, EBatchJobList::KeySaverObject,
                                        EBatchJobList::KeySaverClass, EBatchJobList::KeyTimeCode};

std::string keyText(const qvrCTreeData& block, const char* key) {
    const std::string* text = block.GetText(key);
    return text ? *text : std::string();
}

// Where a block wants its job in the list; blocks without a position follow
// the others in name order.
long listPosition(const qvrCTreeData& block) {
    long position = LONG_MAX;
    block.GetLong(EBatchJobList::KeyListPosition, position);
    return position;
}

// Opens the project file for reading as a test; the error's text when it can't be read.
std::string projectFileProblem(const std::string& path) {
    try {
        qvrCDiskTextFile file(path, qvrCDiskTextFile::Mode::Read);
        return {};
    } catch (const std::exception& error) {
        return qvrErrorText::FromException(error);
    }
}

} // namespace

std::string EBatchJob::TimeCodeText(std::time_t time) {
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[64];
    return std::strftime(text, sizeof text, TimeCodeFormat, &parts) ? text : "";
}

std::optional<std::time_t> EBatchJob::ParseTimeCode(const std::string& text) {
    std::tm parts{};
    int consumed = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d UTC%n", &parts.tm_year, &parts.tm_mon,
                    &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &consumed) != 6 ||
        static_cast<size_t>(consumed) != text.size())
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const std::time_t time = timegm(&parts);
    if (time == static_cast<std::time_t>(-1) || TimeCodeText(time) != text) return std::nullopt;
    return time;
}

std::string EBatchJob::DateText(std::time_t time) {
    std::tm parts{};
    localtime_r(&time, &parts);
    char text[64];
    return std::strftime(text, sizeof text, "%x", &parts) ? text : "";
}

EBatchJobList& EBatchJobList::Get() {
    static EBatchJobList list;
    return list;
}

EBatchJob& EBatchJobList::Create(EBatchJob job) {
    Jobs.push_back(std::make_unique<EBatchJob>(std::move(job)));
    return *Jobs.back();
}

EBatchJob* EBatchJobList::Find(const std::string& name) const {
    for (const auto& job : Jobs)
        if (qvrEqualNoCase(job->Name, name)) return job.get();
    return nullptr;
}

std::optional<std::size_t> EBatchJobList::indexOf(const EBatchJob& job) const {
    for (std::size_t index = 0; index < Jobs.size(); ++index)
        if (Jobs[index].get() == &job) return index;
    return std::nullopt;
}

bool EBatchJobList::Remove(const EBatchJob& job) {
    const std::optional<std::size_t> index = indexOf(job);
    if (!index) return false;
    Jobs.erase(Jobs.begin() + static_cast<std::ptrdiff_t>(*index));
    return true;
}

bool EBatchJobList::MoveJob(const EBatchJob& job, Move where) {
    const std::optional<std::size_t> found = indexOf(job);
    if (!found) return false;
    const auto at = Jobs.begin() + static_cast<std::ptrdiff_t>(*found);
    switch (where) {
    case Move::Top:
        std::rotate(Jobs.begin(), at, at + 1);
        break;
    case Move::Up:
        if (at != Jobs.begin()) std::iter_swap(at, at - 1);
        break;
    case Move::Down:
        if (at + 1 != Jobs.end()) std::iter_swap(at, at + 1);
        break;
    case Move::Bottom:
        std::rotate(at, at + 1, Jobs.end());
        break;
    }
    return true;
}

void EBatchJobList::LoadJobs(const qvrCTreeData& jobs, hReport& report) {
    std::vector<const qvrCTreeData*> blocks;
    for (const auto& [name, block] : jobs.GetChildren())
        blocks.push_back(block.get());
    std::stable_sort(blocks.begin(), blocks.end(), [](const qvrCTreeData* a, const qvrCTreeData* b) {
        return listPosition(*a) < listPosition(*b);
    });
    for (const qvrCTreeData* block : blocks)
        loadJob(*block, report);
}

void EBatchJobList::loadJob(const qvrCTreeData& block, hReport& report) {
    const char* name = block.GetName().c_str();
    for (const char* key : RequiredKeys) {
        if (!keyText(block, key).empty()) continue;
        report.Report(qvrFormat("Job \"%s\" definition incomplete (job is been removed).", name),
                      hReportError);
        return;
    }
    if (Find(block.GetName())) {
        report.Report(qvrFormat("Job \"%s\" defined twice.", name), hReportError);
        return;
    }
    EBatchJob job{block.GetName(), keyText(block, KeyProjectFile), keyText(block, KeySaverObject),
                  keyText(block, KeySaverClass)};
    const std::string problem = projectFileProblem(job.ProjectFile);
    if (!problem.empty()) {
        report.Report(qvrFormat("Job \"%s\": Unable to find project file \"%s\" (see log file for details).",
                                name, job.ProjectFile.c_str()),
                      hReportError);
        ELog::Error(
            qvrFormat("While trying to query a job's project file, a file error\nencountered:\nFile:  "
                      "%s\nError: %s\n",
                      job.ProjectFile.c_str(), problem.c_str()),
            LogSource);
        return;
    }
    const std::string time = keyText(block, KeyTimeCode);
    if (const std::optional<std::time_t> parsed = EBatchJob::ParseTimeCode(time))
        job.TimeCode = *parsed;
    else
        report.Report(
            qvrFormat("Invalid value \"%s\" for \"%s\" (the default stays)", time.c_str(), KeyTimeCode),
            hReportWarning);
    Create(std::move(job));
}

void EBatchJobList::SaveJobs(qvrCTreeData& jobs) const {
    long position = 0;
    for (const auto& job : Jobs) {
        qvrCTreeData* block = jobs.CreateChild(job->Name);
        block->SetText(KeyProjectFile, job->ProjectFile);
        block->SetText(KeySaverObject, job->SaverObject);
        block->SetText(KeySaverClass, job->SaverClass);
        block->SetText(KeyTimeCode, EBatchJob::TimeCodeText(job->TimeCode));
        block->SetLong(KeyListPosition, position++);
    }
}
