#include "CExecutionDialog.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "output/isvrSaver.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The question before the window's close button ends a run by force.
constexpr const char* AbortQuestion = "Are you sure you want\nto abort ?";

QString text(const std::string& line) {
    return QString::fromStdString(line);
}

} // namespace

CExecutionDialog::CExecutionDialog(isvrSaver& saver, const iSaverSetup& setup, QWidget* parent)
    : QDialog(parent) {
    setObjectName("ExecutionDialog");
    setWindowTitle(QString("Rendering %1").arg(QString::fromStdString(saver.GetName())));
    State = new QLabel(this);
    Progress = new QProgressBar(this);
    Counts = new QLabel(this);
    Times = new QLabel(this);
    Lines = new QListWidget(this);
    WarningsOnly = new QCheckBox("&Warnings only", this);
    Pause = new QCheckBox("&Pause", this);
    Button = new QPushButton("&Abort", this);
    auto* controls = new QHBoxLayout;
    controls->addWidget(WarningsOnly);
    controls->addWidget(Pause);
    controls->addStretch();
    controls->addWidget(Button);
    auto* layout = new QVBoxLayout(this);
    for (QWidget* widget :
         {static_cast<QWidget*>(State), static_cast<QWidget*>(Progress), static_cast<QWidget*>(Counts),
          static_cast<QWidget*>(Times), static_cast<QWidget*>(Lines)})
        layout->addWidget(widget);
    layout->addLayout(controls);
    resize(560, 380);

    Run = std::make_unique<ESaverExecution>(saver, setup, *this);
    WarningsOnly->setChecked(Run->GetWarningsOnly());
    connect(WarningsOnly, &QCheckBox::toggled, this, [this](bool on) { Run->SetWarningsOnly(on); });
    connect(Pause, &QCheckBox::toggled, this, [this](bool on) {
        Run->SetPaused(on);
        if (!on) dispatch();
    });
    connect(Button, &QPushButton::clicked, this, [this] {
        Run->OnButton();
        Changed();
    });
    auto* timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this] {
        Run->OnTimer();
        Changed();
    });
    timer->start(int(ESaverExecution::TimerMs));
}

CExecutionDialog::~CExecutionDialog() {
    if (!Run->IsClosed()) Run->HardAbort();
}

void CExecutionDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (Opened) return;
    Opened = true;
    // Inside the window's own loop, so that a run that ends at once can close it.
    QTimer::singleShot(0, this, [this] {
        Run->Open();
        dispatch();
    });
}

void CExecutionDialog::dispatch() {
    Run->DispatchMessages();
    Changed();
    if (CloseWhenOver && Run->GetState() == ESaverExecution::StateOver && !Run->IsClosed()) Run->OnButton();
}

void CExecutionDialog::Wake() {
    QMetaObject::invokeMethod(this, &CExecutionDialog::dispatch, Qt::QueuedConnection);
}

void CExecutionDialog::Changed() {
    State->setText(text(Run->GetStateText()));
    Progress->setRange(0, int(Run->GetProgressRange()));
    Progress->setValue(int(Run->GetProgressPosition()));
    Counts->setText(text(Run->GetCountsText()));
    Times->setText(text(Run->GetTimesText()));
    Button->setText(Run->GetButtonText());
    Button->setEnabled(Run->IsButtonEnabled());
}

void CExecutionDialog::AppendLine(const std::string& line) {
    Lines->addItem(text(line.substr(0, line.find_last_not_of("\r\n") + 1)));
    Lines->scrollToBottom();
}

void CExecutionDialog::RemoveFirstLines(size_t count) {
    for (size_t i = 0; i < count && Lines->count() > 0; ++i)
        delete Lines->takeItem(0);
}

void CExecutionDialog::PlaySound(ESaverExecution::Sound) {
    QApplication::beep();
}

void CExecutionDialog::MinimizeMainWindow() {
    if (parentWidget()) parentWidget()->window()->showMinimized();
}

void CExecutionDialog::RestoreMainWindow() {
    if (parentWidget()) parentWidget()->window()->showNormal();
}

void CExecutionDialog::Close() {
    QDialog::done(QDialog::Accepted);
}

void CExecutionDialog::closeEvent(QCloseEvent* event) {
    event->ignore();
    reject();
}

void CExecutionDialog::reject() {
    if (Run->IsClosed()) return QDialog::reject();
    if (Run->GetState() != ESaverExecution::StateOver &&
        hMessageBox::Show(AbortQuestion, hMessageBox::YesNo | hMessageBox::IconQuestion, "") != IDYES)
        return;
    Run->HardAbort();
}
