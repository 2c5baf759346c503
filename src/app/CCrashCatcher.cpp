#include "app/CCrashCatcher.h"

#include "foundation/EEnvironment.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/iDataBase.h"

#include <atomic>
#include <csignal>
#include <optional>

namespace {

constexpr const char* CrashTitle = "qvrCCrashCatcher V2.01 nevora works";
constexpr const char* CrashFileName = "---crashed-project---.tsp";

std::atomic<bool> crashing{false};
std::function<void()> beforeQuestion;

// A fatal signal: one crash save, then the signal's own end.
void onFatalSignal(int signalNumber) {
    if (!crashing.exchange(true)) CCrashCatcher::OfferCrashSave();
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

void installSignalHandlers() {
    for (int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        std::signal(signalNumber, onFatalSignal);
}

std::string askForPath(const std::string& proposed) {
    try {
        EFileDialogRequest request;
        request.ProposedPath = proposed;
        request.DefaultExtension = "tsp";
        request.Filter = "Files of \"qvrTessarine\" (*.tsp)|*.tsp|All files (*.*)|*.*|||";
        std::optional<std::string> chosen = EUserInterface::Get().AskFile(request);
        if (chosen && !chosen->empty()) return *chosen;
    } catch (...) {
        // A fault in the dialog leaves the proposed path.
    }
    return proposed;
}

bool saveProject(const std::string& path) {
    try {
        iDataBase database;
        return database.Save(path, DBMaskProject, DBFlagProgress, nullptr);
    } catch (...) {
        return false;
    }
}

} // namespace

std::string CCrashCatcher::ProposedPath() {
    return EEnvironment::PathPlusFile(EEnvironment::Get().CurrentDir, CrashFileName);
}

void CCrashCatcher::SetBeforeQuestion(std::function<void()> hook) {
    beforeQuestion = std::move(hook);
}

void CCrashCatcher::OfferCrashSave() {
    if (beforeQuestion) beforeQuestion();
    const std::string question =
        "FATAL PROGRAM TERMINATION.\n\nThis program crashed due to a fatal error.\nPlease contact nevora "
        "works to "
        "fix this problem.\n\nDo you want to try to save your data before\nthis program will be terminated ?";
    if (hMessageBox::Show(question, hMessageBox::YesNo | hMessageBox::IconStop, CrashTitle) != IDYES) return;
    const std::string proposed = ProposedPath();
    while (true) {
        std::string path = askForPath(proposed);
        if (saveProject(path)) {
            hMessageBox::Show(
                qvrFormat("Your data have been saved to \"%s\".\n\nPLEASE NOTE THAT THIS FILE MIGHT BE "
                          "CORRUPT AND UNUSEABLE.\nPLEASE TRY TO REPRODUCE YOUR CRASH AND SEND A "
                          "DETAILED\nERROR DESCRIPTION TO nevora works !",
                          path.c_str()),
                hMessageBox::OK | hMessageBox::IconInformation, CrashTitle);
            return;
        }
        // Cancel is the default, so that a run without a person gives up instead of retrying for ever.
        if (hMessageBox::Show("FAILED TO SAVE YOUR DATA !",
                              hMessageBox::RetryCancel | hMessageBox::IconStop | hMessageBox::DefaultSecond,
                              CrashTitle) != IDRETRY)
            return;
    }
}

int CCrashCatcher::Run(const std::function<int()>& loop) {
    installSignalHandlers();
    try {
        return loop();
    } catch (...) {
        if (!crashing.exchange(true)) OfferCrashSave();
        return 1;
    }
}
