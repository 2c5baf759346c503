#pragma once
// The time control, apart from its window: the current frame of the object in
// view, stepping, jumps to the next and previous key, following the project's
// frame, playing by a timer and the options panel with its checks. The timer
// is the front end's: it starts and stops timers when asked and hands their
// ticks to OnTimer. Status texts go to the status line, the panel's
// complaints to message boxes. Main thread only, like every window.

#include "model/iElement.h"

#include <cstdint>
#include <memory>
#include <string>

class iProject;

class CDlgTimeCtrl : private iNotifier {
public:
    // The timer's direction, which is also its id.
    enum Direction : int { Stopped = 0, Backward = 1, Forward = 2 };
    enum class OptionField { FirstFrame, LastFrame, PlayStep, BigStep, FramesPerSecond };
    static constexpr long PlayingFramesPerSecond = 25;

    // The fields of the options panel while it is open.
    struct Options {
        bool limitRange = false;
        long rangeFirst = 0;
        long rangeLast = 0;
        bool followObject = true;
        bool stayOnFrame = false;
        long playStep = 1;
        long bigStep = 100;
        long framesPerSecond = PlayingFramesPerSecond;
        // The second option only counts while the frame doesn't follow the project.
        bool IsStayOnFrameAvailable() const { return !followObject; }
    };

    // What the window does for the control; the defaults do nothing.
    class FrontEnd {
    public:
        virtual ~FrontEnd() = default;
        virtual void Beep() {}
        // Frame, slider and the controls' enabled state are to be shown anew.
        virtual void Refresh() {}
        virtual void SetTimer(unsigned /*id*/, long /*milliseconds*/) {}
        virtual void KillTimer(unsigned /*id*/) {}
        // Throws away the timer's ticks that are waiting.
        virtual void DiscardTimerTicks() {}
        virtual void FocusOption(OptionField /*field*/) {}
    };

    explicit CDlgTimeCtrl(iProject& project);
    ~CDlgTimeCtrl() override;

    // Null restores the hook that does nothing; the caller keeps ownership.
    void SetFrontEnd(FrontEnd* frontEnd);
    // The object in view (null: none).
    void SetObject(iElement* element);
    iElement* GetObject() const { return static_cast<iElement*>(GetTarget()); }

    long GetFirstFrame() const;
    long GetLastFrame() const;
    long GetSliderPosition() const { return currentFrame - GetFirstFrame(); }
    bool AreControlsEnabled() const { return GetObject() != nullptr; }

    // --- Moving.
    void GoToFrame(long frame);
    void GoToFirstFrame() { GoToFrame(GetFirstFrame()); }
    void GoToLastFrame() { GoToFrame(GetLastFrame()); }
    // Plus or minus frames; a step below 0 gives 0.
    void Step(long frames);
    void BigStep(bool forward) { Step(forward ? bigStep : -bigStep); }
    // The edit box's text; a bad number beeps.
    void OnFrameTyped(const std::string& text);
    // The project's frame changed: followed when followObject is set, and the range grows to it.
    void OnProjectFrameChanged(long frame);
    void NextKey();
    void PreviousKey();

    // --- Playing.
    void Play(int direction);
    void OnTimer(unsigned id);
    // "2nd ", "3th ", "21st " and so on; empty for 1.
    static std::string OrdinalText(long n);

    // --- The options panel.
    Options& OpenOptions();
    Options* GetOptionsPanel() const { return optionsPanel.get(); }
    // Checks the fields and takes them over; false keeps the panel open on the field at fault.
    bool CloseOptions();

    bool limitRange = false;
    uint32_t rangeFirst = 0;
    uint32_t rangeLast;
    bool followObject = true;
    // Kept and shown; it has no effect of its own.
    bool stayOnFrame = false;
    long playStep = 1;
    long bigStep = 100;
    long framesPerSecond = 0;
    int timerDirection = Stopped;
    long currentFrame = 0;

private:
    iTargetGoneAnswer OnTargetDestroyed() override;
    // Clamps the frame into the range, stops playing without an object and shows it all.
    void refresh();
    void killTimer();
    void stopPlaying();
    bool checkOptions(const Options& options);

    std::unique_ptr<Options> optionsPanel;
    iProject& Project;
    FrontEnd* Front;
};
