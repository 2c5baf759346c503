#include "output/hSaverRenderingPage.h"

#include "foundation/EStringTable.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/qvrString.h"
#include "output/ESaverExecution.h"
#include "output/OutputText.h"
#include "output/iSaver.h"

namespace {

enum : EStringId {
    textRangeUnreadable = 65050,
    textRangeBackwards = 65051,
    textRangeEmpty = 65052,
    textRangeFrames = 65053,
    textDisableLogging = 65061,
};

// A frame number as typed: whole and not negative.
bool readFrame(const std::string& text, long& value) {
    return qvrParseLong(qvrTrim(text), value) && value >= 0;
}

} // namespace

hSaverRenderingPage::hSaverRenderingPage(iSaver& saver) : Setup(saver.GetSetup()), Saver(saver) {}

std::string hSaverRenderingPage::GetRangeHint(const std::string& first, const std::string& last,
                                              const std::string& step) {
    long from = 0;
    long to = 0;
    long every = 0;
    if (!readFrame(first, from) || !readFrame(last, to) || !readFrame(step, every))
        return EStringTable::Load(textRangeUnreadable);
    if (to < from) return EStringTable::Load(textRangeBackwards);
    if (every == 0) return EStringTable::Load(textRangeEmpty);
    return qvrFormatMessage(EStringTable::Get(textRangeFrames), {(to - from + every) / every});
}

std::string hSaverRenderingPage::GetRangeLine() const {
    long frames = 0;
    long seconds = 0;
    if (Setup.IsValid()) {
        frames = static_cast<long>((Setup.VideoEnd - Setup.VideoStart + Setup.VideoSteps) / Setup.VideoSteps);
        seconds =
            static_cast<long>(static_cast<unsigned long long>(frames) * Setup.VideoRes / Setup.VideoFPS);
    }
    return qvrFormat(" Frames: %ld, Time: ", frames) + ESaverExecution::ClockText(seconds);
}

bool hSaverRenderingPage::BrowseLogFile() {
    EFileDialogRequest request;
    request.ProposedPath = Setup.LogFile;
    request.DefaultExtension = "rlog";
    request.Filter = "Render logs (*.rlog)|*.rlog|All files (*.*)|*.*||";
    const std::optional<std::string> chosen = EUserInterface::Get().AskFile(request);
    if (!chosen) return false;
    Setup.LogFile = *chosen;
    return true;
}

bool hSaverRenderingPage::Leave() {
    if (Setup.LogKeep && Setup.LogFile.empty()) {
        if (hMessageBox::Show(EStringTable::Load(textDisableLogging),
                              hMessageBox::YesNo | hMessageBox::IconQuestion, "") != IDYES)
            return false;
        Setup.LogKeep = false;
    }
    if (!Setup.IsValid()) {
        hMessageBox::Show(EStringTable::Load(OutputText::NotConfigured),
                          hMessageBox::OK | hMessageBox::IconExclamation, "");
        return false;
    }
    Saver.GetSetup() = Setup;
    return true;
}
