#include "objects/iInplaceModifier.h"

bool iInplaceModifier::doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) {
    return parent->QueryImageSize(result, frame) && doProcessImageSize(result, frame);
}

bool iInplaceModifier::doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                        iRenderRequest& request) {
    return parent->Render(image, result, request) && doProcessImage(image, result, request);
}
