#pragma once
// Test support for modifiers: a source whose pictures tell where each pixel
// came from, that can fail on demand or deliver less than asked, and a
// render call that queries the size first, as every caller does, and hands
// back the picture's size and pixels.

#include "model/iSource.h"

#include <cstdint>
#include <optional>
#include <vector>

class ProbeSource : public iSource {
public:
    using iSource::iSource;

    iFactoryProducer* GetProducer() const override { return &Producer; }

    // The pattern pixel of full-size coordinates x, y: opaque, y in bits 12 up, x below.
    static std::uint32_t PatternAt(long x, long y) {
        return 0xFF000000u | std::uint32_t(y) << 12 | std::uint32_t(x);
    }

    EImageSize Size{100, 100};
    // 0 draws the pattern (meaningful in final renders), any other word fills.
    std::uint32_t Colour = 0;
    bool FailSize = false;
    bool FailRender = false;
    // Requests are cut to this part of the source.
    std::optional<CRect> Deliverable;
    int Renders = 0;
    CRect LastRect;
    EImageSize LastDisplaySize;

    static iFactoryProducerOf<ProbeSource> Producer;

protected:
    bool doQueryImageSize(iImageSizeResult& result, long frame) override;
    bool doRender(EImage& image, iRenderResult& result, iRenderRequest& request) override;
};

struct Rendered {
    bool Done = false;
    iRenderResult Result;
    CSize Size{-1, -1};
    std::vector<std::uint32_t> Pixels;

    std::uint32_t At(long x, long y) const { return Pixels[static_cast<size_t>(y * Size.cx + x)]; }
};

Rendered RenderElement(iElement& element, const CRect& rect, EImageSize display, bool fullSize,
                       long frame = 0);
// A final render of the element's whole picture.
Rendered RenderWhole(iElement& element, long frame = 0);
// The element's value of that name, or null.
iActiveValue* FindValue(const iElement& element, const std::string& name);
