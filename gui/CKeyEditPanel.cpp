#include "CKeyEditPanel.h"

#include "CViewRenderer.h"
#include "foundation/EUserInterface.h"
#include "model/iActiveValue.h"
#include "model/iProject.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

CKeyEditPanel::CKeyEditPanel(iActiveValue& value, long index, QWidget* parent)
    : QDialog(parent), Edit(iProject::GetStandard(), value, index), FrameField(new QLineEdit(this)),
      ValueField(new QLineEdit(this)), Complaint(new QLabel(this)) {
    setObjectName("KeyEditPanel");
    setWindowTitle(QString::fromStdString(value.GetName()));
    FrameField->setText(QString::fromStdString(Edit.FrameText));
    ValueField->setText(QString::fromStdString(Edit.ValueText));
    Complaint->setStyleSheet("color: darkred");
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &CKeyEditPanel::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CKeyEditPanel::reject);
    auto* layout = new QFormLayout(this);
    layout->addRow("&Frame:", FrameField);
    layout->addRow("&Value:", ValueField);
    layout->addRow(Complaint);
    layout->addRow(buttons);
}

QString CKeyEditPanel::GetComplaint() const {
    return Complaint->text();
}

void CKeyEditPanel::accept() {
    Edit.FrameText = FrameField->text().toStdString();
    Edit.ValueText = ValueField->text().toStdString();
    std::string complaint = Edit.Check();
    if (complaint.empty()) {
        CViewRenderer::Get().WaitIdle();
        complaint = Edit.Apply();
    }
    Complaint->setText(QString::fromStdString(complaint));
    if (!complaint.empty()) {
        QApplication::beep();
        EUserInterface::Get().SetStatusText(complaint);
        (Edit.CheckFrame().empty() ? ValueField : FrameField)->setFocus();
        return;
    }
    emit Applied();
    QDialog::accept();
}
