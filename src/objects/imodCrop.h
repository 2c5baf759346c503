#pragma once
// A modifier that cuts a window out of its parent's picture, or lays the
// parent into a larger frame of a background colour. The window has an
// animated size and an animated centre offset: a positive centre moves the
// window left and up, and so the picture right and down. The parent is asked
// only for the part of the section that it can contribute.
//
// Renders may run on several threads at once: they only read the values and
// the colour, which are edited on the main thread; the picture's lock is held
// only after the parent's render.

#include "model/iModifier.h"
#include "model/iParameter.h"

#include <cstdint>

class imodCrop : public iModifier {
public:
    explicit imodCrop(std::string name);

    iFactoryProducer* GetProducer() const override { return &Producer; }
    bool HasObjectBlock() const override { return true; }

    void doSaveData(qvrCTreeData& block, hReport& report) override;
    void doLoadData(const qvrCTreeData& block, hReport& report) override;

    // Width and height values at the frame, truncated.
    EImageSize GetCropSize(long frame) const;
    // The centre offset at the frame, truncated.
    CPoint GetCenter(long frame) const;
    // Where the window's top-left corner lies in a parent of the size.
    CPoint GetOffset(EImageSize parentSize, long frame) const;

    iActiveValue& GetWidthValue() { return width; }
    iActiveValue& GetHeightValue() { return height; }
    iActiveValue& GetCenterXValue() { return centerX; }
    iActiveValue& GetCenterYValue() { return centerY; }
    // The colour word 0xAARRGGBB around the parent, alpha included.
    std::uint32_t GetBackgroundColor() const { return backgroundColor; }
    void SetBackgroundColor(std::uint32_t colour);
    // The property page shows left, right, top and bottom instead of size and centre.
    bool GetRelativeGUI() const { return relativeGUI; }
    void SetRelativeGUI(bool relative) { relativeGUI = relative; }

    static iFactoryProducerOf<imodCrop> Producer;
    static const iParameterTable<imodCrop> Parameters;

protected:
    // The window's size; the parent is not asked.
    bool doModifierQueryImageSize(iElement* parent, iImageSizeResult& result, long frame) override;
    bool doModifierRender(iElement* parent, EImage& image, iRenderResult& result,
                          iRenderRequest& request) override;

private:
    // Answers a section that the parent can't contribute to with background alone.
    bool renderBackgroundOnly(EImage& image, iRenderResult& result, const iRenderRequest& request);
    // The parent's request for the part `available` of the caller's section.
    static iRenderRequest parentRequest(const iRenderRequest& request, EImageSize parentSize,
                                        const CRect& available);
    // Turns the parent's picture into the picture of the caller's section.
    bool frameParentPicture(EImage& image, iRenderResult& result, const iRenderRequest& request,
                            CPoint offset, const CRect& wanted);

    static const iParameterEntry<imodCrop> parameterEntries[];

    iActiveValue width;
    iActiveValue height;
    iActiveValue centerX;
    iActiveValue centerY;
    std::uint32_t backgroundColor = 0;
    bool relativeGUI = false;
};
