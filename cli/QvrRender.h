#pragma once
// The render of one saver as `qvr render` runs it, for every command that
// renders: the saver's checks, then its execution driven to the end with
// progress on standard error.

#include <cstdint>

class iSaver;
class iSaverSetup;

struct QvrRenderCounts {
    std::uint32_t Total = 0;
    std::uint32_t Done = 0;
    std::uint32_t Failed = 0;
};

namespace QvrRender {
// The exit status of `qvr render`: 0 every frame done, 1 failures or aborted,
// 2 the run could not start. The frames are counted into `counts`.
int Run(iSaver& saver, const iSaverSetup& setup, QvrRenderCounts& counts);
} // namespace QvrRender
