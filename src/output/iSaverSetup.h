#pragma once
// The render settings that every saver shares: what to do with bad frames,
// the render log, the frame range and rate, and the number of render threads.
// A value object, copied whole between savers, dialogs and runs; a copy
// belongs to one thread.

#include "model/iParameter.h"

#include <cstdint>
#include <string>

class hReport;

class iSaverSetup {
public:
    // False when the range runs backwards, a step, rate part or thread count is
    // 0, or a log is kept without a file name.
    bool IsValid() const;
    // The defaults.
    void Reset();
    void Assign(const iSaverSetup& other) { *this = other; }
    // Reads the keys over the defaults and mends what isn't usable, with a
    // warning in the report when anything had to be mended.
    void Load(const qvrCTreeData& block, hReport& report);
    void Save(qvrCTreeData& block) const;

    // False: the first frame error stops the thread that met it.
    bool ErrorsIgnore = true;
    // True: a frame that failed is written as the last good picture; false: skipped.
    bool ErrorsReplaceBadFrames = false;
    bool LogKeep = true;
    std::string LogFile = "render.rlog";
    // The frame range, both ends inclusive, and the step between rendered frames.
    std::uint32_t VideoStart = 0;
    std::uint32_t VideoEnd = 250;
    std::uint32_t VideoSteps = 1;
    // The frame rate is VideoFPS / VideoRes frames per second.
    std::uint32_t VideoFPS = 25;
    std::uint32_t VideoRes = 1;
    // The main window is minimized while rendering.
    bool MiscMinimize = true;
    // The number of render threads asked for.
    std::uint32_t MiscThreadCnt = 4;

    static const iParameterTable<iSaverSetup> Parameters;

private:
    static const iParameterEntry<iSaverSetup> parameterEntries[];

    // True when something had to be mended.
    bool repair();
};
