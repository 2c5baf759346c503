#pragma once
// The batch processor: the list of render jobs with the controls that
// order, save, load and clear it, and Render, which renders the jobs one
// after the other in the main window: each job's project is opened, its
// saver found by name and class and its execution window run to the end.
// The status group tells the job at work and the progress through the list.

#include "batch/EBatchRun.h"

#include <QDialog>

class CMainFrame;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;

class CBatchDialog : public QDialog, private iBatchJobRenderer {
    Q_OBJECT
public:
    CBatchDialog(CMainFrame& frame);

    QPushButton* GetButton(const QString& text) const;
    QTreeWidget& GetJobs() const { return *Jobs; }
    QString GetStatus() const;

private:
    EBatchJobOutcome RenderJob(const EBatchJob& job) override;
    void addButton(const QString& text, const std::function<void()>& action);
    void showJobs();
    // The job of the selected row; null when no row is selected.
    const EBatchJob* selectedJob() const;
    void moveSelected(EBatchJobList::Move where);
    void removeSelected();
    void saveList();
    void loadList();
    void clearList();
    void renderList();

    CMainFrame& Frame;
    QTreeWidget* Jobs = nullptr;
    QLabel* Status = nullptr;
    QProgressBar* Progress = nullptr;
};
