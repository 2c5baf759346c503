#pragma once
// A modifier that gives its parent's picture another size, animated in
// width and height. It asks the parent only for the section that the request
// needs, at the display size that section will have, and scales the parent's
// picture once at the end; at factor 1 the request passes through untouched.
// A new scale object takes over its parent's size when it is first linked.
//
// Render and size queries may run on several threads at once: the memory of
// the parent's last size has its own lock; values and flags are edited on the
// main thread.

#include "model/iModifier.h"
#include "model/iParameter.h"
#include "objects/iLimitedValue.h"

#include <memory>
#include <mutex>

class imodScale : public iModifier {
public:
    explicit imodScale(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    // "<scaling is animated>", whatever the keys.
    std::string GetStateText() const override;
    // Takes over the parent's size at frame 0 unless the object keeps its own.
    void OnParentLinked(iElement* parent) override;

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A new scale object under the same name with the values' keys and the
    // quality and aspect flags; it takes over the size of its next parent.
    std::unique_ptr<imodScale> Clone() const;

    // Width and height at the frame, rounded to whole pixels.
    EImageSize GetTargetSize(long frame) const;
    // The parent's size at the last size query.
    EImageSize GetParentSize() const;

    iActiveValue& GetWidthValue() { return width; }
    iActiveValue& GetHeightValue() { return height; }
    bool GetUseQualityInPreview() const { return useQualityInPreview; }
    void SetUseQualityInPreview(bool value) { useQualityInPreview = value; }
    bool GetUseQualityWhenRendering() const { return useQualityWhenRendering; }
    void SetUseQualityWhenRendering(bool value) { useQualityWhenRendering = value; }
    bool GetLockAspect() const { return lockAspect; }
    void SetLockAspect(bool value) { lockAspect = value; }
    // True once the object has a size of its own that a new parent leaves alone.
    bool GetIgnParentSize() const { return ignParentSize; }
    void SetIgnParentSize(bool value) { ignParentSize = value; }

    static iFactoryProducerOf<imodScale> Producer;
    static const iParameterTable<imodScale> Parameters;

protected:
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;

private:
    // The parent's request for the caller's: section and display size divided by the factors.
    iRenderRequest parentRequest(const iRenderRequest& request, double ix, double iy) const;
    // Replaces the parent's picture in `image` by one of the target's size; false when none could be made.
    bool resizePicture(EImage& image, CSize size, bool fullSize) const;

    static const iParameterEntry<imodScale> parameterEntries[];

    iLimitedValue width;
    iLimitedValue height;
    mutable std::mutex parentSizeLock;
    EImageSize parentSize;
    bool useQualityInPreview = false;
    bool useQualityWhenRendering = true;
    bool lockAspect = false;
    bool ignParentSize = false;
};
