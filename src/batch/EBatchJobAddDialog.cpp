#include "batch/EBatchJobAddDialog.h"

#include "foundation/hMessageBox.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrCTreeData.h"
#include "foundation/qvrString.h"

namespace {

constexpr const char* PlaceValue = "WindowPlace";

std::optional<CRect> restorePlace() {
    qvrCRegKey key;
    if (!key.Open(qvrCRegKey::Root(), EBatchJobAddDialog::PlaceKey, qvrCRegKey::Access::OpenExisting))
        return std::nullopt;
    long values[4];
    if (!qvrTreeText::ToLongs(key.GetText(PlaceValue, ""), values, 4)) return std::nullopt;
    return CRect{values[0], values[1], values[2], values[3]};
}

void savePlace(const CRect& place) {
    qvrCRegKey key;
    if (key.Open(qvrCRegKey::Root(), EBatchJobAddDialog::PlaceKey))
        key.SetText(PlaceValue,
                    qvrFormat("%ld,%ld,%ld,%ld", place.left, place.top, place.right, place.bottom));
}

void complain(const char* text) {
    hMessageBox::Show(text, hMessageBox::OK | hMessageBox::IconExclamation, "qvrTessarine");
}

// The last part of a path, after trailing separators are stripped.
std::string lastPart(const std::string& path) {
    const std::string trimmed = path.substr(0, path.find_last_not_of("\\/") + 1);
    const std::size_t separator = trimmed.find_last_of("\\/");
    return separator == std::string::npos ? trimmed : trimmed.substr(separator + 1);
}

} // namespace

EBatchJobAddDialog::EBatchJobAddDialog(std::string projectPath, std::string saverName, std::string saverClass)
    : WindowPlace(restorePlace()), ProjectPath(std::move(projectPath)), SaverName(std::move(saverName)),
      SaverClass(std::move(saverClass)) {
    EBatchJobList& list = EBatchJobList::Get();
    for (std::size_t index = 0; index < list.GetCount(); ++index) {
        EBatchJob& job = list.GetJob(index);
        Rows.push_back({IconJob, job.Name, job.ProjectFile, job.SaverObject, job.SaverClass,
                        EBatchJob::DateText(job.TimeCode)});
        if (qvrEqualNoCase(job.ProjectFile, ProjectPath) && qvrEqualNoCase(job.SaverObject, SaverName)) {
            Current = &job;
            CurrentRow = index;
        }
    }
    if (Current) {
        Name = Current->Name;
    } else {
        Name = ProposeName(ProjectPath, SaverName);
        CurrentRow = Rows.size();
        Rows.push_back({IconJob, Name, ProjectPath, SaverName, SaverClass, {}});
    }
    currentRow().Icon = IconCurrent;
    currentRow().Date = DateNow;
}

std::string EBatchJobAddDialog::GetSaverLabel() const {
    return qvrFormat("%s (%s)", SaverName.c_str(), SaverClass.c_str());
}

std::string EBatchJobAddDialog::ProposeName(const std::string& projectPath, const std::string& saverName) {
    const std::string base = qvrFormat("%s:%s", lastPart(projectPath).c_str(), saverName.c_str());
    std::string name = base;
    for (long number = 1; EBatchJobList::Get().Find(name); ++number)
        name = qvrFormat("%s.%ld", base.c_str(), number);
    return name;
}

void EBatchJobAddDialog::SetName(std::string name) {
    Name = std::move(name);
    currentRow().Name = Name;
}

bool EBatchJobAddDialog::isTakenByOther(const std::string& name) const {
    const EBatchJob* owner = EBatchJobList::Get().Find(name);
    return owner && owner != Current;
}

bool EBatchJobAddDialog::IsOkEnabled() const {
    return !Name.empty() && !isTakenByOther(Name);
}

bool EBatchJobAddDialog::OnOk() {
    if (Name.empty()) {
        complain("Please enter a valid name.");
        return false;
    }
    if (isTakenByOther(Name)) {
        complain("A job with that name already exists.");
        return false;
    }
    // A renewed job keeps its name, whatever the field says.
    if (Current) {
        Current->ProjectFile = ProjectPath;
        Current->SaverObject = SaverName;
        Current->SaverClass = SaverClass;
        Current->TimeCode = std::time(nullptr);
        Entered = Current;
    } else {
        Entered =
            &EBatchJobList::Get().Create({Name, ProjectPath, SaverName, SaverClass, std::time(nullptr)});
    }
    if (WindowPlace) savePlace(*WindowPlace);
    return true;
}
