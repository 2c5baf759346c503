#pragma once
// The key edit panel of the curve view: the frame and the value of one key,
// typed. OK takes them as one step of undo; fields out of their bounds are
// refused with the reason shown in the panel and the status line, and the
// panel stays open.

#include "views/CSplineKeyEdit.h"

#include <QDialog>

class QLabel;
class QLineEdit;

class CKeyEditPanel : public QDialog {
    Q_OBJECT
public:
    CKeyEditPanel(iActiveValue& value, long index, QWidget* parent);

    QLineEdit* GetFrameField() const { return FrameField; }
    QLineEdit* GetValueField() const { return ValueField; }
    // The reason the last OK was refused; empty after one that was taken.
    QString GetComplaint() const;

    void accept() override;

signals:
    void Applied();

private:
    CSplineKeyEdit Edit;
    QLineEdit* FrameField;
    QLineEdit* ValueField;
    QLabel* Complaint;
};
