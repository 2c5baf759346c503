#include "views/CDlgTimeCtrl.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "model/iProject.h"

#include <algorithm>
#include <array>

namespace {

enum : EStringId {
    textRangeReversed = 46800,
    textLastFrameReached = 46801,
    textNoNextKey = 46802,
    textFirstFrameReached = 46803,
    textNoPreviousKey = 46804,
    textStopped = 46805,
    textPlaying = 46806,
    textOrdinalN = 46807,
    textOrdinalTh = 46808,
    textOrdinalSt = 46809,
    textOrdinalNd = 46810,
    textOrdinalRd = 46811,
    textOutOfBounds = 46812
};

// A number field of the options panel with its bounds.
struct Bounded {
    CDlgTimeCtrl::OptionField Field;
    long CDlgTimeCtrl::Options::*Member;
    long Low;
    long High;
};

constexpr std::array<Bounded, 5> boundedFields = {{
    {CDlgTimeCtrl::OptionField::FirstFrame, &CDlgTimeCtrl::Options::rangeFirst, 0, 1000000},
    {CDlgTimeCtrl::OptionField::LastFrame, &CDlgTimeCtrl::Options::rangeLast, 0, 10000000},
    {CDlgTimeCtrl::OptionField::PlayStep, &CDlgTimeCtrl::Options::playStep, 1, 1000},
    {CDlgTimeCtrl::OptionField::BigStep, &CDlgTimeCtrl::Options::bigStep, 1, 1000},
    {CDlgTimeCtrl::OptionField::FramesPerSecond, &CDlgTimeCtrl::Options::framesPerSecond, 1, 50},
}};

CDlgTimeCtrl::FrontEnd& silentFrontEnd() {
    static CDlgTimeCtrl::FrontEnd frontEnd;
    return frontEnd;
}

void setStatus(const std::string& text) {
    EUserInterface::Get().SetStatusText(text);
}

std::string keyMessage(EStringId text, const iElement& element) {
    return qvrFormatMessage(EStringTable::Get(text), {element.GetName()});
}

} // namespace

CDlgTimeCtrl::CDlgTimeCtrl(iProject& project)
    : rangeLast(static_cast<uint32_t>(std::max(project.GetFrameLength() - 1, 0L))), Project(project),
      Front(&silentFrontEnd()) {}

CDlgTimeCtrl::~CDlgTimeCtrl() {
    killTimer();
}

void CDlgTimeCtrl::SetFrontEnd(FrontEnd* frontEnd) {
    Front = frontEnd ? frontEnd : &silentFrontEnd();
}

void CDlgTimeCtrl::SetObject(iElement* element) {
    if (element != GetObject()) SetTarget(element);
    refresh();
}

iTargetGoneAnswer CDlgTimeCtrl::OnTargetDestroyed() {
    refresh();
    return iTargetGoneAnswer::Detach;
}

long CDlgTimeCtrl::GetFirstFrame() const {
    return limitRange ? static_cast<long>(rangeFirst) : 0;
}

long CDlgTimeCtrl::GetLastFrame() const {
    return limitRange ? static_cast<long>(rangeLast) : Project.GetFrameLength() - 1;
}

void CDlgTimeCtrl::refresh() {
    currentFrame = std::max(GetFirstFrame(), std::min(currentFrame, GetLastFrame()));
    if (!GetObject()) killTimer();
    Front->Refresh();
}

// ---------------------------------------------------------------- moving

void CDlgTimeCtrl::GoToFrame(long frame) {
    currentFrame = frame;
    refresh();
}

void CDlgTimeCtrl::Step(long frames) {
    GoToFrame(std::max(currentFrame + frames, 0L));
}

void CDlgTimeCtrl::OnFrameTyped(const std::string& text) {
    long frame = 0;
    if (qvrParseLong(qvrTrim(text), frame))
        currentFrame = frame;
    else
        Front->Beep();
    refresh();
}

void CDlgTimeCtrl::OnProjectFrameChanged(long frame) {
    if (!followObject) return;
    currentFrame = frame;
    if (limitRange) {
        const uint32_t rangeFrame = static_cast<uint32_t>(std::max(frame, 0L));
        rangeFirst = std::min(rangeFirst, rangeFrame);
        rangeLast = std::max(rangeLast, rangeFrame);
    }
    refresh();
}

void CDlgTimeCtrl::NextKey() {
    const iElement* element = GetObject();
    if (!element) return refresh();
    const long from = currentFrame + 1;
    if (from > GetLastFrame()) return setStatus(EStringTable::Load(textLastFrameReached));
    const iActiveKey* best = nullptr;
    for (const iActiveValue* value = element->GetFirstValue(); value; value = value->GetNextValue()) {
        const iActiveKey* key = value->GetKey(value->IndexAtOrAfter(from));
        if (key && (!best || key->frame < best->frame)) best = key;
        if (best && best->frame == from) break;
    }
    if (!best) return setStatus(keyMessage(textNoNextKey, *element));
    GoToFrame(best->frame);
}

void CDlgTimeCtrl::PreviousKey() {
    const iElement* element = GetObject();
    if (!element) return refresh();
    if (currentFrame <= GetFirstFrame()) return setStatus(EStringTable::Load(textFirstFrameReached));
    const long from = currentFrame - 1;
    const iActiveKey* best = nullptr;
    for (const iActiveValue* value = element->GetFirstValue(); value; value = value->GetNextValue()) {
        const iActiveKey* key = value->GetKey(value->IndexAtOrBefore(from));
        if (key && (!best || key->frame > best->frame)) best = key;
        if (best && best->frame == from) break;
    }
    if (!best) return setStatus(keyMessage(textNoPreviousKey, *element));
    GoToFrame(best->frame);
}

// ---------------------------------------------------------------- playing

void CDlgTimeCtrl::killTimer() {
    if (timerDirection == Stopped) return;
    Front->KillTimer(static_cast<unsigned>(timerDirection));
    timerDirection = Stopped;
}

void CDlgTimeCtrl::stopPlaying() {
    if (timerDirection == Stopped) return;
    killTimer();
    refresh();
    setStatus(EStringTable::Load(textStopped));
}

void CDlgTimeCtrl::Play(int direction) {
    if (direction == Stopped || direction == timerDirection) return stopPlaying();
    killTimer();
    if (framesPerSecond == 0) framesPerSecond = PlayingFramesPerSecond;
    timerDirection = direction;
    Front->SetTimer(static_cast<unsigned>(direction), 1000 / framesPerSecond);
    setStatus(
        qvrFormat(EStringTable::Load(textPlaying).c_str(), framesPerSecond, OrdinalText(playStep).c_str()));
}

void CDlgTimeCtrl::OnTimer(unsigned id) {
    Front->DiscardTimerTicks();
    long frame = currentFrame;
    if (id == Forward) {
        if (frame >= GetLastFrame()) return stopPlaying();
        frame = std::min(frame + playStep, GetLastFrame());
    } else if (id == Backward) {
        if (frame <= GetFirstFrame()) return stopPlaying();
        frame = frame - GetFirstFrame() < playStep ? GetFirstFrame() : frame - playStep;
    } else {
        Front->KillTimer(id);
        return refresh();
    }
    GoToFrame(frame);
}

std::string CDlgTimeCtrl::OrdinalText(long n) {
    if (n == 0) return EStringTable::Load(textOrdinalN);
    if (n == 1) return {};
    EStringId text = textOrdinalTh;
    const long lastTwo = n % 100;
    if (lastTwo < 3 || lastTwo > 20) {
        switch (n % 10) {
        case 1:
            text = textOrdinalSt;
            break;
        case 2:
            text = textOrdinalNd;
            break;
        case 3:
            text = textOrdinalRd;
            break;
        default:
            break;
        }
    }
    return qvrFormat(EStringTable::Load(text).c_str(), n);
}

// ---------------------------------------------------------------- options

CDlgTimeCtrl::Options& CDlgTimeCtrl::OpenOptions() {
    if (!optionsPanel) {
        optionsPanel = std::make_unique<Options>(Options{
            limitRange, static_cast<long>(rangeFirst), static_cast<long>(rangeLast), followObject,
            stayOnFrame, playStep, bigStep, framesPerSecond == 0 ? PlayingFramesPerSecond : framesPerSecond});
    }
    return *optionsPanel;
}

bool CDlgTimeCtrl::checkOptions(const Options& options) {
    for (const Bounded& bounded : boundedFields) {
        const long value = options.*bounded.Member;
        if (value >= bounded.Low && value <= bounded.High) continue;
        hMessageBox::Show(qvrFormat(EStringTable::Load(textOutOfBounds).c_str(), bounded.Low, bounded.High),
                          hMessageBox::OK | hMessageBox::IconExclamation, "qvrTessarine");
        Front->FocusOption(bounded.Field);
        return false;
    }
    if (options.limitRange && options.rangeLast < options.rangeFirst) {
        hMessageBox::Show(EStringTable::Load(textRangeReversed),
                          hMessageBox::OK | hMessageBox::IconExclamation, "qvrTessarine");
        Front->FocusOption(OptionField::LastFrame);
        return false;
    }
    return true;
}

bool CDlgTimeCtrl::CloseOptions() {
    if (!optionsPanel) return true;
    const Options& options = *optionsPanel;
    if (!checkOptions(options)) return false;
    limitRange = options.limitRange;
    rangeFirst = static_cast<uint32_t>(options.rangeFirst);
    rangeLast = static_cast<uint32_t>(options.rangeLast);
    followObject = options.followObject;
    stayOnFrame = options.stayOnFrame;
    playStep = options.playStep;
    bigStep = options.bigStep;
    framesPerSecond = options.framesPerSecond;
    optionsPanel.reset();
    refresh();
    return true;
}
