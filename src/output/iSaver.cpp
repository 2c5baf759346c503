#include "output/iSaver.h"

#include "model/hMenu.h"
#include "output/ESaverFrontEnd.h"

iFactoryProducerType iSaver::ClassType("Saver");

namespace {
enum SaverCommand : unsigned { commandRender = 0 };
} // namespace

iElement* iSaver::GetSource(iRenderStatus& result) {
    iElement* parent = GetFirstParent();
    if (!parent) result.SetError(render_failed, this, text_saver_without_parent);
    return parent;
}

bool iSaver::doQueryImageSize(iImageSizeResult& result, long frame) {
    iElement* source = GetSource(result);
    return source && source->QueryImageSize(result, frame);
}

bool iSaver::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    iElement* source = GetSource(result);
    if (!source) {
        result.Rect = {};
        return false;
    }
    return source->Render(image, result, request);
}

void iSaver::AddMenuItems(hMenu& menu, unsigned firstId) {
    menu.AppendItem(firstId + commandRender, "Render").Enabled = GetFirstParent() != nullptr;
}

bool iSaver::OnMenuCommand(unsigned id) {
    if (id - command_first_addition != commandRender || !GetFirstParent()) return false;
    RunSetupDialog();
    return true;
}

bool iSaver::RunSetupDialog() {
    return ESaverFrontEnd::Get().RunSetup(*this);
}

bool iSaver::Execute() {
    return ESaverFrontEnd::Get().RunExecution(*this);
}
