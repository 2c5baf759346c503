#pragma once
// The execution dialog of a standard saver's render run: the window of
// ESaverExecution. It shows the state, the progress and the figures, the
// threads' lines (all, or the warnings only), and has the pause box and the
// one button that aborts or closes. The window's close button ends the run
// by force after a question; frames already written stay.

#include "output/ESaverExecution.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class isvrSaver;

class CExecutionDialog : public QDialog, public ESaverExecution::View {
    Q_OBJECT
public:
    CExecutionDialog(isvrSaver& saver, const iSaverSetup& setup, QWidget* parent = nullptr);
    ~CExecutionDialog() override;

    ESaverExecution& GetRun() const { return *Run; }
    // The batch processor's runs close the window themselves when they are over.
    void SetCloseWhenOver(bool close) { CloseWhenOver = close; }
    QListWidget& GetLines() const { return *Lines; }

    // --- ESaverExecution::View.
    void Wake() override;
    void Changed() override;
    void AppendLine(const std::string& line) override;
    void RemoveFirstLines(size_t count) override;
    void PlaySound(ESaverExecution::Sound sound) override;
    void MinimizeMainWindow() override;
    void RestoreMainWindow() override;
    void Close() override;

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

private:
    void dispatch();

    QLabel* State = nullptr;
    QProgressBar* Progress = nullptr;
    QLabel* Counts = nullptr;
    QLabel* Times = nullptr;
    QListWidget* Lines = nullptr;
    QCheckBox* WarningsOnly = nullptr;
    QCheckBox* Pause = nullptr;
    QPushButton* Button = nullptr;
    std::unique_ptr<ESaverExecution> Run;
    bool Opened = false;
    bool CloseWhenOver = false;
};
