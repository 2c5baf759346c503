#pragma once
// The ids of the savers' texts in the string table, by name.

#include "foundation/EStringTable.h"

struct OutputText {
    static constexpr EStringId NotConfigured = 65063;

    // Labels of the savers' parameters.
    static constexpr EStringId LabelErrorsIgnore = 65070;
    static constexpr EStringId LabelReplaceBadFrames = 65071;
    static constexpr EStringId LabelLogKeep = 65072;
    static constexpr EStringId LabelLogFile = 65073;
    static constexpr EStringId LabelFirstFrame = 65074;
    static constexpr EStringId LabelLastFrame = 65075;
    static constexpr EStringId LabelStep = 65076;
    static constexpr EStringId LabelFrameRate = 65077;
    static constexpr EStringId LabelRateDivisor = 65078;
    static constexpr EStringId LabelMinimize = 65079;
    static constexpr EStringId LabelThreads = 65080;
    static constexpr EStringId LabelStream = 65081;
    static constexpr EStringId LabelStreamSetup = 65082;
    static constexpr EStringId LabelFiles = 65083;
    static constexpr EStringId LabelOutputSize = 65084;
    static constexpr EStringId LabelLowQuality = 65085;
    static constexpr EStringId LabelLowQualityScaling = 65086;
};
