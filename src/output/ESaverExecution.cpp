#include "output/ESaverExecution.h"

#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrCRegKey.h"
#include "foundation/qvrCSyncObjects.h"
#include "foundation/qvrString.h"
#include "output/isvrSaverWorkData.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr const char* WarningsOnlyValue = "WarningsOnly";

std::string errorText(int error) {
    return std::strerror(error);
}

} // namespace

// Where the render threads post: the queue of messages and the list of lines,
// each under a lock of its own. It is shared with the run, so a thread that
// has to be given up still has a place to post to.
class ESaverExecution::Mailbox : public isvrSaverRunWindow {
public:
    explicit Mailbox(const char* subject) : Subject(subject) {}

    void PostMessage(Message message) override { post(message); }

    void Report(unsigned index, const std::string& text, int level) override {
        const long number = static_cast<long>(index) + 1;
        std::string line;
        if (level == LevelWarning)
            line = qvrFormat("%s #%02ld Warning: %s", Subject, number, text.c_str());
        else if (level == LevelError)
            line = qvrFormat("*** %s #%02ld ERROR: %s", Subject, number, text.c_str());
        else if (WarningsOnly)
            return;
        else
            line = qvrFormat("%s #%02ld: %s", Subject, number, text.c_str());
        {
            qvrCSingleLock lock(TextLock);
            lock.Lock();
            Texts.push_back(std::move(line));
        }
        post(MessageTexts);
    }

    void post(unsigned message) {
        std::lock_guard lock(Guard);
        Queue.push_back(message);
        if (Waker) Waker->Wake();
        Posted.notify_all();
    }

    bool Wait(unsigned long timeoutMs) {
        std::unique_lock lock(Guard);
        return Posted.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return !Queue.empty(); });
    }

    std::deque<unsigned> TakeAll() {
        std::lock_guard lock(Guard);
        return std::exchange(Queue, {});
    }

    void SetWaker(View* view) {
        std::lock_guard lock(Guard);
        Waker = view;
    }

    std::atomic<bool> WarningsOnly{false};
    // The lines, under the dialog's message lock.
    qvrCCriticalSection TextLock;
    std::vector<std::string> Texts;

private:
    const char* const Subject;
    std::mutex Guard;
    std::condition_variable Posted;
    std::deque<unsigned> Queue;
    View* Waker = nullptr;
};

const ESaverExecution::Kind ESaverExecution::StandardKind{"isvrSaver", "Dialogs\\Renderer\\Saver", "Thread"};

ESaverExecution::ESaverExecution(isvrSaver& saver, const iSaverSetup& setup, View& view)
    : ESaverExecution(
          StandardKind,
          [&saver](std::shared_ptr<isvrSaverRunWindow> window) {
              return isvrSaverWorkData::Create(saver, std::move(window));
          },
          setup, view) {}

ESaverExecution::ESaverExecution(const Kind& kind, RunMaker makeRun, const iSaverSetup& setup, View& view)
    : TheKind(kind), MakeRun(std::move(makeRun)), Setup(setup), TheView(view),
      Messages(std::make_shared<Mailbox>(kind.LineSubject)) {
    Messages->SetWaker(&TheView);
    StateText = " Initializing threads...";
}

ESaverExecution::~ESaverExecution() {
    if (Work) Work->Kill(5);
    Messages->SetWaker(nullptr);
}

void ESaverExecution::SetWarningsOnly(bool warningsOnly) {
    Messages->WarningsOnly = warningsOnly;
}

bool ESaverExecution::GetWarningsOnly() const {
    return Messages->WarningsOnly;
}

std::uint32_t ESaverExecution::GetSaveFailures() {
    return Work ? Work->GetSaveFailures() : 0;
}

void ESaverExecution::GetCounts(std::uint32_t& total, std::uint32_t& done, std::uint32_t& failed,
                                std::uint32_t& remaining) {
    total = done = failed = remaining = 0;
    if (Work) Work->GetCounts(total, done, failed, remaining);
}

bool ESaverExecution::GetTimes(long& elapsed, long& remaining) {
    std::time_t start = 0;
    long total = 0;
    return Work && Work->GetTimes(start, elapsed, remaining, total) != iSaverWorkData::TimesNotStarted;
}

std::string ESaverExecution::ClockText(long seconds) {
    return qvrFormat("%02ld:%02ld:%02ld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

// ---------------------------------------------------------------- opening

void ESaverExecution::Open() {
    qvrCRegKey settings;
    settings.Open(qvrCRegKey::Root(), TheKind.SettingsKey, qvrCRegKey::Access::OpenExisting);
    SetWarningsOnly(settings.GetBool(WarningsOnlyValue, false));
    if (Setup.LogKeep) createLog();
    start();
}

std::string ESaverExecution::LogHeader(const char* saverClass, std::time_t created) {
    char when[128] = {};
    std::tm local{};
    localtime_r(&created, &local);
    std::strftime(when, sizeof when, "%c", &local);
    return qvrFormat("qvrTessarine %s rendering log file:\r\nLog file created: %s\n\n", saverClass, when);
}

void ESaverExecution::createLog() {
    const std::string header = LogHeader(TheKind.SaverClass, std::time(nullptr));
    std::FILE* log = std::fopen(Setup.LogFile.c_str(), "wb");
    int error = log ? 0 : errno;
    if (log && std::fwrite(header.data(), 1, header.size(), log) != header.size()) error = errno;
    if (log && std::fclose(log) != 0 && error == 0) error = errno;
    if (error == 0) {
        LogFile = Setup.LogFile;
        return;
    }
    hMessageBox::Show(qvrFormat("ERROR CREATING LOFILE \"%s\": %s (logging disabled) !",
                                Setup.LogFile.c_str(), errorText(error).c_str()),
                      hMessageBox::OK | hMessageBox::IconStop, "");
}

void ESaverExecution::start() {
    Work = MakeRun(Messages);
    std::string problem;
    if (!Work->Start(Setup, problem)) {
        setState(StateOver, qvrFormat("Failed to start threads: %s !", problem.c_str()));
        return;
    }
    setState(StateStarting, "Threads are starting...");
    if (Setup.MiscMinimize) {
        TheView.MinimizeMainWindow();
        MainMinimized = true;
    }
}

void ESaverExecution::setState(State state, std::string text) {
    CurrentState = state;
    StateText = " " + text;
    TheView.Changed();
}

// ---------------------------------------------------------------- messages

bool ESaverExecution::Wait(unsigned long timeoutMs) {
    return Messages->Wait(timeoutMs);
}

void ESaverExecution::DispatchMessages() {
    for (unsigned message : Messages->TakeAll()) {
        switch (message) {
        case isvrSaverRunWindow::MessageStarted:
            onStarted();
            break;
        case isvrSaverRunWindow::MessageFinished:
            onFinished();
            break;
        case isvrSaverRunWindow::MessageProgress:
            updateFigures();
            break;
        case MessageTexts:
            flushMessages();
            break;
        default:
            onRunMessage(message);
            break;
        }
    }
}

void ESaverExecution::OnTimer() {
    updateFigures();
}

void ESaverExecution::onStarted() {
    if (CurrentState == StateStarting) setState(StateRunning, "Rendering in progress...");
    std::uint32_t total = 0;
    std::uint32_t done = 0;
    std::uint32_t failed = 0;
    std::uint32_t remaining = 0;
    GetCounts(total, done, failed, remaining);
    ProgressRange = total;
    RangeSet = true;
    TheView.Changed();
}

void ESaverExecution::onFinished() {
    setState(StateOver, StopSent ? "Aborted." : "Finished.");
    TheView.PlaySound(StopSent ? Sound::Beep : Sound::Exclamation);
    updateFigures();
    flushMessages();
    restoreMainWindow();
}

void ESaverExecution::updateFigures() {
    if (!Work) return;
    std::uint32_t total = 0;
    std::uint32_t done = 0;
    std::uint32_t failed = 0;
    std::uint32_t remaining = 0;
    Work->GetCounts(total, done, failed, remaining);
    if (!RangeSet) {
        ProgressRange = total;
        RangeSet = true;
    }
    ProgressPosition = done + failed;
    CountsText = qvrFormat(" Total number of frames: %ld; done: %ld (%ld error(s))", static_cast<long>(total),
                           static_cast<long>(done + failed), static_cast<long>(failed));
    std::time_t start = 0;
    long elapsed = 0;
    long left = 0;
    long all = 0;
    switch (Work->GetTimes(start, elapsed, left, all)) {
    case iSaverWorkData::TimesRunning:
        TimesText = " Time elapsed: " + ClockText(elapsed) + ", time remaining: " + ClockText(left) +
                    ", total: " + ClockText(all);
        break;
    case iSaverWorkData::TimesFinished:
        TimesText = "Finished - elapsed time: " + ClockText(elapsed);
        break;
    case iSaverWorkData::TimesNotStarted:
        break;
    }
    TheView.Changed();
}

void ESaverExecution::flushMessages() {
    if (Paused) return;
    qvrCSingleLock lock(Messages->TextLock);
    if (!lock.Lock(FlushLockMs)) return;
    if (ViewLines > ViewLineLimit) {
        TheView.RemoveFirstLines(ViewLineLimit);
        ViewLines -= ViewLineLimit;
    }
    std::vector<std::string>& texts = Messages->Texts;
    std::FILE* log = nullptr;
    if (!LogFile.empty()) {
        log = std::fopen(LogFile.c_str(), "ab");
        if (!log) {
            LogFile.clear();
            texts.push_back(qvrFormat("<ERROR OPENING LOGFILE: %s>", errorText(errno).c_str()));
        }
    }
    // Complaints about the log join the list while it is walked.
    for (size_t index = 0; index < texts.size(); ++index) {
        const std::string line = texts[index] + "\r\n";
        TheView.AppendLine(line);
        ++ViewLines;
        if (log && std::fwrite(line.data(), 1, line.size(), log) != line.size()) {
            texts.push_back(qvrFormat("<ERROR WRITING LOGFILE: %s>", errorText(errno).c_str()));
            std::fclose(log);
            log = nullptr;
            LogFile.clear();
        }
    }
    texts.clear();
    if (log && std::fclose(log) != 0) {
        LogFile.clear();
        texts.push_back(qvrFormat("<ERROR CLOSING LOGFILE: %s>", errorText(errno).c_str()));
    }
}

// ---------------------------------------------------------------- the buttons

bool ESaverExecution::ask(const char* question) {
    return hMessageBox::Show(question, hMessageBox::YesNo | hMessageBox::IconQuestion, "") == IDYES;
}

void ESaverExecution::SendStop() {
    StopSent = true;
    if (Work) Work->Stop();
    if (CurrentState == StateRunning) setState(StateStopping, "Aborting...");
}

void ESaverExecution::OnButton() {
    switch (CurrentState) {
    case StateNoThreads:
        TheView.PlaySound(Sound::Beep);
        break;
    case StateStarting:
        if (ask("The threads have not yet started.\nSend stop now ?")) SendStop();
        break;
    case StateRunning:
        if (ask("Are you sure you want\nto abort ?")) SendStop();
        break;
    case StateStopping:
        StopSent = true;
        if (!Work->Stop())
            hMessageBox::Show(
                "If the threads do not stop within an acceptable time,\nyou can use the incredible "
                "HARD-ABORT function\nby using the little close button in the upper right\ncorner "
                "of the window.",
                hMessageBox::OK | hMessageBox::IconInformation, "");
        break;
    case StateOver: {
        qvrCRegKey settings;
        if (settings.Open(qvrCRegKey::Root(), TheKind.SettingsKey))
            settings.SetBool(WarningsOnlyValue, GetWarningsOnly());
        closeDialog();
        break;
    }
    }
}

void ESaverExecution::HardAbort() {
    if (CurrentState != StateOver) StopSent = true;
    closeDialog();
}

void ESaverExecution::closeDialog() {
    if (Work) Work->Kill(5);
    DispatchMessages();
    if (CurrentState != StateOver) onFinished();
    flushMessages();
    restoreMainWindow();
    Closed = true;
    TheView.Close();
}

void ESaverExecution::restoreMainWindow() {
    if (!MainMinimized) return;
    MainMinimized = false;
    TheView.RestoreMainWindow();
}
