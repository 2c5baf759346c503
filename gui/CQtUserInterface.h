#pragma once
// The core's questions answered with Qt: message boxes with the "Always
// answer" check box, file dialogs, the status line and the report list at
// the end of a load or save. A run without a person (--grab) keeps the
// questions headless and still shows status texts. Main thread only.

#include "foundation/EUserInterface.h"

#include <QPointer>
#include <QStatusBar>

class CQtUserInterface : public EUserInterface {
public:
    explicit CQtUserInterface(bool interactive) : Interactive(interactive) {}

    EMessageAnswer AskMessage(const EMessageRequest& request) override;
    std::optional<std::string> AskFile(const EFileDialogRequest& request) override;
    void SetStatusText(const std::string& text) override;
    void ShowReport(const std::string& title, int level, const std::vector<hReportEntry>& entries) override;

    void SetStatusBar(QStatusBar* bar) { StatusBar = bar; }
    // "Text (*.a)|*.a|All (*.*)|*.*||" as Qt writes it: "Text (*.a);;All (*.*)".
    static QString ToQtFilter(const std::string& filter);

private:
    bool Interactive;
    QPointer<QStatusBar> StatusBar;
};
