#include "batch/ERenderLater.h"

#include "batch/EBatchJobAddDialog.h"
#include "output/hSaverProperties.h"
#include "output/hSaverRenderingPage.h"
#include "output/isvrSaver.h"
#include "projector/hVitreaSetupPages.h"
#include "projector/isvrVitrea.h"

namespace {

// The checks of the page that a saver's setup dialog has besides the rendering page.
bool leaveExtraPage(iSaver& saver) {
    if (auto* standard = dynamic_cast<isvrSaver*>(&saver))
        return hSaverProperties(*standard, 0).LeaveOutputPage(false);
    if (auto* array = dynamic_cast<isvrVitrea*>(&saver))
        return hVitreaSetupPages(array->GetConfiguration()).LeaveOutputPage();
    return true;
}

} // namespace

ERenderLater::Outcome ERenderLater::Run(iSaver& saver, const std::string& projectPath,
                                        const ShowDialog& show) {
    if (!leaveExtraPage(saver) || !hSaverRenderingPage(saver).Leave()) return Outcome::ChecksFailed;
    EBatchJobAddDialog dialog(projectPath, saver.GetName(), saver.GetElementType());
    return show(dialog) ? Outcome::Entered : Outcome::Cancelled;
}
