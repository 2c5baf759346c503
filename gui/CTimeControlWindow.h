#pragma once
// The time control's window, docked in the main window: buttons to the first
// and last frame, big and single steps, the previous and next key of the
// object in view, playing backward and forward, a slider, the frame field and
// the options panel. The object in view is that of the object view last
// clicked, else of the first view, else the first selected object. Every
// object view of the main window shows the current frame. While playing, the
// rate at which the views show new pictures goes to the status line: a view
// that can't keep up skips frames rather than fall behind.

#include "views/CDlgTimeCtrl.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

class CObjectViewWindow;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QSpinBox;

class CTimeControlWindow : public QWidget, public CDlgTimeCtrl::FrontEnd {
    Q_OBJECT
public:
    // What a play has reached so far.
    struct PlayRate {
        long Ticks = 0;
        long Shown = 0;
        double Seconds = 0.0;
        double FramesPerSecond() const { return Seconds > 0.0 ? double(Shown) / Seconds : 0.0; }
        long Dropped() const { return std::max(Ticks - Shown, 0L); }
    };

    explicit CTimeControlWindow(QWidget* parent = nullptr);
    ~CTimeControlWindow() override;

    CDlgTimeCtrl& GetControl() { return Control; }
    PlayRate GetPlayRate() const;
    QPushButton* GetButton(const QString& name) const;
    QSlider& GetSlider() const { return *Slider; }
    QLineEdit& GetFrameField() const { return *FrameField; }
    // The object views of the main window.
    std::vector<CObjectViewWindow*> GetViews() const;
    // Finds the object in view anew; every view shows the current frame.
    void UpdateObject();

    void Beep() override;
    void Refresh() override;
    void SetTimer(unsigned id, long milliseconds) override;
    void KillTimer(unsigned id) override;
    void FocusOption(CDlgTimeCtrl::OptionField field) override;

signals:
    // A play ended, by its end, a press or the loss of its object.
    void PlayStopped();

private:
    QPushButton* addButton(class QLayout* layout, const QString& name, const QString& tip,
                           const std::function<void()>& action);
    QWidget* makeOptionsPanel();
    void toggleOptions();
    void fillOptions();
    void readOptions();
    void showFrameInViews();
    void onPainted();
    void tellRate();

    CDlgTimeCtrl Control;
    QSlider* Slider;
    QLineEdit* FrameField;
    QLabel* RateLabel;
    QWidget* OptionsPanel;
    QCheckBox* LimitRange;
    QCheckBox* FollowObject;
    QCheckBox* StayOnFrame;
    QSpinBox* RangeFirst;
    QSpinBox* RangeLast;
    QSpinBox* PlayStep;
    QSpinBox* BigStep;
    QSpinBox* FramesPerSecond;
    QTimer PlayTimer;
    QTimer ObjectPoll;
    QPointer<CObjectViewWindow> LastClicked;
    QElapsedTimer PlayClock;
    PlayRate Rate;
    unsigned TimerId = 0;
    qint64 LastTold = 0;
};
