#pragma once
// The window of the job-add dialog that "Render later..." opens: the jobs
// there are, with the saver's own job marked, and the job's display name.
// OK enters the job when the dialog's checks pass.

#include <QDialog>

class EBatchJobAddDialog;
class QLineEdit;
class QPushButton;
class QTreeWidget;

class CJobAddDialog : public QDialog {
    Q_OBJECT
public:
    CJobAddDialog(EBatchJobAddDialog& logic, QWidget* parent = nullptr);

    void accept() override;

private:
    void showRows();

    EBatchJobAddDialog& Logic;
    QTreeWidget* Jobs = nullptr;
    QLineEdit* Name = nullptr;
    QPushButton* Ok = nullptr;
};
