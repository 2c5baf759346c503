#pragma once
// A modifier that runs a 5 by 5 convolution over its parent's picture with
// the kernel of an effect from the matrix effect library. A kernel works at
// the picture's scale, so a reduced preview shows more of the effect than the
// final picture; two switches therefore keep the filter out of the views'
// previews or out of reduced pictures.
//
// Renders may run on several threads at once: they read the effect's kernel
// and the switches, which change on the main thread only; the effect pointer
// and the user list of the effect belong to the main thread.

#include "model/iModifier.h"
#include "model/iParameter.h"

#include <memory>

class imodMatrixEffect;

class imodMatrix : public iModifier {
public:
    explicit imodMatrix(std::string name);
    // Leaves the user list of its effect.
    ~imodMatrix() override;

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    // "MatrixFilter using "<effect>"", or "<no effect matrix assigned>".
    std::string GetStateText() const override;

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A new filter under the same name with the same effect and switches.
    std::unique_ptr<imodMatrix> Clone() const;

    imodMatrixEffect* GetEffect() const { return effect; }
    // Enters the user list of the effect (null: no effect) and redraws.
    void SetEffect(imodMatrixEffect* newEffect);
    // False: pictures smaller than their section (reduced previews, proxies) stay unfiltered.
    bool GetUseForProxies() const { return useForProxies; }
    void SetUseForProxies(bool use) { useForProxies = use; }
    // False: only final renders are filtered, the views' previews are not.
    bool GetUseInViews() const { return useInViews; }
    void SetUseInViews(bool use) { useInViews = use; }

    static iFactoryProducerOf<imodMatrix> Producer;
    static const iParameterTable<imodMatrix> Parameters;

protected:
    // The parent's size, unchanged.
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;

private:
    friend class imodMatrixEffect;

    // The effect went away or changed its kernel.
    void OnEffectGone();
    void OnEffectChanged() { NotifyChanged(nullptr, true); }
    // Whether the picture of the request is to be filtered at all.
    bool wantsFilter(const iRenderRequest& request) const;

    static const iParameterEntry<imodMatrix> parameterEntries[];

    imodMatrixEffect* effect = nullptr;
    bool useForProxies = true;
    bool useInViews = true;
};
