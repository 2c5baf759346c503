#include "CRenderSetupDialog.h"

#include "CJobAddDialog.h"
#include "batch/ERenderLater.h"
#include "foundation/hMessageBox.h"
#include "output/EImageOutputStream.h"
#include "output/OutputText.h"
#include "output/isvrSaver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <limits>

namespace {

QString text(const std::string& line) {
    return QString::fromStdString(line);
}

QString labelOf(const iParameter& parameter) {
    return text(EStringTable::Load(parameter.Label));
}

} // namespace

CRenderSetupDialog::CRenderSetupDialog(isvrSaver& saver, std::string projectPath, QWidget* parent)
    : QDialog(parent), Saver(saver), ProjectPath(std::move(projectPath)), Rendering(saver), Output(saver, 0) {
    setObjectName("RenderSetupDialog");
    setWindowTitle(QString("Render %1").arg(text(saver.GetName())));
    auto* tabs = new QTabWidget(this);
    tabs->addTab(makeRenderingPage(), "Rendering");
    tabs->addTab(makeOutputPage(), "Output");
    auto* buttons = new QDialogButtonBox(this);
    RenderButton = buttons->addButton("&Render", QDialogButtonBox::AcceptRole);
    LaterButton = buttons->addButton("Render &later...", QDialogButtonBox::ActionRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    RenderButton->setDefault(true);
    connect(RenderButton, &QPushButton::clicked, this, &CRenderSetupDialog::onRender);
    connect(LaterButton, &QPushButton::clicked, this, &CRenderSetupDialog::onRenderLater);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
    showRange();
    showStream();
}

QWidget* CRenderSetupDialog::makeRenderingPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    iSaverSetup& setup = Rendering.Setup;
    for (const auto& entry : iSaverSetup::Parameters.GetEntries()) {
        const QString label = labelOf(entry.Parameter);
        QWidget* editor = nullptr;
        if (auto* number = std::get_if<std::uint32_t iSaverSetup::*>(&entry.Field)) {
            auto* spin = new QSpinBox(page);
            spin->setRange(0, std::numeric_limits<int>::max());
            spin->setValue(int(setup.**number));
            connect(spin, &QSpinBox::valueChanged, this, [this, &setup, member = *number](int value) {
                setup.*member = std::uint32_t(value);
                showRange();
            });
            form->addRow(label, spin);
            editor = spin;
        } else if (auto* flag = std::get_if<bool iSaverSetup::*>(&entry.Field)) {
            auto* box = new QCheckBox(label, page);
            box->setChecked(setup.**flag);
            connect(box, &QCheckBox::toggled, this,
                    [&setup, member = *flag](bool on) { setup.*member = on; });
            form->addRow(QString(), box);
            editor = box;
        } else if (auto* line = std::get_if<std::string iSaverSetup::*>(&entry.Field)) {
            auto* edit = new QLineEdit(text(setup.**line), page);
            connect(edit, &QLineEdit::textEdited, this,
                    [&setup, member = *line](const QString& value) { setup.*member = value.toStdString(); });
            auto* browse = new QPushButton("Browse...", page);
            connect(browse, &QPushButton::clicked, this, [this, edit] {
                if (Rendering.BrowseLogFile()) edit->setText(text(Rendering.Setup.LogFile));
            });
            auto* row = new QHBoxLayout;
            row->addWidget(edit);
            row->addWidget(browse);
            auto* title = new QLabel(label, page);
            title->setBuddy(edit);
            form->addRow(title, row);
            editor = edit;
        }
        if (editor) editor->setObjectName(label);
    }
    RangeHint = new QLabel(page);
    RangeLine = new QLabel(page);
    form->addRow(RangeHint);
    form->addRow(RangeLine);
    return page;
}

QWidget* CRenderSetupDialog::makeOutputPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    Streams = new QComboBox(page);
    Streams->setObjectName("Stream");
    for (const EImageOutputStream* stream = EImageOutputStream::GetFirst(); stream;
         stream = stream->GetNext())
        Streams->addItem(stream->GetName());
    if (Output.Stream) Streams->setCurrentText(Output.Stream->GetName());
    connect(Streams, &QComboBox::currentTextChanged, this, [this](const QString& name) {
        Output.Stream = EImageOutputStream::Find(name.toStdString());
        Output.SetupText.clear();
        showStream();
    });
    form->addRow("&Format:", Streams);
    File = new QLineEdit(text(Output.FileName), page);
    File->setObjectName("File");
    connect(File, &QLineEdit::textEdited, this,
            [this](const QString& name) { Output.FileName = name.toStdString(); });
    auto* browse = new QPushButton("Browse...", page);
    connect(browse, &QPushButton::clicked, this, [this] {
        if (Output.BrowseFile()) File->setText(text(Output.FileName));
    });
    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(File);
    fileRow->addWidget(browse);
    auto* fileTitle = new QLabel("&File:", page);
    fileTitle->setBuddy(File);
    form->addRow(fileTitle, fileRow);
    StreamSetup = new QLabel(page);
    StreamSetup->setWordWrap(true);
    auto* setup = new QPushButton("&Setup...", page);
    connect(setup, &QPushButton::clicked, this, [this] {
        if (Output.EditSetup(this)) showStream();
    });
    form->addRow(setup, StreamSetup);
    return page;
}

QWidget* CRenderSetupDialog::FindField(const QString& label) const {
    return findChild<QWidget*>(label);
}

void CRenderSetupDialog::showRange() {
    const iSaverSetup& setup = Rendering.Setup;
    RangeHint->setText(text(hSaverRenderingPage::GetRangeHint(
        std::to_string(setup.VideoStart), std::to_string(setup.VideoEnd), std::to_string(setup.VideoSteps))));
    RangeLine->setText(text(Rendering.GetRangeLine()));
}

void CRenderSetupDialog::showStream() {
    std::string description;
    if (Output.Stream && Output.Stream->UsesSetup()) {
        if (std::unique_ptr<EImageOutputSetup> setup = Output.Stream->CreateSetup()) {
            setup->SetSetupString(Output.SetupText);
            description = setup->GetDescription();
        }
    }
    StreamSetup->setText(text(description));
}

bool CRenderSetupDialog::leavePages() {
    return Output.LeaveOutputPage(false) && Rendering.Leave();
}

void CRenderSetupDialog::onRender() {
    if (!leavePages()) return;
    if (!Saver.CanExecute()) {
        hMessageBox::Show(EStringTable::Load(OutputText::NotConfigured),
                          hMessageBox::OK | hMessageBox::IconExclamation, "");
        return;
    }
    accept();
}

void CRenderSetupDialog::onRenderLater() {
    if (!leavePages()) return;
    const ERenderLater::Outcome outcome =
        ERenderLater::Run(Saver, ProjectPath, [this](EBatchJobAddDialog& add) {
            CJobAddDialog window(add, this);
            return window.exec() == QDialog::Accepted;
        });
    if (outcome == ERenderLater::Outcome::Entered) reject();
}
