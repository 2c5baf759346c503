#pragma once
// The preferences: one page per section of the preference files, one field
// per key (a check box for a flag, a number box within the key's limits, a
// line of text), and the command that forgets every "Always" answer. OK
// gives every changed key to its section at once; the files are written
// when the program ends.

#include <QDialog>

#include <vector>

class EPrefsSection;
class QWidget;

class CPreferencesDialog : public QDialog {
    Q_OBJECT
public:
    explicit CPreferencesDialog(QWidget* parent = nullptr);

    // The editor of the key in the section; null when there is none.
    QWidget* FindField(const QString& section, const QString& key) const;

    void accept() override;

private:
    struct Field {
        EPrefsSection* Section;
        std::string Key;
        QWidget* Editor;
    };
    QWidget* makePage(EPrefsSection& section);

    std::vector<Field> Fields;
};
