#pragma once
// The dialog that enters a saver as a batch job, apart from its window: the
// list of the jobs there are, the job that stands for the saver already (the
// current job), the proposed name and the checks of OK. OK makes a new job,
// or renews the current one, which keeps its name. Main thread only.

#include "batch/EBatchJob.h"
#include "foundation/qvrGeometry.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

class EBatchJobAddDialog {
public:
    static constexpr const char* Title = "Add a new job for the batch processor:";
    static constexpr const char* ListLabel = "Already &available jobs:";
    static constexpr const char* NameLabel = "Display &name of job:";
    static constexpr const char* PlaceKey = "Dialogs\\BatchProcessor\\JobAdd";
    static constexpr std::array<const char*, 5> Columns{"Name", "Project", "Saver", "Type", "Date"};
    static constexpr int ColumnWidth = 100;
    static constexpr int IconJob = 0;
    static constexpr int IconCurrent = 7;
    static constexpr const char* DateNow = "<now>";

    struct Row {
        int Icon = IconJob;
        std::string Name;
        std::string Project;
        std::string Saver;
        std::string Type;
        std::string Date;
    };

    // Opens the dialog for the saver of the project at `projectPath`; the
    // window place is restored.
    EBatchJobAddDialog(std::string projectPath, std::string saverName, std::string saverClass);

    // One row per job in list order, and one more for a job to be made.
    const std::vector<Row>& GetRows() const { return Rows; }
    // The job that stands for the saver already; null when OK makes a new one.
    EBatchJob* GetCurrentJob() const { return Current; }
    std::string GetProjectLabel() const { return ProjectPath; }
    // "name (class)" of the saver.
    std::string GetSaverLabel() const;

    const std::string& GetName() const { return Name; }
    // The name field was edited: the row of the job follows it.
    void SetName(std::string name);
    bool IsOkEnabled() const;
    // OK: false, with the complaint shown, when the dialog stays. Otherwise
    // the job is made or renewed and the window place saved.
    bool OnOk();
    // The job that OK made or renewed.
    EBatchJob* GetEnteredJob() const { return Entered; }

    // "<last part of the path>:<saver>", with ".1", ".2", ... while the name is taken.
    static std::string ProposeName(const std::string& projectPath, const std::string& saverName);

    // The window's place, as restored and as the window leaves it.
    std::optional<CRect> WindowPlace;

private:
    // Whether a job other than the current one has the name.
    bool isTakenByOther(const std::string& name) const;
    Row& currentRow() { return Rows[CurrentRow]; }

    std::string ProjectPath;
    std::string SaverName;
    std::string SaverClass;
    std::vector<Row> Rows;
    EBatchJob* Current = nullptr;
    std::size_t CurrentRow = 0;
    std::string Name;
    EBatchJob* Entered = nullptr;
};
