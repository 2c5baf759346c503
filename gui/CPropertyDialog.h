#pragma once
// The property dialog of any object: one row per field of the object's
// property form, drawn as a line of text or a check box. A field is checked
// when it loses the focus; a refusal has shown its text, and the field gets
// its old text and the focus back. OK enters everything changed as one step
// of the undo chain; Cancel puts the object back as it was.

#include "model/hPropertySession.h"
#include "objects/hPropertyForm.h"

#include <QDialog>

#include <vector>

class QWidget;
class iElement;

class CPropertyDialog : public QDialog {
    Q_OBJECT
public:
    CPropertyDialog(iElement& element, long frame, QWidget* parent = nullptr);

    // The editor of the field with the label; null when there is none.
    QWidget* FindField(const QString& label) const;

    void accept() override;
    void reject() override;

private:
    // Checks the field's present text; false after a refusal.
    bool commitField(size_t index);
    // Shows every field's text as the object has it now.
    void refresh();
    QString editorText(size_t index) const;

    hPropertySession Session;
    hPropertyForm Form;
    std::vector<QWidget*> Editors;
    bool Committing = false;
};
