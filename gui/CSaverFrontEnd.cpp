#include "CSaverFrontEnd.h"

#include "CExecutionDialog.h"
#include "CRenderSetupDialog.h"
#include "CViewRenderer.h"
#include "output/isvrSaver.h"

bool CSaverFrontEnd::RunSetup(iSaver& saver) {
    auto* standard = dynamic_cast<isvrSaver*>(&saver);
    if (!standard) return false;
    CViewRenderer::Get().WaitIdle();
    CRenderSetupDialog setup(*standard, ProjectPath(), Parent);
    if (setup.exec() != QDialog::Accepted) return false;
    return saver.Execute();
}

bool CSaverFrontEnd::RunExecution(iSaver& saver) {
    auto* standard = dynamic_cast<isvrSaver*>(&saver);
    if (!standard) return false;
    CViewRenderer::Get().WaitIdle();
    CExecutionDialog execution(*standard, standard->GetSetup(), Parent);
    execution.exec();
    return true;
}
