#pragma once
// The base of elements that change the picture of their primary parent. Both
// render questions go to the parent through its public operations, so that its
// lock, configuration and abort tests apply on every level. The animated
// switch "Enabled" (on when not below 0.0) bypasses the modifier: a disabled
// modifier passes the caller's own request, result and image straight to the
// parent. Threads as iElement.

#include "model/iActiveValue.h"
#include "model/iElement.h"
#include "model/iFactory.h"

class iModifier : public iElement {
public:
    explicit iModifier(std::string name);

    // Whether the modifier does its work at the frame.
    bool IsEnabled(long frame) const { return enabled.GetValue(frame) >= 0.0; }

    // The class of every modifier in files and identifiers: "Modifier".
    static iFactoryProducerType ClassType;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;
    // The modifier's own size query, with the primary parent given; the base fails.
    virtual bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame);
    // The modifier's own render, with the primary parent given; the base fails.
    virtual bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                                  iRenderRequest& request);

private:
    iActiveValue enabled;
};
