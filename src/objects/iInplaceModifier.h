#pragma once
// The base of modifiers that render their parent at the very section asked and
// then work on the picture in place: the size query and the render go to the
// parent unchanged, and on success the class's doProcessImageSize and
// doProcessImage take over. A failure of the parent is passed on as it is.
// Threads as iModifier: the class's own steps run on the rendering thread.

#include "model/iModifier.h"

class iInplaceModifier : public iModifier {
public:
    using iModifier::iModifier;

protected:
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;
    // Adjusts the parent's size in `result`.
    virtual bool doProcessImageSize(iImageSizeResult& result, long frame) = 0;
    // Changes the parent's picture in `image`, which shows the request's section.
    virtual bool doProcessImage(EImage& image, iRenderResult& result, iRenderRequest& request) = 0;
};
