#pragma once
// A modifier that does nothing: the parent's picture and size come through
// unchanged. It holds a place in a chain where a real modifier may go later.
// Threads as iModifier.

#include "objects/iInplaceModifier.h"

class imodPlaceholder : public iInplaceModifier {
public:
    using iInplaceModifier::iInplaceModifier;

    iFactoryProducer* GetProducer() const override { return &Producer; }
    // "(parent name)", or the empty text without a parent.
    std::string GetStateText() const override;

    static iFactoryProducerOf<imodPlaceholder> Producer;

protected:
    bool doProcessImageSize(iImageSizeResult&, long) override { return true; }
    bool doProcessImage(EImage&, iRenderResult&, iRenderRequest&) override { return true; }
};
