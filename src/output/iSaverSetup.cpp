#include "output/iSaverSetup.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

#include <utility>

namespace {

void readNumber(const qvrCTreeData& block, std::string_view key, std::uint32_t& value) {
    long read = 0;
    if (block.GetLong(key, read)) value = static_cast<std::uint32_t>(read);
}

// A value of 0 is replaced; true when it was.
bool replaceZero(std::uint32_t& value, std::uint32_t replacement) {
    if (value != 0) return false;
    value = replacement;
    return true;
}

} // namespace

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
    block.GetBool("ErrorsIgnore", ErrorsIgnore);
    block.GetBool("ErrorsReplaceBadFrames", ErrorsReplaceBadFrames);
    block.GetBool("LogKeep", LogKeep);
    if (const std::string* logFile = block.GetText("LogFile")) LogFile = *logFile;
    readNumber(block, "VideoStart", VideoStart);
    readNumber(block, "VideoEnd", VideoEnd);
    readNumber(block, "VideoSteps", VideoSteps);
    readNumber(block, "VideoFPS", VideoFPS);
    readNumber(block, "VideoRes", VideoRes);
    block.GetBool("MiscMinimize", MiscMinimize);
    readNumber(block, "MiscThreadCnt", MiscThreadCnt);
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
    block.SetBool("ErrorsIgnore", ErrorsIgnore);
    block.SetBool("ErrorsReplaceBadFrames", ErrorsReplaceBadFrames);
    block.SetBool("LogKeep", LogKeep);
    block.SetText("LogFile", LogFile);
    block.SetLong("VideoStart", VideoStart);
    block.SetLong("VideoEnd", VideoEnd);
    block.SetLong("VideoSteps", VideoSteps);
    block.SetLong("VideoFPS", VideoFPS);
    block.SetLong("VideoRes", VideoRes);
    block.SetBool("MiscMinimize", MiscMinimize);
    block.SetLong("MiscThreadCnt", MiscThreadCnt);
}
