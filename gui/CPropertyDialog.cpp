#include "CPropertyDialog.h"

#include "CViewRenderer.h"
#include "model/iElement.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QRegularExpression>
#include <QVBoxLayout>

CPropertyDialog::CPropertyDialog(iElement& element, long frame, QWidget* parent)
    : QDialog(parent), Session(element), Form(element, frame) {
    setObjectName("PropertyDialog");
    setWindowTitle(QString("%1 Properties").arg(QString::fromStdString(element.GetName())));
    auto* form = new QFormLayout;
    const std::vector<hPropertyField>& fields = Form.GetFields();
    for (size_t i = 0; i < fields.size(); ++i) {
        const QString label = QString::fromStdString(fields[i].Label);
        if (fields[i].Type == hPropertyField::Kind::Flag) {
            auto* box = new QCheckBox(QString(label).remove(QRegularExpression(":$")), this);
            connect(box, &QCheckBox::toggled, this, [this, i] { commitField(i); });
            form->addRow(QString(), box);
            Editors.push_back(box);
        } else {
            auto* line = new QLineEdit(this);
            connect(line, &QLineEdit::editingFinished, this, [this, i] { commitField(i); });
            form->addRow(label, line);
            Editors.push_back(line);
        }
        Editors.back()->setObjectName(label);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &CPropertyDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CPropertyDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    refresh();
}

QWidget* CPropertyDialog::FindField(const QString& label) const {
    for (QWidget* editor : Editors)
        if (editor->objectName() == label) return editor;
    return nullptr;
}

QString CPropertyDialog::editorText(size_t index) const {
    if (auto* box = qobject_cast<QCheckBox*>(Editors[index])) return box->isChecked() ? "1" : "0";
    return static_cast<QLineEdit*>(Editors[index])->text();
}

bool CPropertyDialog::commitField(size_t index) {
    const hPropertyField& field = Form.GetFields()[index];
    const std::string text = editorText(index).toStdString();
    if (Committing || text == field.Text()) return true;
    Committing = true;
    CViewRenderer::Get().WaitIdle();
    const bool accepted = field.Commit(text);
    refresh();
    Committing = false;
    if (!accepted) Editors[index]->setFocus();
    return accepted;
}

void CPropertyDialog::refresh() {
    const std::vector<hPropertyField>& fields = Form.GetFields();
    for (size_t i = 0; i < fields.size(); ++i) {
        const QString text = QString::fromStdString(fields[i].Text());
        QSignalBlocker quiet(Editors[i]);
        if (auto* box = qobject_cast<QCheckBox*>(Editors[i]))
            box->setChecked(text == "1");
        else
            static_cast<QLineEdit*>(Editors[i])->setText(text);
    }
}

void CPropertyDialog::accept() {
    for (size_t i = 0; i < Editors.size(); ++i)
        if (!commitField(i)) return;
    CViewRenderer::Get().WaitIdle();
    Session.Commit();
    QDialog::accept();
}

void CPropertyDialog::reject() {
    CViewRenderer::Get().WaitIdle();
    Session.Cancel();
    QDialog::reject();
}
