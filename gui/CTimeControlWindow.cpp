#include "CTimeControlWindow.h"

#include "CObjectViewWindow.h"
#include "CViewRenderer.h"
#include "foundation/EUserInterface.h"
#include "model/iProject.h"

#include <QApplication>
#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

iProject& project() {
    return iProject::GetStandard();
}

QSpinBox* numberField(QWidget* parent) {
    auto* field = new QSpinBox(parent);
    field->setMaximumWidth(110);
    // The control checks the bounds and says which ones hold.
    field->setRange(-1, 100000000);
    return field;
}

} // namespace

CTimeControlWindow::CTimeControlWindow(QWidget* parent)
    : QWidget(parent), Control(project()), Slider(new QSlider(Qt::Horizontal, this)),
      FrameField(new QLineEdit(this)), RateLabel(new QLabel(this)) {
    setObjectName("TimeControl");
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    addButton(buttons, "|<", "To the first frame", [this] { Control.GoToFirstFrame(); });
    addButton(buttons, "<<", "Back by the big step", [this] { Control.BigStep(false); });
    addButton(buttons, "<", "Back by one frame", [this] { Control.Step(-1); });
    addButton(buttons, "<K", "To the previous key of the object in view", [this] { Control.PreviousKey(); });
    addButton(buttons, "<|", "Play backward", [this] { Control.Play(CDlgTimeCtrl::Backward); });
    addButton(buttons, "|>", "Play forward", [this] { Control.Play(CDlgTimeCtrl::Forward); });
    addButton(buttons, "K>", "To the next key of the object in view", [this] { Control.NextKey(); });
    addButton(buttons, ">", "On by one frame", [this] { Control.Step(1); });
    addButton(buttons, ">>", "On by the big step", [this] { Control.BigStep(true); });
    addButton(buttons, ">|", "To the last frame", [this] { Control.GoToLastFrame(); });
    FrameField->setObjectName("Frame");
    FrameField->setMaximumWidth(80);
    buttons->addWidget(FrameField);
    QPushButton* options =
        addButton(buttons, "...", "Options: range, steps and rate", [this] { toggleOptions(); });
    options->setCheckable(true);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(buttons);
    layout->addWidget(Slider);
    layout->addWidget(RateLabel);
    OptionsPanel = makeOptionsPanel();
    layout->addWidget(OptionsPanel);
    OptionsPanel->hide();
    connect(FrameField, &QLineEdit::returnPressed, this,
            [this] { Control.OnFrameTyped(FrameField->text().toStdString()); });
    connect(Slider, &QSlider::valueChanged, this, [this](int position) {
        if (position != Control.GetSliderPosition()) Control.GoToFrame(Control.GetFirstFrame() + position);
    });
    connect(&PlayTimer, &QTimer::timeout, this, [this] {
        ++Rate.Ticks;
        Control.OnTimer(TimerId);
        tellRate();
    });
    connect(&ObjectPoll, &QTimer::timeout, this, &CTimeControlWindow::UpdateObject);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (auto* view = qobject_cast<CObjectViewWindow*>(now)) LastClicked = view;
    });
    Control.SetFrontEnd(this);
    ObjectPoll.start(250);
    UpdateObject();
    Refresh();
}

CTimeControlWindow::~CTimeControlWindow() {
    Control.SetFrontEnd(nullptr);
}

QPushButton* CTimeControlWindow::addButton(QLayout* layout, const QString& name, const QString& tip,
                                           const std::function<void()>& action) {
    auto* button = new QPushButton(name, this);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setStatusTip(tip);
    button->setMaximumWidth(36);
    connect(button, &QPushButton::clicked, this, action);
    layout->addWidget(button);
    return button;
}

QPushButton* CTimeControlWindow::GetButton(const QString& name) const {
    return findChild<QPushButton*>(name);
}

// ---------------------------------------------------------------- the object and its views

std::vector<CObjectViewWindow*> CTimeControlWindow::GetViews() const {
    const QList<CObjectViewWindow*> found = window()->findChildren<CObjectViewWindow*>();
    return {found.begin(), found.end()};
}

void CTimeControlWindow::UpdateObject() {
    iElement* element = nullptr;
    const std::vector<CObjectViewWindow*> views = GetViews();
    if (LastClicked && std::find(views.begin(), views.end(), LastClicked.data()) != views.end())
        element = LastClicked->GetView().GetElement();
    for (auto each = views.begin(); !element && each != views.end(); ++each)
        element = (*each)->GetView().GetElement();
    if (!element) element = project().GetFirstSelected();
    if (element != Control.GetObject()) return Control.SetObject(element);
    // A view opened since shows the current frame too.
    showFrameInViews();
}

void CTimeControlWindow::showFrameInViews() {
    project().SetCurrentFrame(Control.currentFrame);
    for (CObjectViewWindow* view : GetViews()) {
        connect(view, &CObjectViewWindow::Painted, this, &CTimeControlWindow::onPainted,
                Qt::UniqueConnection);
        view->GetFrame().SetFrame(Control.currentFrame);
    }
}

// ---------------------------------------------------------------- the control's front end

void CTimeControlWindow::Beep() {
    QApplication::beep();
}

void CTimeControlWindow::Refresh() {
    const bool enabled = Control.AreControlsEnabled();
    for (QPushButton* button : findChildren<QPushButton*>())
        if (button->objectName() != "...") button->setEnabled(enabled);
    Slider->setEnabled(enabled);
    FrameField->setEnabled(enabled);
    {
        const QSignalBlocker quiet(Slider);
        Slider->setRange(0, int(std::max(Control.GetLastFrame() - Control.GetFirstFrame(), 0L)));
        Slider->setValue(int(Control.GetSliderPosition()));
    }
    FrameField->setText(QString::number(Control.currentFrame));
    GetButton("|>")->setDown(Control.timerDirection == CDlgTimeCtrl::Forward);
    GetButton("<|")->setDown(Control.timerDirection == CDlgTimeCtrl::Backward);
    showFrameInViews();
}

void CTimeControlWindow::SetTimer(unsigned id, long milliseconds) {
    TimerId = id;
    Rate = {};
    PlayClock.start();
    LastTold = 0;
    PlayTimer.start(int(milliseconds));
}

void CTimeControlWindow::KillTimer(unsigned) {
    if (!PlayTimer.isActive()) return;
    PlayTimer.stop();
    Rate.Seconds = double(PlayClock.elapsed()) / 1000.0;
    LastTold = 0;
    tellRate();
    emit PlayStopped();
}

void CTimeControlWindow::FocusOption(CDlgTimeCtrl::OptionField field) {
    QSpinBox* fields[] = {RangeFirst, RangeLast, PlayStep, BigStep, FramesPerSecond};
    fields[size_t(field)]->setFocus();
}

// ---------------------------------------------------------------- the rate reached

void CTimeControlWindow::onPainted() {
    if (PlayTimer.isActive()) ++Rate.Shown;
}

CTimeControlWindow::PlayRate CTimeControlWindow::GetPlayRate() const {
    PlayRate rate = Rate;
    if (PlayTimer.isActive()) rate.Seconds = double(PlayClock.elapsed()) / 1000.0;
    const long views = std::max(long(GetViews().size()), 1L);
    rate.Shown /= views;
    return rate;
}

void CTimeControlWindow::tellRate() {
    if (PlayTimer.isActive() && PlayClock.elapsed() - LastTold < 1000) return;
    LastTold = PlayClock.elapsed();
    const PlayRate rate = GetPlayRate();
    const QString text =
        QString("%1 frames/s shown, %2 dropped").arg(rate.FramesPerSecond(), 0, 'f', 1).arg(rate.Dropped());
    RateLabel->setText(text);
    EUserInterface::Get().SetStatusText(text.toStdString());
}

// ---------------------------------------------------------------- the options panel

QWidget* CTimeControlWindow::makeOptionsPanel() {
    auto* panel = new QWidget(this);
    LimitRange = new QCheckBox("&Limit to the range", panel);
    FollowObject = new QCheckBox("&Follow the object's frame", panel);
    StayOnFrame = new QCheckBox("&Stay on the frame", panel);
    RangeFirst = numberField(panel);
    RangeLast = numberField(panel);
    LimitRange->setObjectName("LimitRange");
    RangeFirst->setObjectName("RangeFirst");
    RangeLast->setObjectName("RangeLast");
    PlayStep = numberField(panel);
    BigStep = numberField(panel);
    FramesPerSecond = numberField(panel);
    auto* form = new QFormLayout(panel);
    form->addRow(LimitRange);
    form->addRow("First frame:", RangeFirst);
    form->addRow("Last frame:", RangeLast);
    form->addRow(FollowObject);
    form->addRow(StayOnFrame);
    form->addRow("Play every nth frame:", PlayStep);
    form->addRow("Big step:", BigStep);
    form->addRow("Frames per second:", FramesPerSecond);
    connect(FollowObject, &QCheckBox::toggled, StayOnFrame,
            [this](bool follow) { StayOnFrame->setEnabled(!follow); });
    return panel;
}

void CTimeControlWindow::fillOptions() {
    const CDlgTimeCtrl::Options& options = Control.OpenOptions();
    LimitRange->setChecked(options.limitRange);
    RangeFirst->setValue(int(options.rangeFirst));
    RangeLast->setValue(int(options.rangeLast));
    FollowObject->setChecked(options.followObject);
    StayOnFrame->setChecked(options.stayOnFrame);
    StayOnFrame->setEnabled(options.IsStayOnFrameAvailable());
    PlayStep->setValue(int(options.playStep));
    BigStep->setValue(int(options.bigStep));
    FramesPerSecond->setValue(int(options.framesPerSecond));
}

void CTimeControlWindow::readOptions() {
    CDlgTimeCtrl::Options& options = Control.OpenOptions();
    options.limitRange = LimitRange->isChecked();
    options.rangeFirst = RangeFirst->value();
    options.rangeLast = RangeLast->value();
    options.followObject = FollowObject->isChecked();
    options.stayOnFrame = StayOnFrame->isChecked();
    options.playStep = PlayStep->value();
    options.bigStep = BigStep->value();
    options.framesPerSecond = FramesPerSecond->value();
}

void CTimeControlWindow::toggleOptions() {
    QPushButton* button = GetButton("...");
    if (!OptionsPanel->isVisible()) {
        fillOptions();
        OptionsPanel->show();
        button->setChecked(true);
        return;
    }
    readOptions();
    const bool closed = Control.CloseOptions();
    OptionsPanel->setVisible(!closed);
    button->setChecked(!closed);
}
