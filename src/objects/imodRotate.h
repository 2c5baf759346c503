#pragma once
// The rotate modifier: turns the picture of its primary parent around the
// picture's centre. Its own picture is a square of the parent's width plus
// height, large enough for any angle, so that its size never changes with the
// angle. A render asks the parent only for the part that falls into the
// requested section; which part that is, and where the turned part lands, is
// worked out in the 8-bit fixed point of iRotation, while the pixels are
// turned by EImgOperator.
//
// Render and size queries may run on several threads at once: a render writes
// nothing of the object, and the size that a query remembers has a lock of
// its own. Edits of the angle and the flags belong to the main thread.

#include "imaging/EImgOperator.h"
#include "model/iActiveValue.h"
#include "model/iModifier.h"
#include "model/iParameter.h"

#include <memory>
#include <mutex>

class EImageData;

// A turn by an angle in degrees in 8-bit fixed point: s and c are the sine and
// cosine times 256, truncated. Coarse on purpose: it only decides which
// pixels are asked for and delivered, and a finer turn would change that.
class iRotation {
public:
    explicit iRotation(double angle);

    // The bounding box of the rectangle's turned corners: a corner x, y goes
    // to (c x + s y) / 256, (c y - s x) / 256 in truncating division.
    CRect Rotate(const CRect& rect) const;

    long GetSin() const { return s; }
    long GetCos() const { return c; }

private:
    long s;
    long c;
};

class imodRotate : public iModifier {
public:
    explicit imodRotate(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    // The object's description on the pane: "Rotation".
    std::string GetStateText() const override;

    // The two quality flags, "UseQualityInPreview" and "UseQualityWhenRendering".
    void doSaveData(qvrCTreeData& block, hReport& report) override;
    // The same keys; an absent or unreadable key leaves the flag as it is.
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A new object under the same name (the caller renames it) with the flags and the angle's keys.
    std::unique_ptr<imodRotate> Clone() const;

    iActiveAngle& GetAngleValue() { return angle; }
    bool GetUseQualityInPreview() const { return useQualityInPreview; }
    bool GetUseQualityWhenRendering() const { return useQualityWhenRendering; }
    void SetUseQualityInPreview(bool use) { useQualityInPreview = use; }
    void SetUseQualityWhenRendering(bool use) { useQualityWhenRendering = use; }
    // Whether a render of the request turns with the filter: a final render
    // when asked so, and every render when the preview flag is on.
    ERotateQuality GetQuality(const iRenderRequest& request) const;
    // The own size that the last successful size query computed.
    EImageSize GetSize() const;

    static iFactoryProducerOf<imodRotate> Producer;
    static const iParameterTable<imodRotate> Parameters;

protected:
    // Both sides are the parent's width plus height.
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;

private:
    // The turned picture for the request, of whatever size covers it; null on
    // failure, with the parent's code in the result where it failed.
    std::unique_ptr<EImageData> renderParentImg(iElement* parent, EImage& image, iRenderResult& result,
                                                const iRenderRequest& request, ERotateQuality quality,
                                                double degrees);
    // The parent's picture of the section A of the parent of size P; null on failure.
    std::unique_ptr<EImageData> renderSection(iElement* parent, EImage& image, iRenderResult& result,
                                              const iRenderRequest& request, const CRect& section,
                                              EImageSize parentSize);
    // Evens a picture whose scales differ between the axes (null on failure).
    static std::unique_ptr<EImageData> evenScales(std::unique_ptr<EImageData> picture, CSize delivered,
                                                  ERotateQuality quality);
    // The part V of the turned picture of box F, made to the request's display size where V
    // isn't the whole section.
    static std::unique_ptr<EImageData> cutToRequest(std::unique_ptr<EImageData> picture, const CRect& box,
                                                    const CRect& visible, const iRenderRequest& request,
                                                    ERotateQuality quality);

    static const iParameterEntry<imodRotate> parameterEntries[];

    iActiveAngle angle;
    bool useQualityInPreview = false;
    bool useQualityWhenRendering = true;
    mutable std::mutex sizeLock; // guards size
    EImageSize size;
};
