#include "CQtUserInterface.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <map>

namespace {

QMessageBox::Icon iconOf(unsigned icon) {
    switch (icon) {
    case 0x10:
        return QMessageBox::Critical;
    case 0x20:
        return QMessageBox::Question;
    case 0x30:
        return QMessageBox::Warning;
    case 0x40:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

const char* levelName(int level) {
    static const char* const names[] = {"Note", "Warning", "Error", "Grave error", "Failure"};
    return level >= 0 && level < 5 ? names[level] : "Failure";
}

// The report as three levels: the title, each context, the entries made in it.
QTreeWidget* reportTree(const std::string& title, const std::vector<hReportEntry>& entries) {
    auto* tree = new QTreeWidget;
    tree->setColumnCount(2);
    tree->setHeaderLabels({"Report", "Level"});
    auto* root = new QTreeWidgetItem(tree, {QString::fromStdString(title)});
    std::map<std::string, QTreeWidgetItem*> contexts;
    for (const hReportEntry& entry : entries) {
        QTreeWidgetItem*& context = contexts[entry.Path];
        if (!context)
            context = new QTreeWidgetItem(
                root, {QString::fromStdString(entry.Path.empty() ? "(project)" : entry.Path)});
        new QTreeWidgetItem(context, {QString::fromStdString(entry.Text), levelName(entry.Level)});
    }
    tree->expandAll();
    tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    return tree;
}

} // namespace

EMessageAnswer CQtUserInterface::AskMessage(const EMessageRequest& request) {
    if (!Interactive) return EUserInterface::AskMessage(request);
    QMessageBox box(iconOf(request.Icon), QString::fromStdString(request.Title),
                    QString::fromStdString(request.Text));
    std::vector<QAbstractButton*> buttons;
    for (size_t i = 0; i < request.Buttons.size(); ++i)
        buttons.push_back(
            box.addButton(QString::fromStdString(request.Labels[i]).remove('&'), QMessageBox::AcceptRole));
    if (request.DefaultIndex < buttons.size())
        box.setDefaultButton(static_cast<QPushButton*>(buttons[request.DefaultIndex]));
    if (!request.AlwaysText.empty())
        box.setCheckBox(new QCheckBox(QString::fromStdString(request.AlwaysText)));
    box.setWindowFlag(Qt::WindowStaysOnTopHint);
    box.exec();
    EMessageAnswer answer;
    for (size_t i = 0; i < buttons.size(); ++i)
        if (box.clickedButton() == buttons[i]) answer.Button = request.Buttons[i];
    if (!box.clickedButton() && request.DefaultIndex < request.Buttons.size())
        answer.Button = request.Buttons[request.DefaultIndex];
    answer.Always = box.checkBox() && box.checkBox()->isChecked();
    return answer;
}

QString CQtUserInterface::ToQtFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split('|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        if (!parts[i].isEmpty()) filters << parts[i];
    return filters.join(";;");
}

std::optional<std::string> CQtUserInterface::AskFile(const EFileDialogRequest& request) {
    if (!Interactive) return EUserInterface::AskFile(request);
    QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(request.Title),
                       QString::fromStdString(request.ProposedPath), ToQtFilter(request.Filter));
    dialog.setAcceptMode(request.Save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(request.Save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(QString::fromStdString(request.DefaultExtension));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().front().toStdString();
}

void CQtUserInterface::SetStatusText(const std::string& text) {
    if (StatusBar) StatusBar->showMessage(QString::fromStdString(text));
}

void CQtUserInterface::ShowReport(const std::string& title, int level,
                                  const std::vector<hReportEntry>& entries) {
    if (!Interactive) return EUserInterface::ShowReport(title, level, entries);
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle("qvrTessarine");
    dialog.resize(640, 360);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(reportTree(title, entries));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    layout->addWidget(buttons);
    dialog.exec();
}
