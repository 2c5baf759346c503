#include "CBatchDialog.h"

#include "CExecutionDialog.h"
#include "CMainFrame.h"
#include "batch/EBatchJob.h"
#include "batch/EBatchJobAddDialog.h"
#include "batch/EBatchListFile.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/hReport.h"
#include "model/iProject.h"
#include "output/isvrSaver.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr const char* ListFilter = "Batch lists (*.tbl)|*.tbl|All files (*.*)|*.*||";

QString text(const std::string& line) {
    return QString::fromStdString(line);
}

std::optional<std::string> askListFile(bool save) {
    EFileDialogRequest request;
    request.Save = save;
    request.DefaultExtension = "tbl";
    request.Filter = ListFilter;
    return EUserInterface::Get().AskFile(request);
}

void showReport(const char* title, hReportRoot& report) {
    if (report.GetCount() > 0) EUserInterface::Get().ShowReport(title, 0, report.GetEntries());
}

} // namespace

CBatchDialog::CBatchDialog(CMainFrame& frame) : QDialog(&frame), Frame(frame) {
    setObjectName("BatchDialog");
    setWindowTitle("Batch processor");
    Jobs = new QTreeWidget(this);
    QStringList titles;
    for (const char* column : EBatchJobAddDialog::Columns)
        titles << column;
    Jobs->setHeaderLabels(titles);
    Jobs->setRootIsDecorated(false);
    auto* controls = new QVBoxLayout;
    auto* lists = new QHBoxLayout;
    lists->addWidget(Jobs);
    lists->addLayout(controls);
    Status = new QLabel("Ready.", this);
    Progress = new QProgressBar(this);
    auto* statusGroup = new QGroupBox("Status", this);
    auto* statusLayout = new QVBoxLayout(statusGroup);
    statusLayout->addWidget(Status);
    statusLayout->addWidget(Progress);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists);
    layout->addWidget(statusGroup);

    const std::pair<const char*, std::function<void()>> buttons[] = {
        {"&Del", [this] { removeSelected(); }},
        {"&Top", [this] { moveSelected(EBatchJobList::Move::Top); }},
        {"&Up", [this] { moveSelected(EBatchJobList::Move::Up); }},
        {"Do&wn", [this] { moveSelected(EBatchJobList::Move::Down); }},
        {"&Bottom", [this] { moveSelected(EBatchJobList::Move::Bottom); }},
        {"&Save...", [this] { saveList(); }},
        {"&Load...", [this] { loadList(); }},
        {"&Clear all...", [this] { clearList(); }},
        {"&Render", [this] { renderList(); }},
        {"Close", [this] { accept(); }},
    };
    for (const auto& [label, action] : buttons) {
        auto* button = new QPushButton(label, this);
        connect(button, &QPushButton::clicked, this, action);
        controls->addWidget(button);
    }
    controls->addStretch();
    resize(760, 420);
    showJobs();
}

QPushButton* CBatchDialog::GetButton(const QString& label) const {
    for (QPushButton* button : findChildren<QPushButton*>())
        if (button->text() == label) return button;
    return nullptr;
}

QString CBatchDialog::GetStatus() const {
    return Status->text();
}

void CBatchDialog::showJobs() {
    Jobs->clear();
    const EBatchJobList& list = EBatchJobList::Get();
    for (std::size_t i = 0; i < list.GetCount(); ++i) {
        const EBatchJob& job = list.GetJob(i);
        new QTreeWidgetItem(Jobs, {text(job.Name), text(job.ProjectFile), text(job.SaverObject),
                                   text(job.SaverClass), text(EBatchJob::DateText(job.TimeCode))});
    }
}

const EBatchJob* CBatchDialog::selectedJob() const {
    const int row = Jobs->indexOfTopLevelItem(Jobs->currentItem());
    return row < 0 ? nullptr : &EBatchJobList::Get().GetJob(std::size_t(row));
}

void CBatchDialog::moveSelected(EBatchJobList::Move where) {
    const EBatchJob* job = selectedJob();
    if (!job || !EBatchJobList::Get().MoveJob(*job, where)) return;
    const std::string name = job->Name;
    showJobs();
    const QList<QTreeWidgetItem*> found = Jobs->findItems(text(name), Qt::MatchExactly);
    if (!found.isEmpty()) Jobs->setCurrentItem(found.front());
}

void CBatchDialog::removeSelected() {
    if (const EBatchJob* job = selectedJob()) EBatchJobList::Get().Remove(*job);
    showJobs();
}

void CBatchDialog::saveList() {
    const std::optional<std::string> path = askListFile(true);
    if (!path) return;
    hReportRoot report("Batch list");
    EBatchListFile::Save(*path, report);
    showReport("Saving the batch list", report);
}

void CBatchDialog::loadList() {
    const std::optional<std::string> path = askListFile(false);
    if (!path) return;
    hReportRoot report("Batch list");
    EBatchListFile::Load(*path, report);
    showReport("Loading the batch list", report);
    showJobs();
}

void CBatchDialog::clearList() {
    if (hMessageBox::Show("Are you sure you want to delete all jobs ?",
                          hMessageBox::YesNo | hMessageBox::IconQuestion, "") != IDYES)
        return;
    EBatchJobList::Get().DeleteAll();
    showJobs();
}

void CBatchDialog::renderList() {
    std::vector<std::string> unknown;
    const std::vector<const EBatchJob*> jobs = EBatchRun::SelectJobs({}, unknown);
    Progress->setRange(0, int(jobs.size()));
    Progress->setValue(0);
    int finished = 0;
    const std::vector<EBatchRun::Entry> entries =
        EBatchRun::Run(jobs, *this, [this, &finished](const EBatchRun::Entry& entry) {
            Progress->setValue(++finished);
            Status->setText(text(EBatchRun::SummaryLine(entry)));
        });
    const long complete = std::count_if(entries.begin(), entries.end(),
                                        [](const auto& entry) { return entry.Outcome.IsComplete(); });
    Status->setText(QString("%1 of %2 job(s) rendered completely.").arg(complete).arg(entries.size()));
}

EBatchJobOutcome CBatchDialog::RenderJob(const EBatchJob& job) {
    EBatchJobOutcome outcome;
    Status->setText(QString("Rendering %1...").arg(text(job.Name)));
    if (!Frame.OpenDocument(text(job.ProjectFile))) {
        outcome.Problem = job.ProjectFile + ": the project could not be opened";
        return outcome;
    }
    auto* saver = dynamic_cast<isvrSaver*>(iProject::GetStandard().FindElement(job.SaverObject));
    if (!saver || saver->GetElementType() != job.SaverClass) {
        outcome.Problem =
            job.ProjectFile + ": no saver \"" + job.SaverObject + "\" of the class " + job.SaverClass;
        return outcome;
    }
    CExecutionDialog execution(*saver, saver->GetSetup(), this);
    execution.SetCloseWhenOver(true);
    execution.exec();
    ESaverExecution& run = execution.GetRun();
    outcome.Started = run.GetProgressRange() > 0;
    std::uint32_t remaining = 0;
    run.GetCounts(outcome.Total, outcome.Done, outcome.Failed, remaining);
    outcome.Aborted = run.WasStopSent();
    return outcome;
}
