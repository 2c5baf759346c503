#include "foundation/EUserInterface.h"

#include "foundation/qvrTrace.h"

#include <atomic>
#include <cstdio>

namespace {
std::atomic<EUserInterface*> installedHook{nullptr};
}

EMessageAnswer EUserInterface::AskMessage(const EMessageRequest& request) {
    std::fprintf(stderr, "%s%s%s\n", request.Title.c_str(), request.Title.empty() ? "" : ": ",
                 request.Text.c_str());
    EMessageAnswer answer;
    if (request.DefaultIndex < request.Buttons.size()) answer.Button = request.Buttons[request.DefaultIndex];
    return answer;
}

std::optional<std::string> EUserInterface::AskFile(const EFileDialogRequest& request) {
    return request.ProposedPath;
}

void EUserInterface::SetStatusText(const std::string& text) {
    qvrTraceVerbose("%s\n", text.c_str());
}

void EUserInterface::ShowReport(const std::string& title, int, const std::vector<hReportEntry>& entries) {
    std::fprintf(stderr, "%s\n", title.c_str());
    for (const hReportEntry& entry : entries)
        std::fprintf(stderr, "  [%d] %s: %s\n", entry.Level, entry.Path.c_str(), entry.Text.c_str());
}

EUserInterface& EUserInterface::Get() {
    static EUserInterface headless;
    EUserInterface* hook = installedHook.load();
    return hook ? *hook : headless;
}

void EUserInterface::Set(EUserInterface* hook) {
    installedHook.store(hook);
}
