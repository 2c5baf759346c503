#include "output/iSaverSetup.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "output/OutputText.h"

#include <utility>

namespace {

// A value of 0 is replaced; true when it was.
bool replaceZero(std::uint32_t& value, std::uint32_t replacement) {
    if (value != 0) return false;
    value = replacement;
    return true;
}

} // namespace

const iParameterEntry<iSaverSetup> iSaverSetup::parameterEntries[] = {
    {{"ErrorsIgnore", iParameterKind::Flag, OutputText::LabelErrorsIgnore}, &iSaverSetup::ErrorsIgnore},
    {{"ErrorsReplaceBadFrames", iParameterKind::Flag, OutputText::LabelReplaceBadFrames},
     &iSaverSetup::ErrorsReplaceBadFrames},
    {{"LogKeep", iParameterKind::Flag, OutputText::LabelLogKeep}, &iSaverSetup::LogKeep},
    {{"LogFile", iParameterKind::Text, OutputText::LabelLogFile}, &iSaverSetup::LogFile},
    {{"VideoStart", iParameterKind::Number, OutputText::LabelFirstFrame}, &iSaverSetup::VideoStart},
    {{"VideoEnd", iParameterKind::Number, OutputText::LabelLastFrame}, &iSaverSetup::VideoEnd},
    {{"VideoSteps", iParameterKind::Number, OutputText::LabelStep}, &iSaverSetup::VideoSteps},
    {{"VideoFPS", iParameterKind::Number, OutputText::LabelFrameRate}, &iSaverSetup::VideoFPS},
    {{"VideoRes", iParameterKind::Number, OutputText::LabelRateDivisor}, &iSaverSetup::VideoRes},
    {{"MiscMinimize", iParameterKind::Flag, OutputText::LabelMinimize}, &iSaverSetup::MiscMinimize},
    {{"MiscThreadCnt", iParameterKind::Number, OutputText::LabelThreads}, &iSaverSetup::MiscThreadCnt},
};
const iParameterTable<iSaverSetup> iSaverSetup::Parameters{parameterEntries};

bool iSaverSetup::IsValid() const {
    if (VideoEnd < VideoStart) return false;
    if (VideoSteps == 0 || VideoFPS == 0 || VideoRes == 0 || MiscThreadCnt == 0) return false;
    return !(LogKeep && LogFile.empty());
}

void iSaverSetup::Reset() {
    *this = iSaverSetup();
}

void iSaverSetup::Load(const qvrCTreeData& block, hReport& report) {
    Reset();
    Parameters.LoadBlock(*this, block);
    if (repair())
        report.Report("Saver rendering settings were invalid in some points - has been fixed.",
                      hReportWarning);
}

bool iSaverSetup::repair() {
    bool repaired = false;
    if (VideoEnd < VideoStart) {
        std::swap(VideoStart, VideoEnd);
        repaired = true;
    }
    repaired |= replaceZero(VideoSteps, 1);
    repaired |= replaceZero(VideoFPS, 25);
    repaired |= replaceZero(VideoRes, 1);
    repaired |= replaceZero(MiscThreadCnt, 1);
    if (LogKeep && LogFile.empty()) {
        LogKeep = false;
        repaired = true;
    }
    return repaired;
}

void iSaverSetup::Save(qvrCTreeData& block) const {
    Parameters.SaveBlock(*this, block);
}
