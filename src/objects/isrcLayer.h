#pragma once
// A solid layer: a rectangle of one animated colour with animated alpha,
// made directly at the wanted scale for any request. The size is only a claim
// for those who ask its size; a request reaching beyond it still gets a
// picture that fills the whole rectangle. Keeps no picture of its own.
//
// Render and size queries may run on several threads at once (they only read);
// edits of size and values belong to the main thread.

#include "model/iParameter.h"
#include "model/iSource.h"
#include "objects/iLimitedValue.h"

#include <cstdint>
#include <memory>

class isrcLayer : public iSource {
public:
    explicit isrcLayer(std::string name);
    ~isrcLayer() override;

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }
    // The layer's description on the pane: "(layer)".
    std::string GetStateText() const override { return "(layer)"; }

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // A new layer under the same name (the caller renames it) with the size and the values' keys.
    std::unique_ptr<isrcLayer> Clone() const;

    // The size does not change over time; the frame is ignored.
    EImageSize GetSize(long frame) const;
    // Changes the size; the project is marked changed.
    void SetSize(EImageSize size);
    // The colour word 0xAARRGGBB at the frame, ready to fill a picture.
    std::uint32_t GetColor(long frame) const;
    long GetRed(long frame) const;
    long GetGreen(long frame) const;
    long GetBlue(long frame) const;
    long GetAlpha(long frame) const;

    iActiveValue& GetRedValue() { return colorRed; }
    iActiveValue& GetGreenValue() { return colorGreen; }
    iActiveValue& GetBlueValue() { return colorBlue; }
    iActiveValue& GetAlphaValue() { return colorAlpha; }

    static iFactoryProducerOf<isrcLayer> Producer;
    static const iParameterTable<isrcLayer> Parameters;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;

private:
    static const iParameterEntry<isrcLayer> parameterEntries[];

    bool hasEmptySize() const { return size.Width == 0 || size.Height == 0; }

    EImageSize size{720, 576};
    iLimitedValue colorRed;
    iLimitedValue colorGreen;
    iLimitedValue colorBlue;
    iLimitedValue colorAlpha;
};
