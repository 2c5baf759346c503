#include "projector/LConfiguration.h"

#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"

namespace {
constexpr const char* KeyFilter = "Filter";
constexpr const char* KeyFilterLevel = "FilterLevel";
} // namespace

void LConfiguration::Load(const qvrCTreeData& section, hReport& report) {
    const qvrCTreeData* block = section.Find(BlockName);
    if (!block) {
        report.Report("Can't find section 'Configuration'", hReportError);
        return;
    }
    Calibration.Load(*block, report);
    OutputFiles.Load(*block, report);
    Metrics.Load(*block, report);
    long filter = 0;
    if (block->GetLong(KeyFilter, filter)) Filter = static_cast<std::int32_t>(filter);
    readDouble(*block, KeyFilterLevel, FilterLevel);
}

void LConfiguration::Save(qvrCTreeData& section) const {
    qvrCTreeData* block = section.CreateChild(BlockName);
    Calibration.Save(*block);
    OutputFiles.Save(*block);
    Metrics.Save(*block);
    block->SetLong(KeyFilter, Filter);
    block->SetText(KeyFilterLevel, formatDouble(FilterLevel));
}
