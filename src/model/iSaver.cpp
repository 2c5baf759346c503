#include "model/iSaver.h"

iFactoryProducerType iSaver::ClassType("Saver");

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
