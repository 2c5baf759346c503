#include "model/iModifier.h"

iFactoryProducerType iModifier::ClassType("Modifier");

iModifier::iModifier(std::string name) : iElement(std::move(name)), enabled(this, "Enabled", 1.0, true) {}

bool iModifier::doQueryImageSize(iImageSizeResult& result, long frame) {
    iElement* parent = GetFirstParent();
    if (!parent) {
        result.SetError(render_failed, this, text_no_source_object);
        return false;
    }
    if (IsEnabled(frame)) return doModifierQueryImageSize(parent, result, frame);
    return parent->QueryImageSize(result, frame);
}

bool iModifier::doRender(EImage& image, iRenderResult& result, iRenderRequest& request) {
    iElement* parent = GetFirstParent();
    if (!parent) {
        result.SetError(render_failed, this, text_no_source_object);
        return false;
    }
    if (IsEnabled(request.Frame)) return doModifierRender(parent, image, result, request);
    return parent->Render(image, result, request);
}

bool iModifier::doModifierQueryImageSize(iElement*, iImageSizeResult&, long) {
    return false;
}

bool iModifier::doModifierRender(iElement*, EImage&, iRenderResult&, iRenderRequest&) {
    return false;
}
