#pragma once
// Everything that a projector array saver needs to know of its projectors:
// calibration, metrics and output files, and the filter with which the
// projectors' pictures are resampled. Kept in the project as the block
// "Configuration", which holds the blocks of the three parts. Rules as for
// every LVitrea; a render run reads it without changing it.

#include "projector/LCalibration.h"
#include "projector/LMetrics.h"
#include "projector/LOutputFiles.h"

#include <cstdint>

class LConfiguration : public LVitrea {
public:
    static constexpr const char* BlockName = "Configuration";

    void Load(const qvrCTreeData& section, hReport& report) override;
    void Save(qvrCTreeData& section) const override;

    LCalibration Calibration;
    LMetrics Metrics;
    LOutputFiles OutputFiles;
    // The resampling filter's mode, 0 to 4, and its parameter.
    std::int32_t Filter = 0;
    double FilterLevel = 2.0;
};
