#pragma once
// Elements for tests: a configurable node of the class "Test" that renders a
// picture of one colour, and a modifier that inverts nothing but records that
// it ran.

#include "model/iElement.h"
#include "model/iFactory.h"
#include "model/iModifier.h"

#include <atomic>
#include <cstdint>
#include <functional>

class TestNode : public iElement {
public:
    using iElement::iElement;

    iFactoryProducer* GetProducer() const override { return &Producer; }
    int GetMaxParents() const override { return MaxParents; }
    bool IsConfigured() const override { return Configured; }

    int MaxParents = 1;
    bool Configured = true;
    EImageSize Size{8, 6};
    std::uint32_t Colour = 0xFF102030;
    // Runs inside doRender before the picture is made (a test aborts from here).
    std::function<void()> DuringRender;
    std::atomic<int> RenderCount{0};
    std::vector<std::string> Calls;

    static iFactoryProducerType ClassType;
    static iFactoryProducerOf<TestNode> Producer;

    void OnChildLinked(iElement* child) override;
    void OnParentLinked(iElement* parent) override;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;
};

class TestModifier : public iModifier {
public:
    using iModifier::iModifier;

    iFactoryProducer* GetProducer() const override { return &Producer; }

    int ModifierRenders = 0;
    static iFactoryProducerOf<TestModifier> Producer;

protected:
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;
};

// A request that reports an abort once its flag is set.
class AbortableRequest : public iRenderRequest {
public:
    bool IsAborted() const override { return Aborted; }
    std::atomic<bool> Aborted{false};
};
