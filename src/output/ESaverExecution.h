#pragma once
// The execution dialog of a saver's render run, apart from the window: it
// owns the run, starts and stops it, keeps the state, texts and figures that
// the window shows, collects the threads' lines and writes the render log.
// This class is the standard saver's dialog; another saver's dialog derives
// from it with its own texts and run. The desktop dialog and `qvr render` both drive it the same way:
// Open, then DispatchMessages whenever a message was posted (Wait or the
// View's Wake say so) and OnTimer once a second, and the buttons.
//
// Threads: everything here belongs to the window thread, except that the
// render threads post messages and lines into the dialog's mailbox, and the
// View's Wake may be called from any thread.

#include "output/iSaverSetup.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

class iSaverWorkData;
class isvrSaver;
class isvrSaverRunWindow;

class ESaverExecution {
public:
    enum State : int {
        StateNoThreads = 0,
        StateStarting = 1, // launched, none has reported yet
        StateRunning = 2,
        StateStopping = 3, // stop sent
        StateOver = 4
    };
    enum class Sound { Exclamation, Beep };
    // A text line posted by a render thread.
    static constexpr unsigned MessageTexts = 0x414;
    static constexpr unsigned long TimerMs = 1000;
    static constexpr size_t ViewLineLimit = 200;
    static constexpr unsigned long FlushLockMs = 500;

    // What the window does for the dialog.
    class View {
    public:
        virtual ~View() = default;
        // A message was posted: DispatchMessages should run soon on the
        // window thread. Called from any thread, under the mailbox's lock: it
        // must return at once.
        virtual void Wake() {}
        // The state, the texts or the figures changed.
        virtual void Changed() {}
        // The message view: lines are appended at the end and dropped from the front.
        virtual void AppendLine(const std::string& line) = 0;
        virtual void RemoveFirstLines(size_t count) = 0;
        virtual void PlaySound(Sound sound) = 0;
        // The main window's placement is remembered before it is minimized.
        virtual void MinimizeMainWindow() = 0;
        virtual void RestoreMainWindow() = 0;
        // Closes the dialog's window.
        virtual void Close() = 0;
    };

    // What tells one saver's dialog from another's.
    struct Kind {
        const char* SaverClass;  // named in the render log's header
        const char* SettingsKey; // where the dialog keeps its settings
        const char* LineSubject; // what the numbers of the lines count: "Thread" or "Projector"
    };
    static const Kind StandardKind;

    // The run renders `saver` with `setup` (normally the saver's own).
    ESaverExecution(isvrSaver& saver, const iSaverSetup& setup, View& view);
    // Ends a run that still goes on.
    virtual ~ESaverExecution();
    ESaverExecution(const ESaverExecution&) = delete;
    ESaverExecution& operator=(const ESaverExecution&) = delete;

    // Creates the render log and starts the run.
    void Open();
    // Waits up to `timeoutMs` for a posted message; true when one is there.
    bool Wait(unsigned long timeoutMs);
    // Handles every message posted so far.
    void DispatchMessages();
    // Updates the figures.
    void OnTimer();
    // The one button, "&Abort" or "&Close", acting by state.
    void OnButton();
    // Sends the stop without asking, as the button does after its question.
    void SendStop();
    // The window's close button: the run is ended by force if need be, and the dialog closes.
    virtual void HardAbort();

    void SetWarningsOnly(bool warningsOnly);
    bool GetWarningsOnly() const;
    // While paused the lines stay in the mailbox.
    void SetPaused(bool paused) { Paused = paused; }

    State GetState() const { return CurrentState; }
    // The state's line, with its leading space.
    const std::string& GetStateText() const { return StateText; }
    const char* GetButtonText() const { return CurrentState == StateOver ? "&Close" : "&Abort"; }
    bool IsButtonEnabled() const { return CurrentState != StateNoThreads; }
    std::uint32_t GetProgressRange() const { return ProgressRange; }
    std::uint32_t GetProgressPosition() const { return ProgressPosition; }
    const std::string& GetCountsText() const { return CountsText; }
    const std::string& GetTimesText() const { return TimesText; }
    bool WasStopSent() const { return StopSent; }
    bool IsClosed() const { return Closed; }
    // The name of the render log; empty while none is written.
    const std::string& GetLogFile() const { return LogFile; }
    void GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                   std::uint32_t& remaining);
    // Frames whose pictures could not be written, however the run counted them.
    std::uint32_t GetSaveFailures();

    // Elapsed and remaining whole seconds; false before the run has started.
    bool GetTimes(long& elapsed, long& remaining);

    // The first two lines of a render log of the saver class, with the time of its creation.
    static std::string LogHeader(const char* saverClass, std::time_t created);
    // Whole seconds as "hh:mm:ss".
    static std::string ClockText(long seconds);

protected:
    // Makes the run for the window that its threads post to.
    using RunMaker = std::function<std::shared_ptr<iSaverWorkData>(std::shared_ptr<isvrSaverRunWindow>)>;

    ESaverExecution(const Kind& kind, RunMaker makeRun, const iSaverSetup& setup, View& view);

    // A message of the run that this class doesn't handle itself.
    virtual void onRunMessage(unsigned) {}
    // The run; null before Open.
    iSaverWorkData* getRun() const { return Work.get(); }
    const iSaverSetup& getSetup() const { return Setup; }
    View& getView() const { return TheView; }

private:
    class Mailbox;

    void createLog();
    void start();
    void setState(State state, std::string text);
    void onStarted();
    void onFinished();
    void updateFigures();
    // Moves the posted lines to the view and the log.
    void flushMessages();
    bool ask(const char* question);
    void closeDialog();
    void restoreMainWindow();

    const Kind& TheKind;
    RunMaker MakeRun;
    iSaverSetup Setup;
    View& TheView;
    std::shared_ptr<Mailbox> Messages;
    std::shared_ptr<iSaverWorkData> Work;

    State CurrentState = StateNoThreads;
    std::string StateText;
    std::string LogFile;
    bool StopSent = false;
    bool MainMinimized = false;
    bool Paused = false;
    bool Closed = false;
    bool RangeSet = false;
    std::uint32_t ProgressRange = 0;
    std::uint32_t ProgressPosition = 0;
    std::string CountsText;
    std::string TimesText;
    size_t ViewLines = 0;
};
