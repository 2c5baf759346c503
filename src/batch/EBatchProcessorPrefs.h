#pragma once
// "Batch processor" of the preferences: the batch list between runs. Load and
// save take the section's lock, the only time it is taken; a load adds the
// stored jobs to the list in their list order.

#include "foundation/EPrefs.h"

class EBatchProcessorPrefs : public EPrefsSection {
public:
    EBatchProcessorPrefs();
    static EBatchProcessorPrefs& Get();

protected:
    void LoadExtra(qvrCTreeData& block, hReport& report) override;
    void SaveExtra(qvrCTreeData& block, hReport& report) override;
};
