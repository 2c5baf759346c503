#pragma once
// The core's hook to the user interface: message boxes, file dialogs, the
// status line, report lists and splash status. The desktop program installs its
// own; the default one never waits for a person: it prints the text to standard
// error and takes the default answer. Install the hook before other threads
// start; the calls themselves come from the main thread.

#include "foundation/hReport.h"

#include <optional>
#include <string>
#include <vector>

// Button ids, as message boxes answer them.
enum EButtonId : int { IDOK = 1, IDCANCEL = 2, IDABORT = 3, IDRETRY = 4, IDIGNORE = 5, IDYES = 6, IDNO = 7 };

struct EMessageRequest {
    std::string Text;
    std::string Title;
    std::vector<int> Buttons;        // button ids, in order
    std::vector<std::string> Labels; // the text of each button
    size_t DefaultIndex = 0;         // the button a headless run presses
    unsigned Icon = 0;               // 0x10 stop, 0x20 question, 0x30 exclamation, 0x40 information
    std::string AlwaysText;          // the check box's text; empty: no check box
};

struct EMessageAnswer {
    int Button = IDOK;
    bool Always = false;
};

struct EFileDialogRequest {
    std::string ProposedPath;
    std::string DefaultExtension;
    std::string Filter;
    bool Save = true;
    std::string Title; // empty: the dialog's own title
};

class EUserInterface {
public:
    virtual ~EUserInterface() = default;

    virtual EMessageAnswer AskMessage(const EMessageRequest& request);
    // The chosen path, or nothing when the user cancels.
    virtual std::optional<std::string> AskFile(const EFileDialogRequest& request);
    virtual void SetStatusText(const std::string& text);
    virtual void ShowReport(const std::string& title, int level, const std::vector<hReportEntry>& entries);

    // The installed hook; the headless one until another is set.
    static EUserInterface& Get();
    // Installs a hook (0 restores the headless one); the caller keeps ownership.
    static void Set(EUserInterface* hook);
};
