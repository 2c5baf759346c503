#include "CJobAddDialog.h"

#include "batch/EBatchJobAddDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QString text(const std::string& line) {
    return QString::fromStdString(line);
}

} // namespace

CJobAddDialog::CJobAddDialog(EBatchJobAddDialog& logic, QWidget* parent) : QDialog(parent), Logic(logic) {
    setObjectName("JobAddDialog");
    setWindowTitle("Render later");
    Jobs = new QTreeWidget(this);
    QStringList titles;
    for (const char* column : EBatchJobAddDialog::Columns)
        titles << column;
    Jobs->setHeaderLabels(titles);
    Jobs->setRootIsDecorated(false);
    for (int column = 0; column < titles.size(); ++column)
        Jobs->setColumnWidth(column, EBatchJobAddDialog::ColumnWidth);
    Name = new QLineEdit(text(Logic.GetName()), this);
    Name->setObjectName("Name");
    connect(Name, &QLineEdit::textEdited, this, [this](const QString& name) {
        Logic.SetName(name.toStdString());
        showRows();
    });
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    Ok = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &CJobAddDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* form = new QFormLayout;
    form->addRow("Project:", new QLabel(text(Logic.GetProjectLabel()), this));
    form->addRow("Saver:", new QLabel(text(Logic.GetSaverLabel()), this));
    form->addRow(EBatchJobAddDialog::NameLabel, Name);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(EBatchJobAddDialog::Title, this));
    layout->addWidget(new QLabel(EBatchJobAddDialog::ListLabel, this));
    layout->addWidget(Jobs);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(620, 360);
    showRows();
}

void CJobAddDialog::showRows() {
    Jobs->clear();
    for (const EBatchJobAddDialog::Row& row : Logic.GetRows()) {
        auto* item = new QTreeWidgetItem(
            Jobs, {text(row.Name), text(row.Project), text(row.Saver), text(row.Type), text(row.Date)});
        const auto icon =
            row.Icon == EBatchJobAddDialog::IconCurrent ? QStyle::SP_ArrowRight : QStyle::SP_FileIcon;
        item->setIcon(0, style()->standardIcon(icon));
    }
    Ok->setEnabled(Logic.IsOkEnabled());
}

void CJobAddDialog::accept() {
    if (Logic.OnOk()) QDialog::accept();
}
