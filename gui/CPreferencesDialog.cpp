#include "CPreferencesDialog.h"

#include "foundation/EPrefs.h"
#include "foundation/hMessageBox.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <climits>

namespace {

constexpr const char* Yes = "Yes";
constexpr const char* No = "No";

int bounded(long value) {
    return int(std::clamp(value, long(INT_MIN), long(INT_MAX)));
}

} // namespace

CPreferencesDialog::CPreferencesDialog(QWidget* parent) : QDialog(parent) {
    setObjectName("PreferencesDialog");
    setWindowTitle("Preferences");
    auto* tabs = new QTabWidget(this);
    for (iDataBaseSection* child = EPrefs::Get().FirstChild; child; child = child->Next)
        if (auto* section = dynamic_cast<EPrefsSection*>(child); section && !section->GetSettings().empty())
            tabs->addTab(makePage(*section), QString::fromStdString(section->Name));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* forget = buttons->addButton("&Forget message answers", QDialogButtonBox::ResetRole);
    connect(forget, &QPushButton::clicked, this, [] { hMessageBox::ClearAllAlways(); });
    connect(buttons, &QDialogButtonBox::accepted, this, &CPreferencesDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
}

QWidget* CPreferencesDialog::makePage(EPrefsSection& section) {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    for (const EPrefsSection::Setting& setting : section.GetSettings()) {
        const QString name = QString::fromStdString(setting.Name);
        const QString text = QString::fromStdString(section.GetText(setting.Name));
        QWidget* editor = nullptr;
        if (setting.Type == EPrefsSection::Setting::Kind::Flag) {
            auto* box = new QCheckBox(name, page);
            box->setChecked(text == Yes);
            form->addRow(QString(), box);
            editor = box;
        } else if (setting.Type == EPrefsSection::Setting::Kind::Number) {
            auto* spin = new QSpinBox(page);
            spin->setRange(bounded(setting.Minimum), bounded(setting.Maximum));
            spin->setValue(text.toInt());
            form->addRow(name + ":", spin);
            editor = spin;
        } else {
            auto* line = new QLineEdit(text, page);
            form->addRow(name + ":", line);
            editor = line;
        }
        editor->setObjectName(QString::fromStdString(section.Name) + "/" + name);
        Fields.push_back({&section, setting.Name, editor});
    }
    return page;
}

QWidget* CPreferencesDialog::FindField(const QString& section, const QString& key) const {
    return findChild<QWidget*>(section + "/" + key);
}

void CPreferencesDialog::accept() {
    for (const Field& field : Fields) {
        std::string text;
        if (auto* box = qobject_cast<QCheckBox*>(field.Editor))
            text = box->isChecked() ? Yes : No;
        else if (auto* spin = qobject_cast<QSpinBox*>(field.Editor))
            text = std::to_string(spin->value());
        else
            text = static_cast<QLineEdit*>(field.Editor)->text().toStdString();
        if (text != field.Section->GetText(field.Key)) field.Section->SetText(field.Key, text);
    }
    QDialog::accept();
}
