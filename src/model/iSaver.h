#pragma once
// The base of the elements at the end of a chain that write frames out. As
// far as the render contract goes, a saver shows its source's picture: both
// render questions go to the primary parent, and without one they fail with
// "No parent (source) object is assigned to the saver.". Threads as iElement.

#include "model/iElement.h"
#include "model/iFactory.h"

class iSaver : public iElement {
public:
    using iElement::iElement;

    // The class of every saver in files and identifiers: "Saver".
    static iFactoryProducerType ClassType;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;
    // The primary parent; without one the status says so and null comes back.
    iElement* GetSource(iRenderStatus& result);
};
